#pragma once

#include "vorlu/platform/console.h"
#include "vorlu/platform/keychain.h"
#include "vorlu/platform/power.h"
#include "vorlu/platform/system_log.h"
#include "vorlu/platform/url_session.h"
#include "vorlu/platform/web_view.h"

namespace vorlu::ctl {

// The parts of a Mac for one who only looks: nothing is said, sent or fetched.

struct SilentConsole : Console {
  void print(std::string_view /*line*/) override {}
  void flush() override {}
};

struct SilentSystemLog : SystemLog {
  void record(RecordType /*type*/, std::string_view /*category*/, std::string_view /*message*/) override {}
};

struct NoUrlSession : UrlSession {
  static constexpr const char* reason = "the network isn't used here";
  UrlReply send(const UrlRequest& /*request*/) override { return {{}, {}, reason}; }
  DownloadReply download(const UrlRequest& /*request*/, const std::string& /*folder*/) override {
    DownloadReply reply;
    reply.error = reason;
    return reply;
  }
};

struct NoWebView : WebView {
  std::optional<std::string> outerHTML(const std::string& /*url*/, const std::string& /*userAgent*/) override {
    return std::nullopt;
  }
};

struct ClosedKeychain : Keychain {
  Status add(const KeychainItem& /*item*/) override { return closed(); }
  Result<std::optional<std::string>> read(const std::string& /*service*/, const std::string& /*account*/) override {
    return closed();
  }
  Status remove(const std::string& /*service*/, const std::string& /*account*/) override { return closed(); }

 private:
  static Failure closed() { return {"the keychain isn't used here"}; }
};

}  // namespace vorlu::ctl
