#pragma once

#include <optional>
#include <string>

#include "vorlu/server/self_update_manifest.h"

namespace vorlu {

struct Vorlu;

/// The manifest's record of "Vorlu" or "Dialog", with a version that can be compared and stand in a file name. Nothing,
/// with a logged warning, when the manifest or the record can't be had.
std::optional<SelfUpdateStruct> manifestRecord(Vorlu& vorlu, const std::string& componentName);

/// Downloads the package of a record as `fileName` into the cache, in up to three attempts; its path, or nothing. A
/// repetition is announced as `retryText` with the number of the attempt.
std::optional<std::string> downloadPackage(Vorlu& vorlu, const SelfUpdateStruct& record, const std::string& fileName,
                                           const std::string& retryText);

/// Whether the package bears the signature that the record names. Without a name nothing passes.
bool isPackageSigned(Vorlu& vorlu, const std::string& path, const SelfUpdateStruct& record);

}  // namespace vorlu
