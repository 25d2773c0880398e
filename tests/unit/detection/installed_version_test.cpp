#include "vorlu/detection/installed_version.h"

#include "tests/unit/detection/detection_run.h"
#include "vorlu/state/encoding.h"

namespace vorlu::test {
namespace {

std::string plistOf(const std::string& inside) {
  return "<plist version=\"1.0\"><dict>" + inside + "</dict></plist>";
}

TEST(InstalledVersion, IsReadByTheMethodOfTheEntry) {
  const std::string both =
      plistOf("<key>CFBundleVersion</key><string>77</string><key>CFBundleShortVersionString</key><string>1.2</string>");
  // {"CFBundleVersion": "12"}
  const std::string binary =
      *base64Decode("YnBsaXN0MDDRAQJfEA9DRkJ1bmRsZVZlcnNpb25SMTIICx0AAAAAAAABAQAAAAAAAAADAAAAAAAAAAAAAAAAAAAAIA==");
  const struct {
    const char* what;
    std::string method, infoPlistPath, file, content, version;
  } cases[] = {
      {"short", "CFBundleShortVersionString", "", "/App/Contents/Info.plist", both, "1.2"},
      {"build", "CFBundleVersion", "", "/App/Contents/Info.plist", both, "77"},
      {"binary", "CFBundleVersion", "", "/App/Contents/Info.plist", binary, "12"},
      {"own property list", "CFBundleVersion", "x", "/App", both, "77"},
      {"key absent", "CFBundleVersion", "", "/App/Contents/Info.plist", plistOf(""), "Unknown"},
      {"key of a wrong type", "CFBundleVersion", "", "/App/Contents/Info.plist",
       plistOf("<key>CFBundleVersion</key><integer>7</integer>"), "Unknown"},
      {"other key of a wrong type", "CFBundleVersion", "", "/App/Contents/Info.plist",
       plistOf("<key>CFBundleVersion</key><string>7</string><key>CFBundleShortVersionString</key><true/>"), "Unknown"},
      {"no dictionary", "CFBundleVersion", "", "/App/Contents/Info.plist", "<plist><array/></plist>", "Unknown"},
      {"no property list", "CFBundleVersion", "", "/App/Contents/Info.plist", "<html>", "Unknown"},
      {"empty file", "CFBundleVersion", "", "/App/Contents/Info.plist", "", "Unknown"},
      {"cut off", "CFBundleVersion", "", "/App/Contents/Info.plist", binary.substr(0, 30), "Unknown"},
      {"no such file", "CFBundleVersion", "", "/Other", both, "Unknown"},
      {"directory", "CFBundleVersion", "", "/App/Contents/Info.plist/x", both, "Unknown"},
      {"receipt", "pkgReceipt", "", "/receipt", plistOf("<key>PackageVersion</key><string>3.4</string>"), "3.4"},
      {"no receipt", "pkgReceipt", "", "/other", plistOf(""), "Unknown"},
      {"no method", "", "", "/App/Contents/Info.plist", both, ""},
      {"unknown method", "cfbundleversion", "", "/App/Contents/Info.plist", both, ""},
  };
  for (const auto& c : cases) {
    DetectionRun run;
    run.platform.write(c.file, c.content);
    EXPECT_EQ(readInstalledVersion(run.vorlu, {c.method, "/App", c.infoPlistPath, "", "/receipt"}), c.version)
        << c.what;
    EXPECT_EQ(run.messages(), Lines{}) << c.what;
  }
}

TEST(InstalledVersion, IsUnknownWhenItsScriptDoesNotEnd) {
  DetectionRun run;
  run.platform.processes.on("zsh: print 4", {"4\n"});
  run.platform.processes.on("zsh: print 4", {.output = "", .timedOut = true});
  EXPECT_EQ(readInstalledVersion(run.vorlu, {"shellCommand", "", "", "print 4", ""}), "4");
  EXPECT_EQ(readInstalledVersion(run.vorlu, {"shellCommand", "", "", "print 4", ""}), "Unknown");
}

TEST(PackageReceipt, IsFoundByItsExactName) {
  DetectionRun run;
  ASSERT_TRUE(run.platform.files.remove(paths::packageReceipts));
  EXPECT_EQ(findPackageReceipt(run.vorlu, "a.plist"), "Unknown");
  EXPECT_THAT(run.messages(), testing::ElementsAre(testing::StartsWith("Failed to list receipt directory items: ")));
  run.platform.write("/private/var/db/receipts/a.plist", "");
  EXPECT_EQ(findPackageReceipt(run.vorlu, "a.plist"), "/var/db/receipts/a.plist");
  EXPECT_EQ(findPackageReceipt(run.vorlu, "A.plist"), "Unknown");
  EXPECT_EQ(run.messages(), Lines{});
}

}  // namespace
}  // namespace vorlu::test
