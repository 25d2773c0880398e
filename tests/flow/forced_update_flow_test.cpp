#include "vorlu/policy/forced_update_flow.h"

#include <fmt/format.h>

#include "tests/unit/install/install_run.h"
#include "vorlu/state/forced_receipt.h"

namespace vorlu::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

const std::string compliant = "Mar 02 2026 ";

class ForcedUpdateFlow : public InstallRun {
 protected:
  ForcedUpdateFlow() {
    mac.processes.on("/usr/bin/pgrep -x vorlu", {.output = "4000\n"});
    mac.processes.onPrefix("/usr/bin/pgrep -x ", {.output = ""});
    mac.processes.onPrefix("zsh: ", {.effect = [this](const Command& c) { note(commandLine(c)); }});
    mac.processes.onPrefix("zsh: launchctl asuser", {.effect = [this](const Command&) { quit(); }});
    for (const char* answer : {"0", "2", "4", "137"})
      answersOf[answer] = Answer{.output = std::string(answer) + "\n"};
    RunDataFile file;
    file.CurrentRunType = "N/A";
    file.DeferCount = "2";
    store(file);
  }

  /// A marked app in version 1.0, of which 2.0 is served, in use or not.
  void mark(const std::string& name, const std::string& keys, bool inUse) {
    addToCatalog(name);
    install(name);
    if (inUse) mac.applications.running.insert("com.example." + name);
    mac.write(forcedReceiptPath("id." + name), plistOf(keys));
  }
  std::string deferrals(const std::string& count) { return "<key>deferrals</key><string>" + count + "</string>"; }

  /// One run in which the user gives these answers, prompt by prompt.
  void flow(const Lines& userAnswers) {
    for (const std::string& answer : userAnswers) mac.processes.onPrefix(dialog, answersOf.at(answer));
    messages();
    tools();
    EXPECT_EQ(endOf([&] { forcedUpdateFlow(vorlu); }), std::nullopt);
    EXPECT_EQ(runData().CurrentRunType, "N/A");
    EXPECT_EQ(runData().DeferCount, "2") << "the computer's own deferrals";
    EXPECT_FALSE(mac.exists(paths::currentTask));
    EXPECT_FALSE(mac.exists(paths::watchReceipt));
  }
  ReceiptData receipt(const std::string& name) {
    return loadForcedReceipt(mac.files, forcedReceiptPath("id." + name));
  }
  bool marked(const std::string& name) { return mac.exists(forcedReceiptPath("id." + name)); }
  void quit() { mac.applications.running.clear(); }
  void note(const std::string&) {}

  const std::string dialog = "zsh: \"" + paths::dialogProgram;
  std::map<std::string, Answer> answersOf;
};

}  // namespace
}  // namespace vorlu::test
