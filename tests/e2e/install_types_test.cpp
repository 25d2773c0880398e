#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "tests/e2e/app_server.h"
#include "tests/e2e/simulated_mac.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/replacement.h"

namespace vorlu::e2e {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using Texts = std::vector<std::string>;

const char* const choices =
    "<plist version=\"1.0\"><array><dict><key>choiceIdentifier</key><string>Extras</string>"
    "<key>choiceAttribute</key><string>selected</string><key>attributeSetting</key><integer>1</integer></dict></array>"
    "</plist>";

const char* const oldReceipt =
    "<plist version=\"1.0\"><dict><key>PackageVersion</key><string>1.0</string></dict></plist>";

/// A Mac of one processor, and a catalog of builds for each.
struct Build {
  const char* cpuType;
  std::optional<std::string> AppBlueprints::*url;
  std::optional<std::string> AppBlueprints::*hash;
  std::optional<Texts> AppBlueprints::*nested;
  std::optional<std::string> AppBlueprints::*script;
  std::optional<std::string> AppBlueprints::*pattern;
  bool bySignature;
};
constexpr Build silicon = {"12",
                           &AppBlueprints::appleSiliconDownloadURL,
                           &AppBlueprints::siliconInstallerHash,
                           &AppBlueprints::nestedSiliconDownloadFiles,
                           &AppBlueprints::siliconDownloadURLCode,
                           &AppBlueprints::javascriptScrapeSiliconRegex,
                           false};
constexpr Build intel = {"7",
                         &AppBlueprints::intelDownloadURL,
                         &AppBlueprints::intelInstallerHash,
                         &AppBlueprints::nestedIntelDownloadFiles,
                         &AppBlueprints::intelDownloadURLCode,
                         &AppBlueprints::javascriptScrapeIntelRegex,
                         true};

/// One app of a type: what packs it besides itself, and what its entry says besides the usual.
struct TypeCase {
  const char* type;
  const char* name;
  Texts options;
  std::function<void(AppBlueprints&)> describe;
};

struct InstallTypes : SimulatedMacTest, testing::WithParamInterface<Build> {
  /// An entry that only the Mac's own build and proof can satisfy.
  static AppBlueprints entryFor(const TypeCase& c, const std::string& hash) {
    const Build& own = GetParam();
    const Build& other = own.bySignature ? silicon : intel;
    AppBlueprints app = entryOf(c.name, "2.0", c.type, "", own.bySignature ? "" : hash);
    app.architecture = "arch";
    app.universalDownloadURL = app.universalInstallerHash = std::nullopt;
    app.*own.url = AppServer::urlOf(c.type);
    app.*other.url = AppServer::urlOf("other");
    app.*own.hash = own.bySignature ? "not looked at" : hash;
    if (c.describe) c.describe(app);
    return app;
  }

  /// Calls of the Mac's tools that name an app, without quotes and the agent's own folder.
  static Texts callsAbout(const SimulatedMac& mac, const std::string& name) {
    Texts calls;
    for (const std::string& call : mac.toolCalls())
      if (call.find(name) != std::string::npos)
        calls.push_back(replacedAll(replacedAll(call, "'", ""), paths::run + "/", ""));
    return calls;
  }
};

TEST_P(InstallTypes, EachIsUpdatedAndInstalledByTheRealProgram) {
  AppServer server([](const refserver::Request& request, refserver::Response& response) {
    if (request.path == "/files/page") response.contentType = "text/html";
  });
  server.serve("page",
               "<script>document.write('<a href=\"" + AppServer::urlOf("zip?a=1&amp;b=2") + "\">here</a>')</script>");
  const auto nest = [](const Texts& items) { return [items](AppBlueprints& app) { app.nestedDownloadFiles = items; }; };
  const auto choose = [](AppBlueprints& app) {
    app.latestVersionMethod = "pkgReceipt";
    app.installReceipts = {"com.example.Pixel"};
    app.installerChoices = choices;
    app.preInstallScript = "#!/bin/bash\nif [ -d \"/Applications/Pixel.app\" ]; then\necho before\nfi\nexit 0";
    app.postInstallScript = "echo after; false";
  };
  const auto byProcessor = [](AppBlueprints& app) {
    app.architectureNesting = true;
    app.nestedDownloadFiles = {"never.pkg"};
    app.*GetParam().nested = {"missing.pkg", "REGEX:^Nest.*[.]pkg$"};
  };
  const auto byScript = [](AppBlueprints& app) {
    app.specifyDownloadURL = false;
    app.*GetParam().script = "if true; then\necho '" + AppServer::urlOf("tbz") + "'\nfi";
  };
  const auto byPage = [](AppBlueprints& app) {
    app.updateWhileRunning = true;
    app.specifyDownloadURL = false;
    app.javascriptScrapeURL = AppServer::urlOf("page");
    app.*GetParam().pattern = "http[^\"]*b=2";
  };
  const auto findIt = [](AppBlueprints& app) { app.sourceItems = {"REGEX:^Note.*[.]app$"}; };
  const Texts extras = {"--separate", "--unselected", "Extras", "--version", "2.0", server.make("Extras", "2.0")};
  const TypeCase cases[] = {
      {"pkg", "Pixel", extras, choose},
      {"dmg", "Note Book", {}, findIt},
      {"dmgWithEULA", "Lawful", {}, {}},
      {"pkgInDMG", "Nest Egg", {}, byProcessor},
      {"pkgInDMGWithEULA", "Ledger", {}, nest({"Ledger.pkg"})},
      {"zip", "Slides", {}, byPage},
      {"tbz", "Tar Ball", {}, byScript},
      {"zipInTBZ", "Russian Doll", {}, nest({"Russian Doll.zip"})},
      {"pkgInZIP", "Parcel", {}, nest({"Parcel.pkg"})},
      {"dmgInZIP", "Boxed", {}, nest({"REGEX:[.]dmg$"})},
      {"dmgWithEULAInZIP", "Sealed", {}, nest({"missing.dmg", "Sealed.dmg"})},
  };
  SimulatedMac mac;
  std::vector<AppBlueprints> catalog;
  Texts bundles = {"Extras.app"};
  for (const TypeCase& c : cases) {
    Texts contents = {"--name", c.name, server.make(c.name, "2.0")};
    contents.insert(contents.end(), c.options.begin(), c.options.end());
    catalog.push_back(entryFor(c, server.pack(c.type, c.type, contents)));
    mac.addApplication(c.name, "1.0", fmt::format("com.example.{}", c.name));
    bundles.push_back(fmt::format("{}.app", c.name));
  }
  std::sort(bundles.begin(), bundles.end());
  server.setCatalog(catalog);
  const std::string receipts = "/private/var/db/receipts/";
  mac.write(receipts + "com.example.Pixel.plist", oldReceipt);
  mac.setHost("cpuType", GetParam().cpuType);
  mac.boot();

  ASSERT_EQ(mac.run({"open", "-a", "Slides"}, "alice").status, 0);
  EXPECT_EQ(mac.run({"/usr/local/bin/vorlu", "--update", "check"}).status, 0);
  const std::string log = mac.read("/private/var/log/Vorlu.log");
  for (const std::string& bundle : bundles) EXPECT_EQ(versionOf(mac.path("/Applications/" + bundle)), "2.0") << bundle;
  for (const TypeCase& c : cases)
    EXPECT_THAT(log, HasSubstr(fmt::format(": {} was successfully updated from version 1.0 to 2.0\n", c.name)));
  EXPECT_THAT(withoutMissingKey(log), Not(testing::ContainsRegex("Error|Warning")));
  EXPECT_EQ(namesIn(mac.path("/Applications")), bundles);
  for (const std::string& folder : {paths::output, paths::downloads, std::string("/Volumes")})
    EXPECT_THAT(namesIn(mac.path(folder)), IsEmpty()) << folder;
  for (const char* id : {"Pixel", "Extras", "NestEgg", "Ledger", "Parcel"})
    EXPECT_TRUE(fs::exists(mac.path(fmt::format("{}com.example.{}.plist", receipts, id)))) << id;

  Texts pixel = {
      "installer -verboseR -applyChoiceChangesXML Output/PixelChoices.xml -pkg Downloads/Pixel-v2.0.pkg -target /"};
  Texts sealed = {"tar -xf Downloads/Sealed-v2.0.zip -C Output",
                  "hdiutil convert -quiet Output/Sealed.dmg -format UDTO -o Output/Sealed.cdr",
                  "hdiutil attach -nobrowse Output/Sealed.cdr", "hdiutil detach /Volumes/Sealed"};
  EXPECT_THAT(log, HasSubstr(": Found download URL: " + AppServer::urlOf("zip?a=1&b=2\n")));
  if (GetParam().bySignature) {
    pixel.insert(pixel.begin(), "pkgutil --check-signature Downloads/Pixel-v2.0.pkg");
    sealed.insert(sealed.end() - 1, "codesign -dv --verbose=4 /Volumes/Sealed/Sealed.app");
    EXPECT_THAT(log, HasSubstr(": Verifying signing information for Nest Egg.app...\n"));
  }
  EXPECT_EQ(callsAbout(mac, "Pixel"), pixel);
  EXPECT_EQ(callsAbout(mac, "Sealed"), sealed);
  const Texts slides = callsAbout(mac, "Slides");
  EXPECT_THAT(Texts(slides.end() - 3, slides.end()),
              ElementsAre("killall Slides", "su alice -c open -a \"/Applications/Slides.app\"",
                          "open -a /Applications/Slides.app"));
  EXPECT_EQ(mac.run({"pgrep", "-x", "Slides"}).status, 0) << "open again";

  // Installed on request, on a Mac that has none of them.
  mac.shell("killall Slides; rm -rf /Applications/*");
  for (const AppBlueprints& app : catalog) {
    const Outcome install = mac.run({"/usr/local/bin/vorlu", "--install", *app.appIdentifier});
    EXPECT_EQ(install.status, 0) << install.output;
  }
  EXPECT_EQ(namesIn(mac.path("/Applications")), bundles);
  for (const std::string& bundle : bundles) EXPECT_EQ(versionOf(mac.path("/Applications/" + bundle)), "2.0") << bundle;
}

INSTANTIATE_TEST_SUITE_P(Processors, InstallTypes, testing::Values(silicon, intel),
                         [](const auto& run) { return run.param.bySignature ? "IntelBySignature" : "SiliconByHash"; });

}  // namespace
}  // namespace vorlu::e2e
