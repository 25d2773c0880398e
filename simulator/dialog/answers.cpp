#include "simulator/dialog/answers.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <sstream>

namespace vorlu::simulator {

namespace {

std::string readAll(int file) {
  std::string text;
  char block[4096];
  for (ssize_t length = 0; (length = read(file, block, sizeof block)) > 0;) {
    text.append(block, static_cast<std::size_t>(length));
  }
  return text;
}

bool replaceContent(int file, const std::string& text) {
  return ftruncate(file, 0) == 0 && pwrite(file, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size());
}

std::variant<Answer, NoAnswer> takeFrom(int file) {
  std::istringstream text(readAll(file));
  std::string line;
  while (std::getline(text, line) && line.find_first_not_of(" \t") == std::string::npos) {
  }
  if (line.find_first_not_of(" \t") == std::string::npos) return NoAnswer::runOut;
  const std::string rest(text.eof() ? "" : text.str().substr(static_cast<std::size_t>(text.tellg())));
  if (!replaceContent(file, rest)) return NoAnswer::unreadable;
  Answer answer;
  std::istringstream words(line);
  if (!(words >> answer.exitCode)) return NoAnswer::unreadable;
  if (!(words >> answer.wait)) answer.wait = 0;
  return answer;
}

}  // namespace

std::variant<Answer, NoAnswer> takeAnswer(const std::string& path) {
  const int file = open(path.c_str(), O_RDWR | O_CLOEXEC);
  if (file < 0) return NoAnswer::unreadable;
  flock(file, LOCK_EX);
  auto taken = takeFrom(file);
  close(file);
  return taken;
}

}  // namespace vorlu::simulator
