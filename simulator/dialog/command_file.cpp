#include "simulator/dialog/command_file.h"

#include <sys/stat.h>

#include <fstream>

namespace vorlu::simulator {

CommandFile::CommandFile(std::string path) : path_(std::move(path)) {
  struct stat info = {};
  if (stat(path_.c_str(), &info) != 0) return;
  inode_ = info.st_ino;
  offset_ = info.st_size;
}

std::vector<std::string> CommandFile::newLines() {
  struct stat info = {};
  if (stat(path_.c_str(), &info) != 0) return {};
  if (info.st_ino != inode_ || info.st_size < offset_) offset_ = 0;
  inode_ = info.st_ino;
  std::ifstream file(path_, std::ios::binary);
  file.seekg(offset_);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line) && !file.eof();) {
    offset_ += static_cast<long>(line.size()) + 1;
    lines.push_back(std::move(line));
  }
  return lines;
}

}  // namespace vorlu::simulator
