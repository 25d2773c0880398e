#pragma once

#include <string>
#include <vector>

#include "vorlu/server/blueprint.h"

namespace vorlu::ctl {

/// The fields of one build of an app, which come in three sets.
struct BuildFields {
  const char* words;
  const char* urlKey;
  const std::optional<std::string>& url;
  const char* scriptKey;
  const std::string& script;
  const char* regexKey;
  const std::string& regex;
  const char* hashKey;
  const std::string& hash;

  /// The catalog says that there is no such build: its URL is there, but empty.
  bool isDeclaredMissing() const { return url && url->empty(); }
};

BuildFields universalFields(const AppBlueprints& app);
BuildFields intelFields(const AppBlueprints& app);
BuildFields siliconFields(const AppBlueprints& app);

/// What is downloaded for this entry: one universal build or one for each processor. None for an architecture that
/// means nothing.
std::vector<BuildFields> wantedBuilds(const AppBlueprints& app);
/// The other ones, whose fields nobody reads.
std::vector<BuildFields> unusedBuilds(const AppBlueprints& app);

}  // namespace vorlu::ctl
