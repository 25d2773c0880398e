#include "vorlu/install/installer_package.h"

#include <fmt/format.h>

#include <charconv>

#include "vorlu/detection/catalog_script.h"
#include "vorlu/install/line_reader.h"
#include "vorlu/install/progress_bar.h"
#include "vorlu/state/replacement.h"
#include "vorlu/state/tool.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

constexpr std::chrono::minutes longestInstall{60};
constexpr int barSteps = 20;
constexpr std::chrono::milliseconds tickGap{100};

/// The whole number before the point, 0 for what is no number.
int wholePercent(std::string_view text) {
  text = text.substr(0, text.find('.'));
  int percent = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), percent);
  return error == std::errc() && end == text.data() + text.size() ? percent : 0;
}

/// Takes the installer's lines to the log and the progress bar.
class InstallerReport {
 public:
  InstallerReport(Vorlu& vorlu, bool quiet, bool showProgress)
      : vorlu_(vorlu), quiet_(quiet), showProgress_(showProgress) {}

  void take(std::string_view line) {
    std::string text(line);
    for (const std::string_view mark : {"installer:", "PHASE:", "STATUS:"}) text = replacedAll(text, mark, "");
    text = trimmed(text);
    if (text.find('%') == std::string::npos) return say(text);
    text = replacedAll(text, "%", "");
    if (showProgress_) advance(wholePercent(text));
    say(fmt::format("{} percent complete", text));
  }

 private:
  void say(const std::string& text) {
    if (text.empty() || text == lastLine_) return;
    lastLine_ = text;
    vorlu_.log(text, quiet_);
  }

  void advance(int percent) {
    if (percent > nextPercent_ + 9) {
      tickTwice();
      tickTwice();
      nextPercent_ += 20;
    } else if (percent >= nextPercent_) {
      tickTwice();
      nextPercent_ += 10;
    }
  }

  void tickTwice() {
    stepBar(vorlu_);
    vorlu_.platform.clock.sleep(tickGap);
    stepBar(vorlu_);
  }

  Vorlu& vorlu_;
  bool quiet_;
  bool showProgress_;
  int nextPercent_ = 10;
  std::string lastLine_;
};

}  // namespace

bool installPackage(Vorlu& vorlu, const std::string& path, const std::string& choicesPath, bool quiet,
                    bool showProgress) {
  const int target = vorlu.progress.installProgress + barSteps;
  InstallerReport report(vorlu, quiet, showProgress);
  LineReader lines([&](std::string_view line) { report.take(line); });
  Command command;
  command.program = "/usr/sbin/installer";
  command.arguments = {"-verboseR"};
  if (!choicesPath.empty()) command.arguments.insert(command.arguments.end(), {"-applyChoiceChangesXML", choicesPath});
  command.arguments.insert(command.arguments.end(), {"-pkg", path, "-target", "/"});
  command.mergeStandardError = false;
  command.limit = longestInstall;
  command.onOutput = [&](std::string_view piece) { lines.feed(piece); };
  const ProcessResult result = runTool(vorlu.platform.processes, vorlu.log, command);
  lines.finish();
  if (showProgress) setBar(vorlu, target);
  return result.started && result.status == 0;
}

}  // namespace vorlu
