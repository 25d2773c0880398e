// Preloaded: counts a program's changes of the file system and its starts of children, and kills it by signal 9 just
// before the one of number VORLU_KILL_AT. The count stands in the file VORLU_KILL_COUNT, as a native 64-bit number. The
// agent's children don't inherit it, since they get an environment of their own.
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>

namespace {

struct Plan {
  std::int64_t point = 0;
  std::atomic<std::int64_t>* count = nullptr;

  Plan() {
    const char* at = std::getenv("VORLU_KILL_AT");
    const char* path = std::getenv("VORLU_KILL_COUNT");
    if (at != nullptr) point = std::atoll(at);
    const int file = path != nullptr ? ::open64(path, O_RDWR | O_CLOEXEC) : -1;
    if (file < 0) return;
    void* shared = ::mmap(nullptr, sizeof *count, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ::close(file);
    if (shared != MAP_FAILED) count = static_cast<std::atomic<std::int64_t>*>(shared);
  }
};

/// A change is about to be made.
void change() {
  static Plan plan;
  if (plan.count != nullptr && ++*plan.count == plan.point) ::kill(::getpid(), SIGKILL);
}

template <class Function>
Function* real(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

bool isOnDisk(int file) {
  struct stat status {};
  return ::fstat(file, &status) == 0 && (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

mode_t modeOf(int flags, va_list arguments) {
  return (flags & O_CREAT) != 0 ? static_cast<mode_t>(va_arg(arguments, unsigned)) : 0;
}

}  // namespace

// The calls by which a C++ program on this system changes files. Each stands for the library's own of the same name.
#define CHANGING(result, name, parameters, ...)               \
  result name parameters {                                    \
    static auto* const next = real<result parameters>(#name); \
    change();                                                 \
    return next(__VA_ARGS__);                                 \
  }
#define CHANGING_OPEN_FILE(result, name, parameters, ...)     \
  result name parameters {                                    \
    static auto* const next = real<result parameters>(#name); \
    if (isOnDisk(file)) change();                             \
    return next(__VA_ARGS__);                                 \
  }

extern "C" {

int open(const char* path, int flags, ...) {
  static auto* const next = real<int(const char*, int, ...)>("open");
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = modeOf(flags, rest);
  va_end(rest);
  if ((flags & (O_CREAT | O_TRUNC)) != 0) change();
  return next(path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
  static auto* const next = real<int(int, const char*, int, ...)>("openat");
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = modeOf(flags, rest);
  va_end(rest);
  if ((flags & (O_CREAT | O_TRUNC)) != 0) change();
  return next(folder, path, flags, mode);
}

CHANGING_OPEN_FILE(ssize_t, write, (int file, const void* data, size_t size), file, data, size)
CHANGING_OPEN_FILE(ssize_t, writev, (int file, const iovec* parts, int count), file, parts, count)
CHANGING_OPEN_FILE(int, fchmod, (int file, mode_t mode), file, mode)
CHANGING_OPEN_FILE(int, fchown, (int file, uid_t user, gid_t group), file, user, group)
CHANGING_OPEN_FILE(int, futimens, (int file, const timespec times[2]), file, times)
CHANGING_OPEN_FILE(int, fsetxattr, (int file, const char* name, const void* value, size_t size, int flags), file, name,
                   value, size, flags)
CHANGING_OPEN_FILE(int, ftruncate, (int file, off_t size), file, size)
CHANGING_OPEN_FILE(int, fsync, (int file), file)
CHANGING_OPEN_FILE(int, syncfs, (int file), file)
CHANGING(ssize_t, copy_file_range, (int from, off64_t* fromAt, int to, off64_t* toAt, size_t size, unsigned flags),
         from, fromAt, to, toAt, size, flags)
CHANGING(int, lsetxattr, (const char* path, const char* name, const void* value, size_t size, int flags), path, name,
         value, size, flags)
CHANGING(int, fchmodat, (int folder, const char* path, mode_t mode, int flags), folder, path, mode, flags)
CHANGING(int, fchownat, (int folder, const char* path, uid_t user, gid_t group, int flags), folder, path, user, group,
         flags)
CHANGING(int, utimensat, (int folder, const char* path, const timespec times[2], int flags), folder, path, times, flags)
CHANGING(int, mkdir, (const char* path, mode_t mode), path, mode)
CHANGING(int, mkdirat, (int folder, const char* path, mode_t mode), folder, path, mode)
CHANGING(int, symlinkat, (const char* target, int folder, const char* path), target, folder, path)
CHANGING(int, unlinkat, (int folder, const char* path, int flags), folder, path, flags)
CHANGING(int, rename, (const char* from, const char* to), from, to)
CHANGING(int, renameat, (int fromFolder, const char* from, int toFolder, const char* to), fromFolder, from, toFolder,
         to)
CHANGING(int, renameat2, (int fromFolder, const char* from, int toFolder, const char* to, unsigned flags), fromFolder,
         from, toFolder, to, flags)
CHANGING(int, posix_spawn,
         (pid_t * pid, const char* path, const posix_spawn_file_actions_t* actions, const posix_spawnattr_t* attributes,
          char* const arguments[], char* const environment[]),
         pid, path, actions, attributes, arguments, environment)

}  // extern "C"
