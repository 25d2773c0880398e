#include "vorlu/platform/linux/accounts.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <vector>

#include "vorlu/platform/linux/folder_entries.h"

namespace vorlu {
namespace {

constexpr std::size_t entryBytes = 16384;

/// The account entry that `lookUp` (a get…_r call) finds, handed to `take`; nothing without one.
template <class Entry, class LookUp, class Take>
auto accountEntry(LookUp lookUp, Take take) -> std::optional<decltype(take(std::declval<Entry&>()))> {
  Entry entry{};
  Entry* found = nullptr;
  std::vector<char> buffer(entryBytes);
  if (lookUp(&entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) return std::nullopt;
  return take(entry);
}

/// The kept answer for `key`, made by `ask` when it is asked for the first time.
template <class Map, class Ask>
auto remembered(Map& answers, const typename Map::key_type& key, Ask ask) {
  const auto known = answers.find(key);
  return known != answers.end() ? known->second : answers.emplace(key, ask()).first->second;
}

}  // namespace

std::string Accounts::userName(uid_t id) {
  const std::scoped_lock lock(mutex_);
  return remembered(userNames_, id, [id] {
    return accountEntry<passwd>([id](auto... rest) { return getpwuid_r(id, rest...); },
                                [](passwd& entry) { return std::string(entry.pw_name); })
        .value_or(id == 0 ? "root" : std::to_string(id));
  });
}

std::string Accounts::groupName(gid_t id) {
  const std::scoped_lock lock(mutex_);
  return remembered(groupNames_, id, [id] {
    return accountEntry<group>([id](auto... rest) { return getgrgid_r(id, rest...); },
                               [](group& entry) { return std::string(entry.gr_name); })
        .value_or(std::to_string(id));
  });
}

std::optional<uid_t> Accounts::userId(const std::string& name) {
  const std::scoped_lock lock(mutex_);
  return remembered(userIds_, name, [&name] {
    return accountEntry<passwd>([&](auto... rest) { return getpwnam_r(name.c_str(), rest...); },
                                [](passwd& entry) { return entry.pw_uid; });
  });
}

std::optional<gid_t> Accounts::groupId(const std::string& name) {
  const std::scoped_lock lock(mutex_);
  return remembered(groupIds_, name, [&name] {
    return accountEntry<group>([&](auto... rest) { return getgrnam_r(name.c_str(), rest...); },
                               [](group& entry) { return entry.gr_gid; });
  });
}

int Accounts::giveAt(int folder, const char* path, const std::string& owner, const std::string& group, int flags) {
  constexpr auto unchanged = static_cast<uid_t>(-1);
  const uid_t user = owner.empty() ? unchanged : userId(owner).value_or(unchanged);
  const gid_t groupNumber = group.empty() ? unchanged : groupId(group).value_or(unchanged);
  if (::fchownat(folder, path, user, groupNumber, flags) == 0) return 0;
  // Without root's rights, and for numbers that a user namespace doesn't map, the owner stays.
  return errno == EPERM || errno == EINVAL ? 0 : errno;
}

FileInfo Accounts::describe(const struct stat& status) {
  FileInfo info;
  info.kind = kindOfMode(status.st_mode);
  info.size = static_cast<std::uint64_t>(status.st_size);
  info.device = status.st_dev;
  info.inode = status.st_ino;
  info.modified = std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
  info.mode = status.st_mode & 07777;
  info.owner = userName(status.st_uid);
  info.group = groupName(status.st_gid);
  return info;
}

}  // namespace vorlu
