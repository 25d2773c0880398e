#include "refserver/body_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vorlu::refserver {

BodySource::BodySource(const Response& response) : isFile_(!response.file.empty()) {
  if (!isFile_) {
    text_ = response.body;
    size_ = text_.size();
    return;
  }
  descriptor_ = ::open(response.file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  struct stat info {};
  if (descriptor_ >= 0 && ::fstat(descriptor_, &info) == 0) size_ = static_cast<std::size_t>(info.st_size);
}

BodySource::~BodySource() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

std::string BodySource::read(std::size_t offset, std::size_t count) const {
  if (!isFile_) return text_.substr(offset, count);
  std::string block(count, '\0');
  const ssize_t got = ::pread(descriptor_, block.data(), count, static_cast<off_t>(offset));
  block.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  return block;
}

}  // namespace vorlu::refserver
