#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vorlu/server/self_update_manifest.h"

namespace vorlu {

struct Vorlu;

struct ServerUrl {
  std::string base;  ///< scheme, "://", host and port
  std::string path;
};

/// A signed URL, good for `validSeconds` from now.
std::optional<std::string> makeSignedURL(Vorlu& vorlu, const std::string& baseURL, const std::string& secret,
                                         std::int64_t validSeconds, const std::string& path);
/// Nothing, with a logged error, when the text is no URL with scheme and host.
std::optional<ServerUrl> splitServerURL(Vorlu& vorlu, const std::string& url);

/// Asks for the key material and fills `keys.serverData`, `serverSignature` and `serverSec`; they stay empty on a
/// failure.
void fetchServerData(Vorlu& vorlu);

/// Asks for the manifest of the agent and its components; empty, with a logged error, when it can't be had. Ends the
/// run with 1 when the inventory's URL is none.
std::vector<SelfUpdateStruct> fetchComponentManifest(Vorlu& vorlu);

}  // namespace vorlu
