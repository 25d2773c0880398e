#include "bench/floor_parts.h"

#include <fcntl.h>
#include <plist/plist.h>
#include <simdjson.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace vorlu::floors {
namespace {

std::string readFile(const std::string& path) {
  std::string text;
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat status {};
  if (file < 0 || fstat(file, &status) != 0) return text;
  text.resize(static_cast<std::size_t>(status.st_size));
  const ssize_t got = read(file, text.data(), text.size());
  text.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  close(file);
  return text;
}

void decodeMember(simdjson::ondemand::field member, Entry& entry) {
  const std::string_view key = member.unescaped_key();
  auto value = member.value();
  switch (value.type()) {
    case simdjson::ondemand::json_type::string:
      entry.texts.emplace_back(std::string_view(value));
      if (key == "appPath") entry.path = entry.texts.back();
      break;
    case simdjson::ondemand::json_type::boolean:
      entry.flags.push_back(bool(value));
      break;
    case simdjson::ondemand::json_type::number:
      entry.numbers.push_back(std::int64_t(value));
      break;
    case simdjson::ondemand::json_type::array:
      for (auto item : value.get_array()) entry.listed.emplace_back(std::string_view(item));
      if (key == "alternatePaths" && !entry.listed.empty()) entry.alternatePath = entry.listed.back();
      break;
    default:
      break;
  }
}

[[noreturn]] void fail(const std::string& what) {
  std::perror(what.c_str());
  std::exit(1);
}

}  // namespace

std::vector<Entry> decode(const std::string& catalogFile) {
  auto text = simdjson::padded_string::load(catalogFile);
  simdjson::ondemand::parser parser;
  simdjson::ondemand::document document = parser.iterate(text.value());
  std::vector<Entry> entries;
  entries.reserve(text.value_unsafe().size() / 1024);
  for (auto element : document.get_array()) {
    Entry& entry = entries.emplace_back();
    entry.texts.reserve(64);  // about as many as an entry has
    for (simdjson::ondemand::field member : element.get_object()) decodeMember(member, entry);
  }
  return entries;
}

std::size_t readVersion(const std::string& bundle) {
  const std::string bytes = readFile(bundle + "/Contents/Info.plist");
  if (bytes.empty()) return 0;
  plist_t root = nullptr;
  plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
  std::uint64_t length = 0;
  plist_get_string_ptr(plist_dict_get_item(root, "CFBundleShortVersionString"), &length);
  plist_free(root);
  return length;
}

std::size_t spawn(const std::vector<std::string>& words) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) fail("pipe2");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, ends[1], 1);
  posix_spawn_file_actions_adddup2(&actions, ends[1], 2);
  std::vector<char*> pointers;
  for (const std::string& word : words) pointers.push_back(const_cast<char*>(word.c_str()));
  pointers.push_back(nullptr);
  pid_t child = 0;
  if (posix_spawn(&child, pointers[0], &actions, nullptr, pointers.data(), environ) != 0) fail(words[0]);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  std::array<char, 65536> block;
  std::size_t bytes = 0;
  for (ssize_t got = 0; (got = read(ends[0], block.data(), block.size())) > 0;) bytes += static_cast<std::size_t>(got);
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return bytes;
}

std::vector<std::string> lines(const std::string& file) {
  std::ifstream in(file);
  std::vector<std::string> all;
  for (std::string line; std::getline(in, line);) all.push_back(line);
  return all;
}

}  // namespace vorlu::floors
