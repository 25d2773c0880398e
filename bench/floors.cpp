// The least that a heavy step of a run can be.
//
//   bench-floors decode CATALOG      the catalog into texts
//   bench-floors versions LIST       the version of each bundle whose path is a line of LIST
//   bench-floors scripts SCRIPT N    a version script by /bin/zsh, N times

#include <cstdio>
#include <cstdlib>

#include "bench/floor_parts.h"

int main(int argc, char** argv) {
  using namespace vorlu;
  const std::vector<std::string> words(argv + 1, argv + argc);
  std::size_t count = 0;
  if (words.size() == 2 && words[0] == "decode") {
    count = floors::decode(words[1]).size();
  } else if (words.size() == 2 && words[0] == "versions") {
    for (const std::string& bundle : floors::lines(words[1])) count += floors::readVersion(bundle);
  } else if (words.size() == 3 && words[0] == "scripts") {
    for (int left = std::atoi(words[2].c_str()); left > 0; --left) count += floors::spawn({"/bin/zsh", "-c", words[1]});
  } else {
    std::fputs("usage: bench-floors decode CATALOG | versions LIST | scripts SCRIPT N\n", stderr);
    return 2;
  }
  std::printf("%zu\n", count);
  return count > 0 ? 0 : 1;
}
