#include "reference/text_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

namespace vorlu::reference {

Result<std::string> readTextFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(in), {}};
  if (!in) return Failure{fmt::format("{} can't be read: {}", path, std::strerror(errno))};
  return text;
}

Status writeTextFile(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << text;
  out.close();
  if (!out) return Failure{fmt::format("{} can't be written: {}", path, std::strerror(errno))};
  return success();
}

}  // namespace vorlu::reference
