#pragma once

#include <optional>
#include <string>

#include "vorlu/platform/file_manager.h"

namespace vorlu {

struct Vorlu;

/// A file as it was when its digest was taken.
struct FileDigest {
  FileInfo file;
  std::string sha256;  ///< 64 lower-case hexadecimal digits
};

/// SHA-256 of a file; `known` is used while the file is still the same one. Nothing, logged, when it can't be read.
std::optional<std::string> fileSha256(Vorlu& vorlu, const std::string& path, const std::optional<FileDigest>& known);

/// The catalog's hash for the selected app on this processor.
const std::string& expectedInstallerHash(Vorlu& vorlu);

/// Tells of the catalog's hash where the signature decides: the download's own isn't looked at.
void logHashAsGiven(Vorlu& vorlu);

/// What a hash check compared.
struct HashCheck {
  std::string expected;
  std::string actual;  ///< "Unknown" when the file can't be read
  bool matches() const { return actual == expected; }
};
HashCheck verifyInstallerHash(Vorlu& vorlu, const std::string& path, const std::optional<FileDigest>& known);

/// The developer that a package's signature names, or a text that no developer bears.
std::string readPackageSignature(Vorlu& vorlu, const std::string& path);
/// The same of an application or another signed file: its first Authority decides.
std::string readCodeSignature(Vorlu& vorlu, const std::string& path);

/// Logs what was read and answers whether it is the developer that the catalog names. Without a name nothing passes.
bool matchesExpectedSignature(Vorlu& vorlu, const std::string& signature);

}  // namespace vorlu
