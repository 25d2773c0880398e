#include <nlohmann/json.hpp>

#include "tests/support/agent_run.h"
#include "vorlu/platform/linux/linux_processes.h"
#include "vorlu/prompts/checking_prompt.h"
#include "vorlu/prompts/completion_prompt.h"
#include "vorlu/prompts/grace_prompt.h"
#include "vorlu/prompts/initial_prompt.h"
#include "vorlu/prompts/minutes_text.h"
#include "vorlu/prompts/progress_window.h"
#include "vorlu/prompts/prompt_icons.h"
#include "vorlu/prompts/prompt_position.h"
#include "vorlu/prompts/self_service.h"
#include "vorlu/prompts/up_to_date_prompt.h"

namespace vorlu::test {
namespace {

const std::string anyPrompt = "zsh: \"" + paths::dialogProgram + "\"";

/// A run whose prompts end as the test says, and whose shell lines can be run for real afterwards.
struct PromptRun : AgentRun {
  explicit PromptRun(const std::string& exitText = "0", const std::string& keys = "") {
    setPreferences("ScheduledUpdates", keys);
    mac.processes.onPrefix(anyPrompt, {.output = exitText});
    mac.processes.onPrefix("zsh: su alice -c ", {});
    mac.processes.on("zsh: killall Dialog", {});
  }

  UpdatePrompt scheduled(const Lines& names, const std::string& option) {
    ScheduledPromptInput input{.apps = {}, .deferralOption = option, .deferCount = 2, .dialogIcon = "/icon.png"};
    for (const std::string& name : names) input.apps.push_back({name, "/" + name + ".png", "2.0"});
    return prepareScheduledPrompt(vorlu, input);
  }

  /// What the tool gets from the last command: a real shell runs its line, with a tool that keeps its arguments and an
  /// `su` that hands its line to a shell. Values by flag.
  std::map<std::string, std::string> received() {
    mac.write("/tool", "#!/bin/sh\nprintf '%s\\037' \"$@\" > " + mac.root() + "/arguments\n");
    std::filesystem::permissions(mac.root() + "/tool", std::filesystem::perms::owner_all);
    std::string line = tools().back();
    line = line.substr(5, line.ends_with(" &") ? line.size() - 7 : line.npos);
    line.replace(line.find(paths::dialogProgram), paths::dialogProgram.size(), mac.root() + "/tool");
    LinuxProcesses().run(shellCommand("su() { /bin/zsh -c \"$3\"; }; " + line));
    std::map<std::string, std::string> values;
    std::string flag, rest = mac.read("/arguments");
    for (auto end = rest.find('\037'); end != rest.npos; rest.erase(0, end + 1), end = rest.find('\037'))
      rest.starts_with("--") ? flag = rest.substr(0, end) : values[flag] += rest.substr(0, end);
    return values;
  }
};

std::string key(const std::string& name, const std::string& value, const char* type = "string") {
  return fmt::format("<key>{}</key><{}>{}</{}>", name, type, value, type);
}
std::string key(const std::string& name, int value) {
  return key(name, std::to_string(value), "integer");
}
std::string size(const std::string& name, int height, int width) {
  return key(name, key("promptHeight", height) + key("promptWidth", width), "dict");
}

/// What varies between prompts of one kind, as the tool got it.
std::string varying(PromptRun& run) {
  auto got = run.received();
  const std::string head = got["--iconsize"] + got["--titlefont"];
  return fmt::format("{}{} {}s {}x{}{}", got["--button2text"], head == "80size=16" ? "" : " " + head, got["--timer"],
                     got["--height"], got["--width"], got.contains("--jsonstring") ? " list" : "");
}

TEST(Prompts, VaryWithAppsModeListAndPreferences) {
  const std::string list = key("appListType", "vertical"), initial = "customInitialPromptSize",
                    grace = "customGracePromptSize";
  const std::string limit = "specifyDeferralLimit", none = "disableDeferrals", self = "selfService";
  const std::string halfASize = key(initial, key("promptWidth", 700), "dict");
  const struct {
    std::size_t apps;
    std::string option, keys, initial, grace;
  } cases[] = {
      {1, limit, list, "Defer (2) 60size=18 20s 263x590 list", " 900s 273x590 list"},
      {5, limit, list, "Defer (2) 20s 365x670 list", " 900s 365x670 list"},
      {2, none, list, "Defer 20s 295x660 list", " 900s 301x660 list"},
      {4, self, list, "Skip 20s 335x670 list", " 900s 365x670 list"},
      {2, self, key("appListType", "Vertical") + size(initial, 500, 700), "Skip 20s 320x670", " 900s 340x690"},
      {2, limit, list + size(initial, 500, 700), "Defer (2) 20s 600x700 list", " 900s 325x670 list"},
      {1, limit, size(initial, 0, 700) + size(grace, 5, -1), "Defer (2) 20s 340x690", " 900s 340x690"},
      {1, none, halfASize + size(grace, 5, 6), "Defer 20s 320x650", " 900s 5x6"},
      {1, limit, key("customDeferButton", "deferCount") + key("refreshInterval", 5), "2 10s 340x690", " 900s 340x690"},
      {1, self, key("refreshInterval", 300) + key("gracePeriodMinutes", 99999), "Skip 120s 320x670",
       " 604800s 340x690"},
      {1, "other", key("customDeferButton", "") + key("gracePeriodMinutes", -3), "Defer 20s 320x650", " 900s 340x690"},
  };
  for (const auto& c : cases) {
    PromptRun run("0", c.keys);
    const UpdatePrompt prompt = run.scheduled(Lines(c.apps, "A"), c.option);
    showInitialPrompt(run.vorlu, prompt);
    EXPECT_EQ(varying(run), c.initial) << c.apps << c.option << c.keys;
    showGracePrompt(run.vorlu, prompt);
    EXPECT_EQ(varying(run), c.grace) << c.apps << c.option << c.keys;
  }
}

TEST(Prompts, AForcedPromptHasItsOwnTextsAndSizes) {
  PromptRun run("2");
  run.setPreferences("ForcedUpdates",
                     size("customGracePromptSize", 300, 600) + key("customDeferButton", "In {deferCount}"));
  const UpdatePrompt prompt = prepareForcedPrompt(run.vorlu, {{"Slides", "", "2.0"}, 3, 0});
  EXPECT_EQ(showInitialPrompt(run.vorlu, prompt).answer, PromptAnswer::button2);
  EXPECT_EQ(varying(run), "In {3} 20s 260x530");
  showGracePrompt(run.vorlu, prompt);
  EXPECT_EQ(varying(run), " 900s 300x600");
}

TEST(Prompts, WordsOfCustomTextsAreReplacedOnce) {
  PromptRun run("0", key("multipleInitialQuitPromptMessage",
                         "updateButton/logOutButton/deferButton/deferCount/updateCount/appList/gracePeriod/appName") +
                         key("customUpdateButton", "deferCount") +
                         key("singleAppGracePeriodQuitMessage", "appName: myappListing"));
  EXPECT_EQ(run.scheduled({"A", "appList"}, "specifyDeferralLimit").initialMessage,
            "deferCount/deferCount/Defer (2)/2/2/A, appList/15 minutes/appName");
  EXPECT_EQ(run.scheduled({"A"}, "disableDeferrals").graceMessage, "A: myAing");
}

TEST(Prompts, NoTextComesAliveOnItsWayToTheTool) {
  Lines texts = {"\"$(echo x)`echo x`; echo x #",
                 "it's 'a' $(echo x)",
                 "back\\",
                 "",
                 "\\\"\\\\n\\$HOME\\`",
                 "two\\nlines\nreal\\\nbreak",
                 "!! ${x} {a,b} ~ * && | שלום 🦄"};
  texts.emplace_back();
  while (texts.back().size() < 10'000) texts.back() += "é🦄'\"";
  for (const std::string& text : texts) {
    PromptRun run;
    UpdatePrompt prompt = run.scheduled({"A"}, "disableDeferrals");
    prompt.initialMessage = prompt.deferButton = prompt.overlayIcon = text;
    prompt.appList = appListJson({{"A", "", ""}, {text, text, text}}, RowStatus::pending);
    showInitialPrompt(run.vorlu, prompt);
    auto got = run.received();
    EXPECT_TRUE((Lines{got["--message"], got["--button2text"], got["--overlayicon"]}) == Lines(3, text)) << text;
    const auto row = nlohmann::json::parse(got["--jsonstring"]).at("listitem").at(1);
    EXPECT_EQ((Lines{row["title"], row["statustext"]}), (Lines{text, "Version: " + text + " "}));
    openProgressWindow(run.vorlu, {"Slides", text, text, "", text, 1, false});
    got = run.received();
    EXPECT_EQ((Lines{got["--message"], got["--icon"], got["--position"]}), Lines(3, text));
  }
}

TEST(Prompts, OnlyThreeCodesOfAPromptThatEndedByItselfMeanSomething) {
  using enum PromptAnswer;
  const struct {
    std::string text;
    PromptAnswer answer;
    bool killed = false;
  } cases[] = {
      {"0\n", button1},       {" 2\n\n", button2},         {"4", timerRanOut},           {"00", quitUnexpectedly},
      {"", quitUnexpectedly}, {"0\xff", quitUnexpectedly}, {"0", quitUnexpectedly, true}};
  const auto checkLimit = [](const Command& command) { EXPECT_EQ(command.limit, std::chrono::seconds(140)); };
  for (const auto& c : cases) {
    PromptRun run;
    run.mac.processes.onPrefix(anyPrompt + " ", {.output = c.text, .effect = checkLimit, .timedOut = c.killed});
    EXPECT_EQ(showInitialPrompt(run.vorlu, run.scheduled({"A"}, "disableDeferralLimit")).answer, c.answer) << c.text;
  }
}

TEST(Prompts, TheGracePromptIsBroughtForwardEachMinuteWhileItRuns) {
  const std::pair<double, std::vector<double>> cases[] = {{0.5, {}}, {1.5, {1}}, {60, {1}}, {125, {1, 60, 120}}};
  for (const auto& [life, expected] : cases) {
    PromptRun run;
    std::vector<double> refreshes;
    const auto runs = [&run, end = VirtualClock::defaultStart + life] { return run.mac.clock.now() < end; };
    run.mac.processes.onPrefix(anyPrompt + " ", {.output = "4\n", .stillRunning = runs});
    run.mac.processes.on("zsh: su alice -c 'open -a \"" + paths::dialogProgram + "\"'", {.effect = [&](const Command&) {
                           refreshes.push_back(run.mac.clock.now() - VirtualClock::defaultStart);
                         }});
    showGracePrompt(run.vorlu, run.scheduled({"A"}, "disableDeferrals"));
    EXPECT_EQ(refreshes, expected);
    EXPECT_EQ(run.tools().size(), refreshes.size() + 1) << "one window";
    EXPECT_EQ(run.messages().back(), "The grace period timer ran out");
  }
}

TEST(Prompts, ACompletionPromptIsAnsweredByItsOwnReceiptAlone) {
  using Receipt = std::tuple<double, std::string, std::string>;  // seconds until it comes, its text, the message
  const Receipt cases[] = {{3, "0\n", "User clicked Yes. Launching Slides..."},
                           {20.5, "0\n", "The complete prompt timer ran out"},
                           {2, "", "The complete prompt timer ran out"},
                           {2, "143", "The complete prompt quit unexpectedly. Exit code: 143"}};
  for (const auto& [at, text, message] : cases) {
    PromptRun run;
    run.mac.write(paths::completeResult, "0\n");  // of an earlier prompt
    run.mac.clock.at(at, [&run, content = text] { run.mac.write(paths::completeResult, content); });
    showCompletePrompt(run.vorlu, InstallCompletePrompt{"Slides", "/Applications/Slides.app", "/i.png", "top"});
    EXPECT_EQ(run.messages().back(), message) << at;
    EXPECT_EQ(run.tools().back() == "zsh: su alice -c 'open -a \"/Applications/Slides.app\"'", at == 3) << at;
    EXPECT_FALSE(run.mac.exists(paths::completeResult)) << at;
  }
}

TEST(Prompts, TheCheckingPromptIsClosedEvenIfItDoesNotListen) {
  for (const bool listens : {true, false}) {
    PromptRun run;
    run.mac.makeFolder(paths::components);
    const auto shown = showCheckingPrompt(run.vorlu, "/d.png");
    run.mac.clock.at(1.5, [&] { listens&& run.mac.processes.signal(*shown, SIGTERM); });
    run.tools();
    closeCheckingPrompt(run.vorlu, shown);
    EXPECT_EQ(run.tools().back() == "zsh: killall Dialog", !listens);
    EXPECT_THAT(run.mac.read(paths::dialogCommandFile), testing::EndsWith("quit:\n"));
  }
}

TEST(Prompts, MinutesInWords) {
  Lines words;
  for (const int minutes : {1, 15, 60, 61, 119, 120, 1501}) words.push_back(formatMinutes(minutes));
  EXPECT_EQ(words, (Lines{"1 minute", "15 minutes", "1 hour", "1 hour and 1 minute", "1 hour and 59 minutes", "2 hours",
                          "25 hours and 1 minute"}));
}

TEST(Prompts, PositionsIconsAndSelfService) {
  PromptRun run;
  EXPECT_EQ(validatedPromptPosition(run.vorlu.log, std::nullopt), "topright");
  EXPECT_EQ(validatedPromptPosition(run.vorlu.log, "top left"), "topright");
  EXPECT_EQ(initialOverlayIcon(run.vorlu, "SelfService"), "");
  EXPECT_EQ(run.messages().size(), 2U) << "one each for the last two";
  const std::string branding =
      "/Users/alice/Library/Application Support/com.jamfsoftware.selfservice.mac/Documents/Images/brandingimage.png";
  run.mac.write(branding, "");
  EXPECT_EQ(chooseDialogIcon(run.vorlu, "/Users"), branding) << "a folder is no icon";

  run.mac.write(paths::jamfPreferences, plistOf(key("self_service_app_path", "/Self Service.app") +
                                                key("self_service_plus_path", "/Applications/App Shop.app/")));
  EXPECT_EQ(selfServiceName(run.mac.files), std::nullopt) << "without Jamf";
  run.mac.write(paths::jamf, "");
  EXPECT_EQ(selfServiceName(run.mac.files), "App Shop");
}

}  // namespace
}  // namespace vorlu::test
