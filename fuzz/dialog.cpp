#include "vorlu/prompts/dialog_invocation.h"

#include <algorithm>
#include <vector>

#include "fuzz/agent.h"
#include "fuzz/target.h"
#include "vorlu/detection/catalog_script.h"
#include "vorlu/prompts/prompt_words.h"
#include "vorlu/state/dialog_command.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/shell_line.h"

namespace vorlu::fuzz {
namespace {

/// The words of a line as a shell reads them: quotes, backslashes, and nothing that would be run or replaced.
std::vector<std::string> shellWords(std::string_view line) {
  std::vector<std::string> words;
  std::string word;
  bool inWord = false;
  char quote = 0;
  for (std::size_t at = 0; at < line.size(); ++at) {
    const char c = line[at];
    if (quote == '\'' && c != '\'') {
      word += c;
    } else if (c == '\\' && quote != '\'') {
      const char next = at + 1 < line.size() ? line[at + 1] : '\0';
      const bool escapes = quote == 0 || std::string_view("\\\"$`").find(next) != std::string_view::npos;
      if (!escapes) word += c;
      if (escapes) word += line[++at];
      inWord = true;
    } else if (quote != 0 && c == quote) {
      quote = 0;
    } else if (quote == 0 && (c == '"' || c == '\'')) {
      quote = c;
      inWord = true;
    } else if (quote == 0 && c == ' ') {
      if (inWord) words.push_back(std::move(word));
      word.clear();
      inWord = false;
    } else {
      expect(c != '$' && c != '`', "nothing is replaced by the shell", line);
      const bool bare = quote == 0;
      expect(!bare || std::string_view(";&|<>()#*?[]{}~!=\n\r\t").find(c) == std::string_view::npos, "nothing is run",
             line);
      word += c;
      inWord = true;
    }
  }
  expect(quote == 0, "all quotes are closed", line);
  if (inWord) words.push_back(std::move(word));
  return words;
}

void expectLastReaderGets(const std::vector<std::string>& values) {
  DialogCommand command;
  std::vector<std::string> expected = {paths::dialogProgram, "--commandfile", paths::dialogCommandFile};
  for (const std::string& value : values) {
    command.text("--title", value).word("--word", value).json(value);
    expected.insert(expected.end(), {"--title", value, "--word", value, "--jsonstring", value});
  }
  const auto read = shellWords(command.line());
  expect(read == expected, "the program gets each value as it is", command.line());
}

void expectAnswer(const std::string& output) {
  const PromptExit exit = readPromptExit(output);
  expect(exit.text.empty() || exit.text == trimmed(output), "the text is the output's", output, exit.text);
  const PromptAnswer expected = exit.text == "0"   ? PromptAnswer::button1
                                : exit.text == "2" ? PromptAnswer::button2
                                : exit.text == "4" ? PromptAnswer::timerRanOut
                                                   : PromptAnswer::quitUnexpectedly;
  expect(exit.answer == expected, "nobody agrees by accident", output);
}

void expectOneCommand(const std::string& text) {
  FuzzedMac& mac = FuzzedMac::shared();
  static Vorlu& vorlu = mac.fresh();
  mac.files.remove(paths::dialogCommandFile);
  mac.files.createDirectory(paths::components, {0755, "", ""});
  writeDialogCommand(vorlu, "listitem: " + text);
  const std::string file = mac.read(paths::dialogCommandFile);
  expect(
      file.ends_with('\n') && std::count(file.begin(), file.end(), '\n') == 1 && file.find('\r') == std::string::npos,
      "a command is one line", file);
}

/// AppleScript reads a backslash before a quote or a backslash, and ends at a bare quote.
void expectAppleScriptText(const std::string& value) {
  std::string read;
  const std::string quoted = insideAppleScriptText(value);
  for (std::size_t at = 0; at < quoted.size(); ++at) {
    expect(quoted[at] != '"', "the text isn't closed from inside", value);
    if (quoted[at] == '\\') ++at;
    read += quoted[at];
  }
  expectSame(read, value, "AppleScript reads the value");
}

/// Of "appName" and "app", found one after the other from the left; no value is looked at again.
std::string wordsReplaced(std::string_view text, std::string_view value) {
  std::string replaced;
  for (std::size_t at = text.find("app"); at != std::string_view::npos; at = text.find("app")) {
    const bool isLonger = text.substr(at).starts_with("appName");
    replaced.append(text.substr(0, at)).append(isLonger ? value : "x");
    text.remove_prefix(at + (isLonger ? 7 : 3));
  }
  return replaced.append(text);
}

void expectWordsReplaced(const std::string& text, const std::string& value) {
  const std::string expected = wordsReplaced(text, value);
  expectSame(withWordsReplaced(text, {{"appName", value}, {"app", "x"}}), expected, "each word has its value");
  expectSame(withWordsReplaced(text, {{"app", "x"}, {"appName", value}}), expected,
             "the longer word wins in any order");
}

}  // namespace

/// Values for a prompt, parted by zero bytes.
FUZZ_TARGET(dialog) {
  Input in(input);
  std::vector<std::string> values;
  while (!in.empty() && values.size() < 4) values.push_back(in.text());
  expectLastReaderGets(values);
  for (const std::string& value : values) {
    expectAnswer(value);
    expectAppleScriptText(value);
    expectOneCommand(value);
    expectWordsReplaced(value, values.front());
  }
}

}  // namespace vorlu::fuzz
