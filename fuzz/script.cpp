#include <fmt/format.h>

#include <array>

#include "fuzz/target.h"
#include "vorlu/detection/catalog_script.h"
#include "vorlu/platform/linux/linux_processes.h"
#include "vorlu/state/replacement.h"

namespace vorlu::fuzz {
namespace {

/// A script of harmless commands in lines, as its input chooses them; well formed, whatever comes in.
class Writer {
 public:
  explicit Writer(std::string_view input) : in_(input) {}

  std::string script() {
    static constexpr std::array shebangs = {"", "#!/bin/bash\n", "#!/bin/sh\n"};
    text_ = shebangs[in_.byte() % shebangs.size()];
    while (!in_.empty() && text_.size() < 2000) statement(0);
    if (text_.size() < 20) line("echo nothing");
    return text_ + "exit 0\n";
  }

 private:
  void line(const std::string& text) {
    static constexpr std::array ends = {"\n", "\r\n", "\n\n", "\n  \n"};
    text_ += text + ends[in_.byte() % 4 == 3 ? 2 : 0];
  }
  void block(int depth) {
    for (int more = in_.byte() % 3; more >= 0; --more) statement(depth);
  }
  void statement(int depth) {
    const unsigned kind = in_.byte();
    const unsigned value = in_.byte();
    switch (depth < 4 ? kind % 8 : kind % 4) {
      case 0:
        return line(fmt::format("x={}", value));
      case 1:
        return line(fmt::format("  echo {}-$x | sed 's/-/ /'", value));
      case 2:
        return line(fmt::format("echo \"{} a  b\" 'c\"d'", value));
      case 3:
        return line(fmt::format("[ {} -lt 100 ] && echo small || echo large", value));
      case 4:
        line(fmt::format("if [ {} -gt ${{x:-7}} ]; then", value));
        block(depth + 1);
        if (kind & 64) {
          line("else");
          block(depth + 1);
        }
        return line("fi");
      case 5:
        line(fmt::format("if [ {} = 7 ]", value % 16));
        line("then");
        block(depth + 1);
        return line("fi");
      case 6:
        line("for i in 1 2; do");
        block(depth + 1);
        return line("done");
      default:
        line(fmt::format("f{}() {{ echo f $1", value));
        line("}");
        return line(fmt::format("f{} {}", value, kind));
    }
  }

  Input in_;
  std::string text_;
};

std::string outputOf(const std::string& interpreter, const std::string& text) {
  static LinuxProcesses processes;
  Command command;
  command.program = interpreter;
  command.arguments = {"-c", text};
  command.limit = std::chrono::seconds(20);
  const ProcessResult result = processes.run(command);
  expect(result.started && !result.timedOut, "the shell ran", result.error);
  return result.output;
}

}  // namespace

/// Any text: one line comes out, for one of three shells, with the commands in their order.
FUZZ_TARGET(script) {
  const PreparedScript prepared = prepareScript(input);
  expect(prepared.interpreter == "/bin/zsh" || input.find("#!" + prepared.interpreter) != std::string_view::npos,
         "a shell that the script names", prepared.interpreter);
  for (const char* lineBreak : {"\n", "\r", "\v", "\f", "\xc2\x85", "\xe2\x80\xa8", "\xe2\x80\xa9"})
    expect(prepared.text.find(lineBreak) == std::string::npos, "one line", prepared.text);
  expect(prepared.text.size() <= input.size(), "nothing is added", prepared.text);
  const std::string ends = trimmed(prepared.text);
  expectSame(trimmed(ends), ends, "trimmed is trimmed");
  expect(input.find(ends.substr(0, ends.find_first_of("; "))) != std::string_view::npos, "the first word is there");
}

/// A script in lines prints what it prints once it is joined.
FUZZ_TARGET(script_meaning) {
  const std::string script = Writer(input).script();
  const PreparedScript prepared = prepareScript(script);
  expectSame(outputOf(prepared.interpreter, prepared.text), outputOf(prepared.interpreter, script),
             prepared.text.c_str());
}

}  // namespace vorlu::fuzz
