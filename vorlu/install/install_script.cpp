#include "vorlu/install/install_script.h"

#include "vorlu/install/install_job.h"
#include "vorlu/install/line_reader.h"
#include "vorlu/state/tool.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

void runStageScript(InstallJob& job, std::string_view announcement, const std::string& script) {
  if (!script.empty()) {
    job.vorlu.log(announcement);
    runInstallScript(job.vorlu, script);
  }
  tick(job);
}

}  // namespace

std::string withoutLineSemicolons(std::string_view script) {
  std::string result;
  while (!script.empty()) {
    const std::size_t end = script.find('\n');
    std::string_view line = script.substr(0, end);
    script.remove_prefix(std::min(script.size(), line.size() + 1));
    line = line.substr(0, line.find_last_not_of(" \t\r") + 1);
    if (line.ends_with(';') && !line.ends_with(";;")) line.remove_suffix(1);
    result.append(line);
    if (end != std::string_view::npos) result += '\n';
  }
  return result;
}

std::string repairedCaseEnds(std::string_view joined) {
  std::string result;
  int run = 0;
  for (const char c : joined) {
    run = c == ';' ? run + 1 : 0;
    if (run <= 2) result += c;
  }
  return result;
}

PreparedScript prepareInstallScript(std::string_view script) {
  PreparedScript prepared = prepareScript(withoutLineSemicolons(script));
  prepared.text = repairedCaseEnds(prepared.text);
  return prepared;
}

void runInstallScript(Vorlu& vorlu, const std::string& script) {
  const PreparedScript prepared = prepareInstallScript(script);
  LineReader lines([&](std::string_view line) {
    if (const std::string text = trimmed(line); !text.empty()) vorlu.log(text);
  });
  Command command;
  command.program = prepared.interpreter;
  command.arguments = {"-c", prepared.text};
  command.onOutput = [&](std::string_view piece) { lines.feed(piece); };
  runTool(vorlu.platform.processes, vorlu.log, command);
  lines.finish();
}

void runPreInstallScript(InstallJob& job) {
  runStageScript(job, "Running pre-install scripts...", job.vorlu.currentApp.preInstallScript);
}

void runPostInstallScript(InstallJob& job) {
  runStageScript(job, "Running post-install scripts...", job.vorlu.currentApp.postInstallScript);
}

}  // namespace vorlu
