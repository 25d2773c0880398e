#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/test_platform.h"
#include "vorlu/state/end_run.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/property_list.h"
#include "vorlu/state/run_data.h"
#include "vorlu/vorlu.h"

namespace vorlu::test {

/// The status with which `flow` ended the run, nothing if it came back.
template <class Flow>
std::optional<int> endOf(Flow flow) {
  try {
    flow();
  } catch (const RunEnded& ended) {
    return ended.status;
  }
  return std::nullopt;
}

/// One list behind the other.
inline Lines joined(Lines first, const Lines& rest) {
  first.insert(first.end(), rest.begin(), rest.end());
  return first;
}

/// The last `count` lines, or all.
inline Lines lastOf(const Lines& lines, std::size_t count) {
  return {lines.end() - static_cast<std::ptrdiff_t>(std::min(count, lines.size())), lines.end()};
}

inline std::string plistOf(const std::string& keys) {
  return "<plist version=\"1.0\"><dict>" + keys + "</dict></plist>";
}

/// A run on a Mac of its own, with the site of this build.
struct AgentRun {
  AgentRun() { mac.makeFolder(paths::downloads); }

  void setCatalog(const std::string& json) {
    auto entries = decodeJson<std::vector<AppBlueprints>>(json);
    ASSERT_TRUE(entries) << entries.error();
    vorlu.catalog.entries = std::move(*entries);
  }
  const AppBlueprints& entry(const std::string& json) {
    setCatalog("[" + json + "]");
    return vorlu.catalog.entries.front();
  }
  void setPreferences(const std::string& section, const std::string& keys) {
    mac.write("/Library/Managed Preferences/com.mosk.vorlu.preferences.plist",
              plistOf("<key>" + section + "</key><dict>" + keys + "</dict>"));
  }
  void cacheFile(const std::string& name) { mac.write(paths::downloads + "/" + name, "installer"); }
  Lines cachedFiles() { return *mac.files.list(paths::downloads); }
  void store(const RunDataFile& file) { mac.write(paths::runData, encodePropertyList(file)); }
  RunDataFile runData() {
    const auto file = loadRunData(mac.files);
    EXPECT_TRUE(file.ok()) << file.error();
    return file.ok() ? *file : RunDataFile{};
  }

  // What came since the last question: messages (the silent ones too), lines of the console, commands.
  Lines messages() { return mac.systemLog.take(); }
  Lines shown() { return mac.console.take(); }
  Lines tools() { return mac.processes.takeCommands(); }

  TestPlatform mac;
  Site site{sealedSite, mac.security};
  Vorlu vorlu{mac.platform(), site};
};

}  // namespace vorlu::test
