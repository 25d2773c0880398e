#include <fmt/format.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <vector>

#include "simulator/tools/plist.h"
#include "simulator/tools/tool.h"

namespace vorlu::simulator {

namespace {

bool writeTo(const std::string& path, const std::string& data) {
  if (path == "-") {
    std::cout << data;
    return true;
  }
  std::ofstream file(path, std::ios::binary);
  file << data;
  file.close();
  return file.good();
}

int lint(const Arguments& files) {
  int status = 0;
  for (const std::string& path : files) {
    const auto fault = lintPlist(path);
    fmt::print("{}: {}\n", path, fault ? *fault : "OK");
    if (fault) status = 1;
  }
  return status;
}

int convert(const std::string& format, const std::string& out, const Arguments& files) {
  for (const std::string& path : files) {
    const auto data = convertPlist(path, format == "binary1");
    if (!data) {
      fmt::print(stderr, "{}: Property List error: the file is neither a property list nor JSON that can be one\n",
                 path);
      return 1;
    }
    if (!writeTo(out.empty() ? path : out, *data)) {
      fmt::print(stderr, "{}: could not be written\n", out.empty() ? path : out);
      return 1;
    }
  }
  return 0;
}

// ":a:0:b" in its parts.
std::vector<std::string> entryPath(std::string_view text) {
  std::vector<std::string> parts;
  while (!text.empty()) {
    if (text.front() == ':') text.remove_prefix(1);
    const std::string_view part = text.substr(0, text.find(':'));
    if (!part.empty()) parts.emplace_back(part);
    text.remove_prefix(part.size());
  }
  return parts;
}

}  // namespace

int runPlutil(const Arguments& arguments) {
  Arguments files;
  std::string action, format, out;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    const bool more = i + 1 < arguments.size();
    if (argument == "-lint") {
      action = argument;
    } else if (argument == "-convert" && more) {
      action = argument;
      format = arguments[++i];
    } else if (argument == "-o" && more) {
      out = arguments[++i];
    } else if (argument != "--") {
      files.push_back(argument);
    }
  }
  if (action == "-lint" && !files.empty()) return lint(files);
  if (action == "-convert" && !files.empty() && (format == "xml1" || format == "binary1"))
    return convert(format, out, files);
  fmt::print(stderr, "usage: plutil -lint FILE... | -convert xml1|binary1 [-o FILE] FILE...\n");
  return 1;
}

int runPlistBuddy(const Arguments& arguments) {
  Arguments commands;
  std::string path;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "-c" && i + 1 < arguments.size())
      commands.push_back(arguments[++i]);
    else
      path = arguments[i];
  }
  if (commands.empty() || path.empty()) {
    fmt::print(stderr, "usage: PlistBuddy -c \"Print [:ENTRY]\"... FILE\n");
    return 1;
  }
  // As on a Mac on standard output, where a script takes it for the value that it asked for.
  if (!std::filesystem::exists(path)) fmt::print("File Doesn't Exist, Will Create: {}\n", path);
  int status = 0;
  for (const std::string& command : commands) {
    const bool prints = command == "Print" || command.starts_with("Print ");
    if (!prints) {
      fmt::print(stderr, "PlistBuddy: the simulated Mac knows only Print: {}\n", command);
      return 1;
    }
    const std::string entry = command.size() > 6 ? command.substr(6) : "";
    if (const auto value = plistEntry(path, entryPath(entry))) {
      fmt::print("{}\n", *value);
    } else {
      fmt::print(stderr, "Print: Entry, \"{}\", Does Not Exist\n", entry);
      status = 1;
    }
  }
  return status;
}

}  // namespace vorlu::simulator
