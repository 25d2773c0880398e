#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The least that the heavy steps of a run can be, with the agent's libraries and nothing else.
namespace vorlu::floors {

/// A catalog entry with texts of its own.
struct Entry {
  std::vector<std::string> texts;
  std::vector<std::string> listed;
  std::vector<std::int64_t> numbers;
  std::vector<bool> flags;
  std::string path;
  std::string alternatePath;
};
std::vector<Entry> decode(const std::string& catalogFile);

/// Length of the version in a bundle's property list, 0 without one.
std::size_t readVersion(const std::string& bundle);

/// Starts a program with these words, reads its output to the end and waits for it. Bytes of the output.
std::size_t spawn(const std::vector<std::string>& words);

/// The lines of a file.
std::vector<std::string> lines(const std::string& file);

}  // namespace vorlu::floors
