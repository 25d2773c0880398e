#pragma once

#include <string>

#include "vorlu/platform/keychain.h"
#include "vorlu/platform/result.h"

namespace vorlu {

class Log;

/// The agent's generic passwords in the system keychain.
class KeychainUtil {
 public:
  static constexpr const char* account = "Vorlu";

  KeychainUtil(Keychain& keychain, Log& log) : keychain_(keychain), log_(log) {}

  /// Empty when there is no such item, or, with a logged error, when the keychain can't be read.
  std::string readKeychainItem(const std::string& service, const std::string& itemAccount = account);
  /// No such item is success.
  Status deleteKeychainItem(const std::string& service, const std::string& itemAccount = account);
  /// Replaces the item of the service.
  Status writeKeychainItem(const std::string& service, const std::string& value, bool invisible);

 private:
  Keychain& keychain_;
  Log& log_;
};

}  // namespace vorlu
