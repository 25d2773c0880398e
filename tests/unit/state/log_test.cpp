#include "vorlu/state/log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/state/state_run.h"
#include "vorlu/state/format_date.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"

namespace vorlu::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string refusal =
    "typeMismatch(Array<Any>, Context(codingPath: [], debugDescription: \"Expected to decode Array<Any> but found a "
    "dictionary instead.\", underlyingError: nil))";

TEST(Log, ShowsARefusalInPlainWords) {
  const struct {
    std::string message;
    std::string shown;
  } cases[] = {
      {"Error during app data decode: " + refusal,
       "Error during app data decode: Server temporarily unavailable. Please try again later"},
      {refusal + " and " + refusal,
       "Server temporarily unavailable. Please try again later and Server temporarily "
       "unavailable. Please try again later"},
      {"Expected to decode Array<Any> but found a dictionary instead.",
       "Server temporarily unavailable. Please try again later"},
      // another mismatch is told as it is, also beside bare words of a refusal
      {"typeMismatch(Int, Context(x)) then Expected to decode Array<Any> but found a dictionary instead.",
       "typeMismatch(Int, Context(x)) then Server temporarily unavailable. Please try again later"},
      {"typeMismatch(Int, Context(codingPath: []))", "typeMismatch(Int, Context(codingPath: []))"},
      {"typeMismatch(unclosed Expected to decode Array<Any> but found a dictionary instead.",
       "typeMismatch(unclosed Server temporarily unavailable. Please try again later"},
  };
  for (const auto& [message, shown] : cases) EXPECT_EQ(scrubbed(message), shown) << message;
}

TEST(Log, FilesDefectsAndNotPassingConditions) {
  const struct {
    const char* message;
    bool error;
    bool warning;
  } cases[] = {
      {"Error: The run directory could not be created. Please contact us for assistance", true, false},
      {"Error: Vorlu server data decode failed - x)", false, false},
      {"Error: Could not collect Vorlu App information. If the problem persists", false, false},
      {"Error during app data decode: x", false, false},
      {"Error:no blank", false, false},
      {"error: lower case", false, false},
      {"Warning: The Vorlu server is not reachable. Status Code: 503", false, false},
      {"Warning: Could not list archive output - x", false, true},
      {"Warning: No data was received from the server request", false, false},
      {"Warning: something. Error: both", true, true},
      {"Error: HTTP status code 500. Warning: kept by neither", false, false},
      {"Error: No response received. Warning: No response received", true, false},
      {"All is well", false, false},
  };
  for (const auto& [message, error, warning] : cases) {
    EXPECT_EQ(isFiledError(message), error) << message;
    EXPECT_EQ(isFiledWarning(message), warning) << message;
  }
}

struct LogTest : testing::Test, StateRun {
  ErrorStruct filed() {
    auto record = decodeJson<ErrorStruct>(mac.read(paths::errors));
    EXPECT_TRUE(record.ok()) << record.error();
    return record.ok() ? *record : ErrorStruct{};
  }
};

TEST_F(LogTest, WritesOneLineAMessageToFileSystemLogAndConsole) {
  vorlu.modes.runStage = "Initialising";
  vorlu.log("Checking...");
  vorlu.log("in the file alone", silent);
  vorlu.log("forged\nSun Mar 01 line\x1b[31m\tend");
  EXPECT_EQ(logFile(),
            "Mon Mar 02 12:00:00 C02SIM00001 vorlu[4000]: Checking...\n"
            "Mon Mar 02 12:00:00 C02SIM00001 vorlu[4000]: in the file alone\n"
            "Mon Mar 02 12:00:00 C02SIM00001 vorlu[4000]: forged\\nSun Mar 01 line\\x1b[31m\\tend\n");
  EXPECT_THAT(shown(), ElementsAre("Checking...", "forged\\nSun Mar 01 line\\x1b[31m\\tend"));
  mac.device.serial.reset();
  vorlu.log("no serial");
  EXPECT_THAT(logFile(), testing::EndsWith(" Unknown vorlu[4000]: no serial\n"));
}

TEST_F(LogTest, FilesErrorsInOrderAndReplacesABrokenRecord) {
  mac.makeFolder(paths::run);
  mac.write(paths::errors, "{\"vorluErrors\": 7}");
  vorlu.log("Error: first");
  vorlu.log("Warning: second", silent);
  vorlu.log("Error: third\nline");
  const ErrorStruct record = filed();
  ASSERT_TRUE(record.vorluErrors && record.vorluWarnings);
  ASSERT_EQ(record.vorluErrors->size(), 2u);
  EXPECT_EQ(record.vorluErrors->front().message, "Error: first");
  EXPECT_EQ(record.vorluErrors->front().timeStamp, "Mar 02 2026 12:00:00 +0000");
  EXPECT_EQ(record.vorluErrors->back().message, "Error: third\nline");
  ASSERT_EQ(record.vorluWarnings->size(), 1u);
}

TEST_F(LogTest, GoesOnWhenNothingCanBeWritten) {
  mac.files.failWritesFrom(1);
  vorlu.log("Error: lost");
  
  ASSERT_FALSE(shown().empty());
  EXPECT_EQ(shown().front(), "Error: lost");
  EXPECT_THAT(shown(), testing::Contains(testing::StartsWith("Error writing to /var/log/Vorlu.log: ")).Times(2));
  mac.files.heal();
  EXPECT_FALSE(mac.exists(paths::errors));
}

TEST_F(LogTest, TellsJamfProWithTheUser) {
  vorlu.log.logForJamf("Error: told");
  EXPECT_EQ(mac.read(paths::jamfLog), "Mon Mar 02 12:00:00 [Username: alice]: Error: told\n");
  EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(LogTest, FormatsDates) {
  // the last days of 2026 belong to week 1 of 2027
  const Seconds newYearsEve = 1798675199;
  const struct {
    DateForm form;
    const char* text;
  } cases[] = {
      {DateForm::weekday, "Wed"},
      {DateForm::fullStamp, "Dec 30 2027 23:59:59 +0000"},
      {DateForm::compactTime, "2359"},
      {DateForm::clockTime, "23:59"},
      {DateForm::longDate, "Wed 30 Dec 2027 23:59:59"},
      {DateForm::logLine, "Wed Dec 30 23:59:59"},
  };
  for (const auto& [form, text] : cases) EXPECT_EQ(formatDate(mac.clock, newYearsEve, form), text);
  EXPECT_EQ(capitalised("hELLO wORLD  x-Y"), "Hello World  X-y");
}

}  // namespace
}  // namespace vorlu::test
