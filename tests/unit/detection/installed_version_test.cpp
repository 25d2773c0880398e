#include "vorlu/detection/installed_version.h"

#include "tests/support/agent_run.h"
#include "vorlu/state/encoding.h"

namespace vorlu::test {
namespace {

TEST(InstalledVersion, IsReadByTheMethodOfTheEntry) {
  const std::string both =
      plistOf("<key>CFBundleVersion</key><string>77</string><key>CFBundleShortVersionString</key><string>1.2</string>");
  // {"CFBundleVersion": "12"}
  const std::string binary =
      *base64Decode("YnBsaXN0MDDRAQJfEA9DRkJ1bmRsZVZlcnNpb25SMTIICx0AAAAAAAABAQAAAAAAAAADAAAAAAAAAAAAAAAAAAAAIA==");
  const auto expectVersion = [](const char* what, const std::string& version, const char* method,
                                const std::string& content, const char* file = "/App/Contents/Info.plist") {
    AgentRun run;
    run.mac.write(file, content);
    const char* infoPlistPath = file == std::string("/App") ? "x" : "";
    EXPECT_EQ(readInstalledVersion(run.vorlu, {method, "/App", infoPlistPath, "", "/receipt"}), version) << what;
    EXPECT_EQ(run.messages(), Lines{}) << what;
  };
  const char* const build = "CFBundleVersion";
  expectVersion("short", "1.2", "CFBundleShortVersionString", both);
  expectVersion("build", "77", build, both);
  expectVersion("binary", "12", build, binary);
  expectVersion("own property list", "77", build, both, "/App");
  expectVersion("key absent", "Unknown", build, plistOf(""));
  expectVersion("key of a wrong type", "Unknown", build, plistOf("<key>CFBundleVersion</key><integer>7</integer>"));
  expectVersion("no dictionary", "Unknown", build, "<plist><array/></plist>");
  expectVersion("cut off", "Unknown", build, binary.substr(0, 30));
  expectVersion("no such file", "Unknown", build, both, "/Other");
  expectVersion("directory", "Unknown", build, both, "/App/Contents/Info.plist/x");
  expectVersion("receipt", "3.4", "pkgReceipt", plistOf("<key>PackageVersion</key><string>3.4</string>"), "/receipt");
  expectVersion("no receipt", "Unknown", "pkgReceipt", plistOf(""), "/other");
  expectVersion("no method", "", "", both);
  expectVersion("unknown method", "", "cfbundleversion", both);
}

TEST(InstalledVersion, IsUnknownWhenItsScriptDoesNotEnd) {
  AgentRun run;
  run.mac.processes.on("zsh: print 4", {"4\n"});
  run.mac.processes.on("zsh: print 4", {.output = "", .timedOut = true});
  EXPECT_EQ(readInstalledVersion(run.vorlu, {"shellCommand", "", "", "print 4", ""}), "4");
  EXPECT_EQ(readInstalledVersion(run.vorlu, {"shellCommand", "", "", "print 4", ""}), "Unknown");
}

}  // namespace
}  // namespace vorlu::test
