#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/test_platform.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu::test {

using Lines = std::vector<std::string>;

/// One run of the agent on a Mac with empty working directories and the catalog that a test gives.
struct DetectionRun {
  DetectionRun() {
    platform.makeFolder(paths::downloads);
    platform.makeFolder("/Applications");
  }

  void setCatalog(const std::string& json) {
    auto entries = decodeJson<std::vector<AppBlueprints>>(json);
    ASSERT_TRUE(entries) << entries.error();
    vorlu.catalog.entries = std::move(*entries);
  }
  const AppBlueprints& entry(const std::string& json) {
    setCatalog("[" + json + "]");
    return vorlu.catalog.entries.front();
  }
  void setPreferences(const std::string& generalOptions) {
    platform.write(
        "/Library/Managed Preferences/com.mosk.vorlu.preferences.plist",
        "<plist version=\"1.0\"><dict><key>GeneralOptions</key><dict>" + generalOptions + "</dict></dict></plist>");
  }
  void cacheFile(const std::string& name) { platform.write(paths::downloads + "/" + name, "installer"); }
  Lines cachedFiles() { return *platform.files.list(paths::downloads); }

  /// All messages so far, the silent ones too.
  Lines messages() {
    Lines lines;
    for (const SystemRecord& record : platform.systemLog.records()) lines.push_back(record.message);
    platform.systemLog.clear();
    return lines;
  }

  TestPlatform platform;
  Site site{sealedSite, platform.security};
  Vorlu vorlu{platform.platform(), site};
};

}  // namespace vorlu::test
