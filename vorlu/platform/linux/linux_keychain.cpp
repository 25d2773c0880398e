#include "vorlu/platform/linux/linux_keychain.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <nlohmann/json.hpp>

#include "vorlu/platform/linux/folder_lock.h"

namespace vorlu {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t fileCap = std::size_t{16} << 20;

Json encode(const KeychainItem& item) {
  return {{"service", item.service},
          {"account", item.account},
          {"value", item.value},
          {"applicationTag", item.applicationTag},
          {"invisible", item.invisible}};
}

KeychainItem decode(const Json& json) {
  KeychainItem item;
  json.at("service").get_to(item.service);
  json.at("account").get_to(item.account);
  json.at("value").get_to(item.value);
  json.at("applicationTag").get_to(item.applicationTag);
  json.at("invisible").get_to(item.invisible);
  return item;
}

auto findItem(std::vector<KeychainItem>& items, const std::string& service, const std::string& account) {
  return std::find_if(items.begin(), items.end(),
                      [&](const KeychainItem& item) { return item.service == service && item.account == account; });
}

}  // namespace

Result<std::vector<KeychainItem>> LinuxKeychain::load() {
  std::vector<KeychainItem> items;
  const auto text = files_.read(path, fileCap);
  if (!text && text.failure().code == ENOENT) return items;
  if (!text) return text.failure();
  try {
    const auto file = Json::parse(*text);
    for (const Json& item : file.at("items").get_ref<const Json::array_t&>()) items.push_back(decode(item));
  } catch (const Json::exception& error) {
    return Failure{fmt::format("{}: {}", path, error.what()), corruptFile};
  }
  return items;
}

Status LinuxKeychain::store(const std::vector<KeychainItem>& items) {
  Json file{{"items", Json::array()}};
  for (const KeychainItem& item : items) file["items"].push_back(encode(item));
  try {
    return files_.writeAtomically(path, file.dump(2) + "\n", {0600, "root", "wheel"});
  } catch (const Json::exception& error) {  // a value that is no UTF-8
    return Failure{fmt::format("{}: {}", path, error.what())};
  }
}

Status LinuxKeychain::add(const KeychainItem& item) {
  const std::scoped_lock lock(mutex_);
  if (Status made = files_.createDirectory(folder, {0755, "root", "wheel"}); !made) return made;
  const FolderLock held(hostFolder_);
  auto items = load();
  if (!items && items.failure().code == corruptFile) {
    if (Status moved = files_.move(path, std::string(path) + ".corrupt"); !moved) return moved;
    items = std::vector<KeychainItem>{};
  }
  if (!items) return items.failure();
  if (findItem(*items, item.service, item.account) != items->end())
    return Failure{fmt::format("{}: {} already has an item {}", path, item.account, item.service), duplicateItem};
  items->push_back(item);
  return store(*items);
}

Result<std::optional<std::string>> LinuxKeychain::read(const std::string& service, const std::string& account) {
  const std::scoped_lock lock(mutex_);
  auto items = load();
  if (!items) return items.failure();
  const auto found = findItem(*items, service, account);
  return found == items->end() ? std::optional<std::string>() : std::optional(found->value);
}

Status LinuxKeychain::remove(const std::string& service, const std::string& account) {
  const std::scoped_lock lock(mutex_);
  const FolderLock held(hostFolder_);
  auto items = load();
  if (!items) return items.failure();
  const auto found = findItem(*items, service, account);
  if (found == items->end()) return success();
  items->erase(found);
  return store(*items);
}

}  // namespace vorlu
