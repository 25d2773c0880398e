#include "vorlu/server/keychain_util.h"

#include "vorlu/state/log.h"

namespace vorlu {
namespace {

constexpr const char* applicationTag = "com.mosk.vorlu.keymaterial";

}  // namespace

std::string KeychainUtil::readKeychainItem(const std::string& service, const std::string& itemAccount) {
  Result<std::optional<std::string>> item = keychain_.read(service, itemAccount);
  if (!item) {
    log_("Error: Could not access macOS keychain");
    return {};
  }
  return std::move(*item).value_or("");
}

Status KeychainUtil::deleteKeychainItem(const std::string& service, const std::string& itemAccount) {
  return keychain_.remove(service, itemAccount);
}

Status KeychainUtil::writeKeychainItem(const std::string& service, const std::string& value, bool invisible) {
  const Status removed = deleteKeychainItem(service);
  Status added = keychain_.add({service, account, value, applicationTag, invisible});
  // An agent that starts at the same time may have added its own in between.
  const bool anothers = removed && !added && !readKeychainItem(service).empty();
  return anothers ? success() : added;
}

}  // namespace vorlu
