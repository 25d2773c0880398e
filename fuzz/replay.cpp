#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "fuzz/target.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;

/// Runs every target on each file of its corpus: what was found once doesn't come back.   replay CORPUS
int main(int argc, char** argv) {
  if (argc != 2) {
    fmt::print(stderr, "replay: give the folder of the corpora\n");
    return 2;
  }
  for (const auto& [name, target] : vorlu::fuzz::targets()) {
    const fs::path folder = fs::path(argv[1]) / name;
    std::vector<fs::path> files;
    if (fs::is_directory(folder)) files.assign(fs::directory_iterator(folder), {});
    if (files.empty()) {
      fmt::print(stderr, "replay: {} holds no inputs\n", folder.string());
      return 1;
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
      fmt::print(stderr, "{}/{}\n", name, file.filename().string());
      target(vorlu::test::readFile(file));
    }
  }
  return 0;
}
