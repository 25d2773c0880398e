#include <fmt/format.h>

#include "tests/unit/install/install_run.h"
#include "vorlu/install/disk_image.h"
#include "vorlu/install/installer_package.h"
#include "vorlu/install/network_quality.h"
#include "vorlu/install/quit_app.h"

namespace vorlu::test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

class Tools : public InstallRun {
 protected:
  Tools() : InstallRun(false) { mac.makeFolder(paths::components); }
  int images = 0;
};

TEST_F(Tools, MountReadsTheVolumeFromTheOutput) {
  const auto expectMount = [this](const char* output, const std::string& mountPoint, const Lines& lines,
                                  int status = 0) {
    mac.processes.on(fmt::format("/usr/bin/hdiutil attach -nobrowse '/{} b.dmg'", ++images),
                     {.output = output, .status = status});
    EXPECT_EQ(mountImage(vorlu, fmt::format("/{} b.dmg", images), false), !mountPoint.empty());
    EXPECT_EQ(vorlu.progress.mountPoint, mountPoint);
    EXPECT_EQ(messages(), joined({"Mounting disk image..."}, lines));
  };
  const Lines mounted = {"Successfully mounted the Disk Image"};
  const char* hint = "Please ensure disk image mounting is not restricted and try again";
  expectMount("/dev/disk4 \tGUID_partition_scheme\n/dev/disk4s1 \tApple_HFS \t/Volumes/My App 2.0  \n",
              "/Volumes/My App 2.0", mounted);
  expectMount("disk4\t/Volumes/A\ndisk5\t/Volumes/B\n", "/Volumes/A", mounted);
  expectMount("hdiutil: attach failed - image not recognized\n", "",
              {"Error mounting disk image: Attach failed - image not recognized", hint});
  expectMount("disk4\t/Volumes\n", "", {"disk4\\t/Volumes", hint});
  expectMount("disk4\t/VolumesXY\n", "", {"disk4\\t/VolumesXY", hint});
  expectMount("", "", {hint});

  mac.makeFolder("/Volumes/A");
  expectMount("You agree?\n/dev/disk4s1\tApple_HFS\t/Volumes/A\nhdiutil: attach failed - Operation canceled\n", "",
              {"Error mounting disk image: Attach failed - Operation canceled", hint}, 1);
  for (const std::string name : {"A\nB", "A\n\tB ", " A\t", "A"}) {
    mac.makeFolder("/Volumes/" + name);
    expectMount(("/dev/disk4 \tmap\n/dev/disk4s1 \tApple_HFS \t/Volumes/" + name + "\n/dev/disk4s2 \tfree\n").c_str(),
                "/Volumes/" + name, mounted);
  }
}

TEST_F(Tools, ConversionIsJudgedByItsFreshFile) {
  const std::string target = "/private/tmp/a.cdr";
  const auto answer = [&](bool writes, bool timedOut) {
    mac.processes.on("/usr/bin/hdiutil convert -quiet /private/tmp/a.dmg -format UDTO -o " + target,
                     {.output = "",
                      .effect =
                          [=, this](const Command&) {
                            EXPECT_FALSE(mac.exists(target)) << "of an earlier download";
                            if (writes) mac.write(target, "image");
                          },
                      .timedOut = timedOut});
  };
  answer(false, false);
  answer(true, true);
  answer(true, false);
  for (const bool converted : {false, false, true}) {
    mac.write(target, "stale");
    EXPECT_EQ(convertImage(vorlu, "/private/tmp/a.dmg"), converted);
    EXPECT_EQ(messages().back(), converted ? "Converted disk image to mountable format"
                                           : "Error: Disk image could not be converted to a mountable format");
  }
  EXPECT_EQ(vorlu.progress.convertedImagePath, target);
}

TEST_F(Tools, InstallerLinesReachLogAndBar) {
  const struct {
    std::vector<std::string> pieces;
    Lines lines;
    int steps;  ///< of the bar before its end
  } cases[] = {
      {{"installer: Package name is A\ninstaller:PHA", "SE:Preparing for installation…\ninstaller:PHASE:Preparing for ",
        "installation…\n", "installer:STATUS:\ninstaller:%9.99\ninstaller:%10.2\ninstaller:%10.2\ninstaller:%x\n",
        "installer:%12x\n"},
       {"Package name is A", "Preparing for installation…", "9.99 percent complete", "10.2 percent complete",
        "x percent complete", "12x percent complete"},
       2},
  };
  for (const auto& c : cases)
    mac.processes.on("/usr/sbin/installer -verboseR -pkg '/a b.pkg' -target /", {.output = "", .pieces = c.pieces});
  for (const auto& c : cases) {
    mac.files.remove(paths::dialogCommandFile);
    vorlu.progress.installProgress = 0;
    installPackage(vorlu, "/a b.pkg", "", false, true);
    EXPECT_THAT(messages(), ElementsAreArray(c.lines));
    std::string bar;
    for (int n = 1; n <= c.steps; ++n) bar += fmt::format("progress: {}\n", n);
    EXPECT_EQ(mac.read(paths::dialogCommandFile), bar + "progress: 20\n");
  }
  mac.processes.on("/usr/sbin/installer -verboseR -applyChoiceChangesXML /c.xml -pkg /p.pkg -target /",
                   {.output = "",
                    .effect = [](const Command& command) { EXPECT_EQ(command.limit, std::chrono::minutes(60)); },
                    .pieces = {"never ends\n"},
                    .timedOut = true});
  installPackage(vorlu, "/p.pkg", "/c.xml", true, false);
  EXPECT_THAT(messages(),
              ElementsAre("never ends", "Error: /usr/sbin/installer did not end within 3600 seconds and was stopped"));
}

TEST_F(Tools, NetworkSpeedIsPlausibleWhateverTheFileHolds) {
  EXPECT_EQ(networkSpeed(vorlu), 50) << "no file";
  const std::map<const char*, int> speeds = {{"", 50},
                                             {"{\"dl_throughput\": 200000000, \"x\": [1]}", 200},
                                             {"{\"dl_throughput\": 12}", 1},
                                             {"{\"dl_throughput\": -5}", 50},
                                             {"{\"dl_throughput\": \"fast\"}", 50},
                                             {"{}", 50}};
  for (const auto& [file, speed] : speeds) {
    mac.write(paths::networkQuality, file);
    vorlu.progress.networkSpeed.reset();
    EXPECT_EQ(networkSpeed(vorlu), speed) << file;
  }
}

TEST_F(Tools, NetworkQualityIsTheCapacityOfTheSummary) {
  const std::string summary = "==== SUMMARY ====\n";
  const std::pair<std::string, std::string> cases[] = {
      {"Downlink capacity: 1 Mbps\n" + summary + "Downlink capacity: 93.498 Mbps - Low latency\nx", "93.498 Mbps"},
      {summary + "Downlink capacity: 12 Mbps", "12 Mbps"},
      {"Downlink capacity: 1 Mbps\n", ""},
      {summary + "Uplink capacity: 3 Mbps\n", ""},
      {summary + "Downlink capacity\nIdle: 5", ""},
      {"reason=Incorrect response status code on latency measuring connection\n" + summary +
           "Downlink capacity: 9 Mbps\n",
       ""},
      {"", ""},
  };
  for (const auto& [output, capacity] : cases) mac.processes.on("/usr/bin/networkQuality", {.output = output});
  for (const auto& [output, capacity] : cases) {
    EXPECT_EQ(measureNetworkQuality(vorlu), capacity) << output;
    EXPECT_EQ(messages().size(), capacity.empty() ? 2U : 1U) << output;
  }
}

TEST_F(Tools, QuitLineGivesEachReaderItsOwnEscapes) {
  const std::string head = "zsh: launchctl asuser 501 osascript -e \"set appName to \\\"";
  const std::string tail =
      "\\\"\n\ntell application appName\n\nwith timeout of 5 seconds\n\nquit\n\nend timeout\n\nend tell\"";
  mac.processes.onPrefix("", {.output = "said\n"});
  EXPECT_EQ(quitApp(vorlu, "My Slides"), "said\n");
  quitApp(vorlu, R"(a"b\c$d`e'f)");
  EXPECT_THAT(tools(), ElementsAre(head + "My Slides" + tail, head + R"(a\\\"b\\\\c\$d\`e'f)" + tail));
}

}  // namespace
}  // namespace vorlu::test
