// The least that an update check with nothing due can be: three requests with one connection, the catalog decoded once,
// every app looked for twice (the check, and the inventory after it) with its property list read, and the system's
// tools started once each that the check and its report ask.
//
//   bench-check-floor CATALOG URL TOOLS      (TOOLS has a tool's words in each line, separated by blanks)

#include <curl/curl.h>
#include <sys/stat.h>

#include <cstdio>
#include <sstream>

#include "bench/floor_parts.h"

namespace {

using namespace vorlu;

std::size_t keep(char*, std::size_t size, std::size_t count, void*) {
  return size * count;
}

bool request(const std::string& base) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  CURL* handle = curl_easy_init();
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, keep);
  bool answered = true;
  for (const char* path : {"/connectivity", "/timestamp", "/connectivity"}) {
    curl_easy_setopt(handle, CURLOPT_URL, (base + path).c_str());
    curl_easy_setopt(handle, CURLOPT_NOBODY, std::string(path) == "/connectivity" ? 1L : 0L);
    answered = curl_easy_perform(handle) == CURLE_OK && answered;
  }
  curl_easy_cleanup(handle);
  return answered;
}

std::size_t lookForApps(const std::vector<floors::Entry>& entries) {
  std::size_t bytes = 0;
  for (const floors::Entry& entry : entries) {
    const std::size_t length = floors::readVersion(entry.path);
    struct stat status {};
    if (length == 0) stat(entry.alternatePath.c_str(), &status);
    bytes += length;
  }
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: bench-check-floor CATALOG URL TOOLS\n", stderr);
    return 2;
  }
  if (!request(argv[2])) return 1;
  const std::vector<floors::Entry> entries = floors::decode(argv[1]);
  std::size_t bytes = lookForApps(entries) + lookForApps(entries);
  for (const std::string& line : floors::lines(argv[3])) {
    std::istringstream text(line);
    std::vector<std::string> words;
    for (std::string word; text >> word;) words.push_back(word);
    bytes += floors::spawn(words);
  }
  std::printf("%zu entries, %zu bytes\n", entries.size(), bytes);
  return 0;
}
