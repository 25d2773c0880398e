#include "seal/small_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace vorlu::seal {

namespace {

Failure failed(const char* action, const std::string& path) {
  const int code = errno;
  return {fmt::format("{} {}: {}", action, path, std::strerror(code)), code};
}

/// An open descriptor.
class File {
 public:
  explicit File(int descriptor) : descriptor_(descriptor) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  int get() const { return descriptor_; }

 private:
  int descriptor_;
};

/// A complete file under a temporary name beside its target; it goes away with the object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& target) : path_(target + ".XXXXXX") {}
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (made_) ::unlink(path_.c_str());
  }
  const std::string& path() const { return path_; }

  Status write(std::string_view content, mode_t mode) {
    File file(::mkostemp(path_.data(), O_CLOEXEC));
    if (file.get() < 0) return failed("can't create", path_);
    made_ = true;
    while (!content.empty()) {
      const ssize_t count = ::write(file.get(), content.data(), content.size());
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return failed("can't write", path_);
      content.remove_prefix(static_cast<std::size_t>(count));
    }
    if (::fchmod(file.get(), mode) != 0 || ::fsync(file.get()) != 0) return failed("can't write", path_);
    return success();
  }

 private:
  std::string path_;
  bool made_ = false;
};

}  // namespace

Result<std::string> readSmallFile(const std::string& path) {
  // Non-blocking, so that a pipe in the file's place can't hold the reader up.
  File file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.get() < 0) return failed("can't open", path);
  struct stat info {};
  if (::fstat(file.get(), &info) != 0) return failed("can't read", path);
  if (!S_ISREG(info.st_mode)) return Failure{fmt::format("{} is no regular file", path)};
  std::string content;
  char block[65536];
  while (true) {
    const ssize_t count = ::read(file.get(), block, sizeof block);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return failed("can't read", path);
    if (count == 0) return content;
    content.append(block, static_cast<std::size_t>(count));
  }
}

Status makeOnce(const std::string& path, std::string_view content, mode_t mode) {
  if (::access(path.c_str(), F_OK) == 0) return success();
  TemporaryFile temporary(path);
  if (Status status = temporary.write(content, mode); !status) return status;
  if (::link(temporary.path().c_str(), path.c_str()) != 0 && errno != EEXIST) return failed("can't create", path);
  return success();
}

Status replaceFile(const std::string& path, std::string_view content, mode_t mode) {
  TemporaryFile temporary(path);
  if (Status status = temporary.write(content, mode); !status) return status;
  if (::rename(temporary.path().c_str(), path.c_str()) != 0) return failed("can't replace", path);
  return success();
}

}  // namespace vorlu::seal
