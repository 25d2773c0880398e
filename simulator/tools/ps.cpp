#include <fmt/format.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <sstream>

#include "simulator/host/host_clock.h"
#include "simulator/tools/process_table.h"
#include "simulator/tools/tool.h"

namespace vorlu::simulator {

namespace {

struct Column {
  std::string header;
  int width = 0;  // negative: aligned to the left
  std::string (*text)(const Process&) = nullptr;
};

struct Question {
  bool everyone = false;   // -a, -A, -e, x
  std::vector<pid_t> ids;  // -p
  std::optional<std::string> user;
  std::vector<Column> columns;
};

// Ages follow the Mac's clock.
long macAge(const Process& process) {
  return static_cast<long>(process.age * HostClock::read().rate);
}

// [[dd-]hh:]mm:ss
std::string elapsed(const Process& process) {
  const long age = macAge(process);
  const long days = age / 86400, hours = age / 3600 % 24, minutes = age / 60 % 60, seconds = age % 60;
  if (days > 0) return fmt::format("{:02}-{:02}:{:02}:{:02}", days, hours, minutes, seconds);
  if (hours > 0) return fmt::format("{:02}:{:02}:{:02}", hours, minutes, seconds);
  return fmt::format("{:02}:{:02}", minutes, seconds);
}

std::string started(const Process& process, const char* pattern) {
  const auto when = static_cast<time_t>(HostClock::read().now()) - macAge(process);
  tm fields{};
  localtime_r(&when, &fields);
  char text[64];
  return {text, strftime(text, sizeof text, pattern, &fields)};
}

std::string cpuTime(const Process& process) {
  const long minutes = static_cast<long>(process.cpuTime) / 60;
  return fmt::format("{}:{:05.2f}", minutes, process.cpuTime - static_cast<double>(minutes) * 60);
}

const std::map<std::string, Column>& knownColumns() {
  static const std::map<std::string, Column> columns = {
      {"pid", {"PID", 5, [](const Process& p) { return std::to_string(p.pid); }}},
      {"ppid", {"PPID", 5, [](const Process& p) { return std::to_string(p.parent); }}},
      {"pgid", {"PGID", 5, [](const Process& p) { return std::to_string(p.group); }}},
      {"uid", {"UID", 5, [](const Process& p) { return std::to_string(p.user); }}},
      {"user", {"USER", -16, [](const Process& p) { return userName(p.user); }}},
      {"%cpu", {"%CPU", 5, [](const Process&) { return std::string("0.0"); }}},
      {"%mem", {"%MEM", 4, [](const Process&) { return std::string("0.0"); }}},
      {"rss", {"RSS", 6, [](const Process& p) { return std::to_string(p.residentKilobytes); }}},
      {"tty", {"TTY", -8, [](const Process&) { return std::string("??"); }}},
      {"stat", {"STAT", -4, [](const Process& p) { return std::string(1, p.state); }}},
      {"etime", {"ELAPSED", 11, elapsed}},
      {"etimes", {"ELAPSED", 8, [](const Process& p) { return std::to_string(macAge(p)); }}},
      {"lstart", {"STARTED", -28, [](const Process& p) { return started(p, "%a %b %e %H:%M:%S %Y"); }}},
      {"start", {"STARTED", 7, [](const Process& p) { return started(p, "%H:%M"); }}},
      {"time", {"TIME", 9, cpuTime}},
      {"comm", {"COMM", -16, [](const Process& p) { return p.program; }}},
      {"ucomm", {"UCOMM", -16, [](const Process& p) { return p.name; }}},
      {"command", {"COMMAND", -16, commandLine}},
      {"args", {"ARGS", -16, commandLine}},
  };
  return columns;
}

// "pid,etime=" or "pid=,command=": a header of its own behind "=", no header when it is empty.
bool addColumns(const std::string& list, std::vector<Column>& columns) {
  std::istringstream names(list);
  for (std::string name; std::getline(names, name, ',');) {
    const std::size_t equals = name.find('=');
    const auto known = knownColumns().find(name.substr(0, equals));
    if (known == knownColumns().end()) {
      fmt::print(stderr, "ps: {}: keyword not found\n", name);
      return false;
    }
    columns.push_back(known->second);
    if (equals != std::string::npos) columns.back().header = name.substr(equals + 1);
  }
  return true;
}

void addIds(const std::string& list, std::vector<pid_t>& ids) {
  std::istringstream texts(list);
  for (std::string text; std::getline(texts, text, ',');) ids.push_back(std::atoi(text.c_str()));
}

// Flags may be joined, with the last one's value in the same word or the next: "-axo pid=,command=", "-p41".
std::optional<Question> parse(const Arguments& arguments) {
  Question question;
  std::string preset = "pid,tty,time,command";
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string word = arguments[i].starts_with("-") ? arguments[i].substr(1) : arguments[i];
    for (std::size_t at = 0; at < word.size(); ++at) {
      const char flag = word[at];
      if (flag == 'o' || flag == 'p' || flag == 'U') {
        std::string value = word.substr(at + 1);
        if (value.empty() && i + 1 < arguments.size()) value = arguments[++i];
        if (flag == 'o' && !addColumns(value, question.columns)) return std::nullopt;
        if (flag == 'p') addIds(value, question.ids);
        if (flag == 'U') question.user = value;
        break;
      }
      if (flag == 'u') preset = "user,pid,%cpu,%mem,rss,tty,stat,start,time,command";
      if (flag == 'f') preset = "uid,pid,ppid,start,tty,time,command";
      if (flag == 'l') preset = "uid,pid,ppid,rss,stat,tty,time,command";
      if (strchr("aAex", flag) != nullptr) question.everyone = true;
      if (strchr("aAexufljcwM", flag) == nullptr) {
        fmt::print(stderr, "ps: illegal option -- {}\n", flag);
        return std::nullopt;
      }
    }
  }
  if (question.columns.empty()) addColumns(preset, question.columns);
  return question;
}

bool isWanted(const Process& process, const Question& question) {
  if (!question.ids.empty()) {
    return std::find(question.ids.begin(), question.ids.end(), process.pid) != question.ids.end();
  }
  if (question.user) return userName(process.user) == *question.user || std::to_string(process.user) == *question.user;
  return question.everyone || process.user == getuid();
}

// The last column isn't filled up with blanks.
void printRow(const std::vector<Column>& columns, const std::vector<std::string>& texts) {
  std::string row;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const auto width = static_cast<std::size_t>(std::abs(columns[i].width));
    if (columns[i].width > 0) {
      row += fmt::format("{:>{}}", texts[i], width);
    } else {
      row += i + 1 < columns.size() ? fmt::format("{:<{}}", texts[i], width) : texts[i];
    }
    if (i + 1 < columns.size()) row += " ";
  }
  fmt::print("{}\n", row);
}

}  // namespace

int runPs(const Arguments& arguments) {
  const auto question = parse(arguments);
  if (!question) return 1;
  std::vector<std::string> headers;
  for (const auto& column : question->columns) headers.push_back(column.header);
  if (std::any_of(headers.begin(), headers.end(), [](const auto& header) { return !header.empty(); })) {
    printRow(question->columns, headers);
  }
  int status = 1;
  for (const auto& process : allProcesses()) {
    if (!isWanted(process, *question)) continue;
    status = 0;
    std::vector<std::string> texts;
    for (const auto& column : question->columns) texts.push_back(column.text(process));
    printRow(question->columns, texts);
  }
  return status;
}

}  // namespace vorlu::simulator
