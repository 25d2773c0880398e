#include "tests/support/temporary_folder.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace vorlu::test {

TemporaryFolder::TemporaryFolder() {
  path_ = std::filesystem::temp_directory_path() / "vorlu-test-XXXXXX";
  if (::mkdtemp(path_.data()) == nullptr) throw std::runtime_error(path_ + ": can't be made");
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void writeFile(const std::string& hostPath, const std::string& text) {
  std::filesystem::create_directories(std::filesystem::path(hostPath).parent_path());
  std::ofstream file(hostPath, std::ios::binary | std::ios::trunc);
  file << text;
  if (!file.flush()) throw std::runtime_error(hostPath + ": can't be written");
}

std::string readFile(const std::string& hostPath) {
  std::ifstream file(hostPath, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace vorlu::test
