#include "vorlu/platform/linux/folder_entries.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string_view>

namespace vorlu {
namespace {

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

FileKind kindOf(int folder, const dirent& entry) {
  struct stat status {};
  status.st_mode = DTTOIF(entry.d_type);
  if (entry.d_type == DT_UNKNOWN) static_cast<void>(::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW));
  return kindOfMode(status.st_mode);
}

}  // namespace

FileKind kindOfMode(mode_t mode) {
  if (S_ISREG(mode)) return FileKind::regular;
  if (S_ISDIR(mode)) return FileKind::directory;
  return S_ISLNK(mode) ? FileKind::link : FileKind::other;
}

std::optional<std::vector<FolderEntry>> folderEntries(int descriptor) {
  const int own = ::openat(descriptor, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (own < 0) return std::nullopt;
  const std::unique_ptr<DIR, CloseFolder> folder(::fdopendir(own));
  if (!folder) {
    ::close(own);
    return std::nullopt;
  }
  std::vector<FolderEntry> entries;
  errno = 0;
  while (const dirent* entry = ::readdir(folder.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") entries.push_back({std::string(name), kindOf(own, *entry)});
    errno = 0;
  }
  if (errno != 0) return std::nullopt;
  std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
  return entries;
}

}  // namespace vorlu
