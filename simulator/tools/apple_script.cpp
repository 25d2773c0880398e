#include "simulator/tools/apple_script.h"

#include <fmt/format.h>

#include <cstdlib>
#include <map>
#include <optional>

namespace vorlu::simulator {

namespace {

struct Token {
  std::string text;
  bool literal = false;  // a quoted text
  std::size_t position = 0;
};

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

// Words and quoted texts of one line; nothing when a quote isn't closed.
std::optional<std::vector<Token>> splitLine(const std::string& line, std::size_t offset) {
  std::vector<Token> tokens;
  for (std::size_t i = 0; i < line.size();) {
    if (isBlank(line[i])) {
      ++i;
      continue;
    }
    Token token{"", line[i] == '"', offset + i};
    if (!token.literal) {
      while (i < line.size() && !isBlank(line[i])) token.text += line[i++];
    } else {
      for (++i; i < line.size() && line[i] != '"'; ++i) {
        if (line[i] == '\\' && i + 1 < line.size()) ++i;
        token.text += line[i];
      }
      if (i++ >= line.size()) return std::nullopt;
    }
    tokens.push_back(std::move(token));
  }
  return tokens;
}

class Reader {
 public:
  // False: the line is no part of what a script may say here.
  bool read(const std::vector<Token>& line) {
    if (line.empty()) return true;
    if (starts(line, {"set"}) && line.size() == 4 && line[2].text == "to" && line[3].literal) {
      texts_[line[1].text] = line[3].text;
      return true;
    }
    if (starts(line, {"with", "timeout", "of"}) && line.size() == 5) {
      timeout_ = std::atof(line[3].text.c_str());
      return true;
    }
    if (starts(line, {"tell", "application"}) || starts(line, {"tell", "app"})) return readTell(line);
    if (line.size() == 1 && line[0].text == "quit" && application_) return addQuit(line[0].position);
    if (starts(line, {"quit", "app"}) || starts(line, {"quit", "application"})) {
      return line.size() == 3 && choose(line[2]) && addQuit(line[0].position);
    }
    return readEnd(line);
  }

  std::vector<QuitEvent> events;

 private:
  static bool starts(const std::vector<Token>& line, std::initializer_list<const char*> words) {
    std::size_t i = 0;
    for (const char* word : words) {
      if (i >= line.size() || line[i].literal || line[i].text != word) return false;
      ++i;
    }
    return true;
  }

  bool readTell(const std::vector<Token>& line) {
    if (line.size() < 3 || !choose(line[2])) return false;
    if (line.size() == 3) return true;
    return line.size() == 5 && line[3].text == "to" && line[4].text == "quit" && addQuit(line[4].position);
  }

  bool readEnd(const std::vector<Token>& line) {
    if (line[0].text != "end" || line.size() > 2) return false;
    const std::string what = line.size() == 2 ? line[1].text : "";
    if (what == "tell") application_.reset();
    if (what == "timeout") timeout_.reset();
    return what == "tell" || what == "timeout";
  }

  bool choose(const Token& token) {
    const auto variable = texts_.find(token.text);
    if (!token.literal && variable == texts_.end()) return false;
    application_ = token.literal ? token.text : variable->second;
    return true;
  }

  bool addQuit(std::size_t position) {
    QuitEvent event;
    event.application = *application_;
    event.timeout = timeout_.value_or(event.timeout);
    event.position = position;
    events.push_back(std::move(event));
    return true;
  }

  std::map<std::string, std::string> texts_;
  std::optional<std::string> application_;
  std::optional<double> timeout_;
};

}  // namespace

std::variant<std::vector<QuitEvent>, ScriptError> readScript(const std::string& script) {
  Reader reader;
  for (std::size_t start = 0; start <= script.size();) {
    const std::size_t end = std::min(script.find('\n', start), script.size());
    const auto tokens = splitLine(script.substr(start, end - start), start);
    if (!tokens) return ScriptError{start, "Expected “\"” but found end of script."};
    if (!reader.read(*tokens)) return ScriptError{start, fmt::format("A “{}” can’t go here.", tokens->front().text)};
    start = end + 1;
  }
  return reader.events;
}

}  // namespace vorlu::simulator
