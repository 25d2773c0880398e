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
  static_cast<void>(deleteKeychainItem(service));  // what stays shows as a failure to add
  return keychain_.add({service, account, value, applicationTag, invisible});
}

}  // namespace vorlu
