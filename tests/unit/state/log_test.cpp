#include "vorlu/state/log.h"

#include "tests/support/agent_run.h"
#include "vorlu/state/dialog_command.h"
#include "vorlu/state/format_date.h"

namespace vorlu::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Log, ShowsARefusalInPlainWords) {
  const std::string bare = "Expected to decode Array<Any> but found a dictionary instead.";
  const std::string refusal =
      "typeMismatch(Array<Any>, Context(codingPath: [], debugDescription: \"" + bare + "\", underlyingError: nil))";
  const std::string plain = "Server temporarily unavailable. Please try again later";
  const std::pair<std::string, std::string> cases[] = {
      {"Error during app data decode: " + refusal, "Error during app data decode: " + plain},
      {refusal + " and " + refusal, plain + " and " + plain},
      {bare, plain},
      // another mismatch is told as it is, also beside bare words of a refusal
      {"typeMismatch(Int, Context(x)) then " + bare, "typeMismatch(Int, Context(x)) then " + plain},
      {"typeMismatch(unclosed " + bare, "typeMismatch(unclosed " + plain}};
  for (const auto& [message, shown] : cases) EXPECT_EQ(scrubbed(message), shown) << message;
}

TEST(Log, FilesDefectsAndNotPassingConditions) {
  const auto filedAs = [](const char* message) {
    return std::string(isFiledError(message) ? "error " : "") + (isFiledWarning(message) ? "warning" : "");
  };
  for (const char* message :
       {"Error: Vorlu server data decode failed - x)", "Error during app data decode: x", "Error:no blank",
        "error: lower case", "All is well", "Warning: The Vorlu server is not reachable. Status Code: 503",
        "Warning: No data was received from the server request",
        "Error: HTTP status code 500. Warning: kept by neither"})
    EXPECT_EQ(filedAs(message), "") << message;
  EXPECT_EQ(filedAs("Warning: Could not list archive output - x"), "warning");
  EXPECT_EQ(filedAs("Warning: something. Error: both"), "error warning");
  EXPECT_EQ(filedAs("Error: No response received. Warning: No response received"), "error ");
}

struct LogTest : testing::Test, AgentRun {};

TEST_F(LogTest, WritesOneLineAMessage) {
  vorlu.log("in the file alone", silent);
  vorlu.log("forged\nSun Mar 01 line\x1b[31m\tend\r\x7f");
  EXPECT_THAT(shown(), ElementsAre("forged\\nSun Mar 01 line\\x1b[31m\\tend\\r\\x7f"));
  mac.device.serial.reset();
  vorlu.log("no serial");
  EXPECT_EQ(mac.read("/private/var/log/Vorlu.log"),
            fmt::format("{0} C02SIM00001 vorlu[4000]: in the file alone\n"
                        "{0} C02SIM00001 vorlu[4000]: forged\\nSun Mar 01 line\\x1b[31m\\tend\\r\\x7f\n"
                        "{0} Unknown vorlu[4000]: no serial\n",
                        "Mon Mar 02 12:00:00"));
  mac.makeFolder(paths::components);
  writeDialogCommand(vorlu, "progresstext: a\nquit:\rb");  // a name that would command the window
  EXPECT_EQ(mac.read(paths::dialogCommandFile), "progresstext: a quit: b\n");
}

TEST_F(LogTest, FilesErrorsInOrderAndReplacesABrokenRecord) {
  mac.write(paths::errors, "{\"vorluErrors\": 7}");
  vorlu.log("Error: first");
  vorlu.log("Warning: second", silent);
  vorlu.log("Error: third\nline");
  const auto record = decodeJson<ErrorStruct>(mac.read(paths::errors));
  ASSERT_TRUE(record && record->vorluErrors && record->vorluWarnings);
  ASSERT_EQ(record->vorluErrors->size(), 2u);
  EXPECT_EQ(record->vorluErrors->front().message, "Error: first");
  EXPECT_EQ(record->vorluErrors->front().timeStamp, "Mar 02 2026 12:00:00 +0000");
  EXPECT_EQ(record->vorluErrors->back().message, "Error: third\nline");
  EXPECT_EQ(record->vorluWarnings->size(), 1u);
}

TEST_F(LogTest, GoesOnWhenNothingCanBeWritten) {
  mac.files.failWritesFrom(1);
  vorlu.log("Error: lost");
  const Lines lines = shown();
  EXPECT_EQ(lines.front(), "Error: lost");
  EXPECT_THAT(lines, testing::Contains(testing::StartsWith("Error writing to /var/log/Vorlu.log: ")).Times(2));
}

TEST_F(LogTest, TellsJamfProWithTheUser) {
  vorlu.log.logForJamf("Error: told");
  EXPECT_EQ(mac.read(paths::jamfLog), "Mon Mar 02 12:00:00 [Username: alice]: Error: told\n");
  EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(LogTest, FormatsDates) {
  // the last days of 2026 belong to week 1 of 2027
  const auto text = [this](DateForm form) { return formatDate(mac.clock, 1798675199, form); };
  EXPECT_EQ(text(DateForm::fullStamp), "Dec 30 2027 23:59:59 +0000");
  EXPECT_EQ(text(DateForm::compactTime), "2359");
  EXPECT_EQ(text(DateForm::clockTime), "23:59");
  EXPECT_EQ(text(DateForm::longDate), "Wed 30 Dec 2027 23:59:59");
  EXPECT_EQ(capitalised("hELLO wORLD  x-Y"), "Hello World  X-y");
}

}  // namespace
}  // namespace vorlu::test
