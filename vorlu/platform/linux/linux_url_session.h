#pragma once

#include <memory>
#include <mutex>

#include "vorlu/platform/linux/accounts.h"
#include "vorlu/platform/linux/root_folder.h"
#include "vorlu/platform/linux/url_transfer.h"
#include "vorlu/platform/url_session.h"

namespace vorlu {

/// Transfers by libcurl. A connection stays open for the next request to the same server. No cookies, no proxy from the
/// environment, no password files.
class LinuxUrlSession : public UrlSession {
 public:
  static constexpr std::size_t bodyCap = std::size_t{64} << 20;  ///< bytes of a body that `send` takes

  explicit LinuxUrlSession(RootFolder root, TransferRules rules = {})
      : root_(std::move(root)), rules_(std::move(rules)) {}
  ~LinuxUrlSession() override;

  UrlReply send(const UrlRequest& request) override;
  DownloadReply download(const UrlRequest& request, const std::string& folder) override;

 private:
  class Borrowed;

  RootFolder root_;
  TransferRules rules_;
  Accounts accounts_;
  std::mutex mutex_;
  void* idle_ = nullptr;  ///< a curl handle with its connections
};

}  // namespace vorlu
