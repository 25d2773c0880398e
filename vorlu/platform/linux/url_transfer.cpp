#include "vorlu/platform/linux/url_transfer.h"

#include <curl/curl.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <memory>

#include "vorlu/platform/linux/termination.h"
#include "vorlu/platform/termination.h"

namespace vorlu {
namespace {

using HeaderList = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;
using Monotonic = std::chrono::steady_clock;

constexpr int redirectLimit = 10;
constexpr long bufferBytes = 512L * 1024;

/// Scheme, host and port: what decides who may see a header.
struct Origin {
  std::string scheme;
  std::string host;
  std::string port;
  bool operator==(const Origin&) const = default;
};

/// Nothing for what isn't a whole http or https URL.
std::optional<Origin> originOf(const std::string& url) {
  const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> parsed(curl_url(), &curl_url_cleanup);
  if (!parsed || curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK) return std::nullopt;
  const auto part = [&](CURLUPart which) {
    char* text = nullptr;
    if (curl_url_get(parsed.get(), which, &text, CURLU_DEFAULT_PORT) != CURLUE_OK) return std::string();
    std::string copy = text;
    curl_free(text);
    std::transform(copy.begin(), copy.end(), copy.begin(), [](unsigned char c) { return std::tolower(c); });
    return copy;
  };
  Origin origin{part(CURLUPART_SCHEME), part(CURLUPART_HOST), part(CURLUPART_PORT)};
  if (origin.scheme != "http" && origin.scheme != "https") return std::nullopt;
  return origin;
}

bool isRedirect(long status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

bool hasLineBreak(std::string_view text) {
  return text.find_first_of(std::string_view("\r\n\0", 3)) != text.npos;
}

/// One request of the chain of redirects.
struct Hop {
  std::string url;
  std::string method;
  bool sendBody = true;
  bool sendHeaders = true;
};

/// A transfer's callbacks and what they share.
class Watch {
 public:
  Watch(BodyReceiver& receiver, std::chrono::milliseconds patience, Monotonic::time_point deadline,
        const TransferRules& rules)
      : receiver_(receiver), patience_(std::min(patience, rules.longestSilence)), deadline_(deadline), rules_(rules) {}

  void begin() { last_ = windowStart_ = Monotonic::now(), seen_ = windowBytes_ = 0; }
  bool stalled() const { return stalled_; }

  static std::size_t onBody(char* data, std::size_t size, std::size_t count, void* self) {
    return static_cast<Watch*>(self)->receiver_.receive({data, size * count}) ? size * count : 0;
  }

  static std::size_t onHeader(char*, std::size_t size, std::size_t count, void* self) {
    static_cast<Watch*>(self)->last_ = Monotonic::now();
    return size * count;
  }

  /// Curl calls this at least once a second; bytes in either direction put the end of patience off.
  static int onProgress(void* self, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent) {
    return static_cast<Watch*>(self)->tick(received + sent) ? 0 : 1;
  }

 private:
  bool tick(curl_off_t bytes) {
    const auto now = Monotonic::now();
    if (bytes != seen_) last_ = now;
    seen_ = bytes;
    stalled_ = now - last_ >= patience_ || now >= deadline_ || isSlow(now);
    return !stalled_ && !terminationAsked();
  }

  /// Whether the window that is over brought too little; begins the next one.
  bool isSlow(Monotonic::time_point now) {
    if (now - windowStart_ < rules_.slowWindow) return false;
    const bool slow = seen_ - windowBytes_ < rules_.leastBytes;
    windowStart_ = now, windowBytes_ = seen_;
    return slow;
  }

  BodyReceiver& receiver_;
  std::chrono::milliseconds patience_;
  Monotonic::time_point deadline_;
  const TransferRules& rules_;
  Monotonic::time_point last_ = Monotonic::now();
  Monotonic::time_point windowStart_ = last_;
  curl_off_t seen_ = 0;
  curl_off_t windowBytes_ = 0;
  bool stalled_ = false;
};

class Transfer {
 public:
  Transfer(CURL* handle, const UrlRequest& request, BodyReceiver& receiver, bool decode, const TransferRules& rules)
      : handle_(handle),
        request_(request),
        receiver_(receiver),
        decode_(decode),
        rules_(rules),
        watch_(receiver, request.timeout,
               decode ? Monotonic::now() + rules.longestAnswer : Monotonic::time_point::max(), rules) {}

  TransferOutcome run() {
    Hop hop{request_.url, request_.method};
    const auto first = originOf(hop.url);
    if (!first) return failed("unsupported URL", hop.url);
    if (!headersAreSound()) return failed("a header or the method holds a line break", hop.url);
    for (int redirects = 0;; ++redirects) {
      const CURLcode code = perform(hop);
      if (code == CURLE_ABORTED_BY_CALLBACK && terminationAsked()) throw Terminated{};
      if (code != CURLE_OK) return failed(reason(code), hop.url);
      const auto next = redirectTarget();
      if (!next) return response();
      if (redirects == redirectLimit) return failed("too many redirects", request_.url);
      const auto origin = originOf(*next);
      if (!origin) return failed("a redirect to an unsupported URL", *next);
      if (originOf(hop.url)->scheme == "https" && origin->scheme == "http")
        return failed("a redirect from https to http is refused", *next);
      if (!receiver_.restart()) return failed(receiver_.failure(), hop.url);
      follow(hop, *next, *origin == *first);
    }
  }

 private:
  static TransferOutcome failed(std::string_view reason, const std::string& url) {
    return {std::nullopt, fmt::format("{} ({})", reason, shownUrl(url))};
  }

  bool headersAreSound() const {
    return !hasLineBreak(request_.method) &&
           std::none_of(request_.headers.begin(), request_.headers.end(), [](const auto& header) {
             return header.first.empty() || hasLineBreak(header.first) || hasLineBreak(header.second);
           });
  }

  std::string reason(CURLcode code) const {
    if (watch_.stalled()) return curl_easy_strerror(CURLE_OPERATION_TIMEDOUT);
    if (code == CURLE_WRITE_ERROR && !receiver_.failure().empty()) return receiver_.failure();
    return errorText_[0] != '\0' ? errorText_.data() : curl_easy_strerror(code);
  }

  std::optional<std::string> redirectTarget() const {
    const char* target = nullptr;
    curl_easy_getinfo(handle_, CURLINFO_REDIRECT_URL, &target);
    return target && isRedirect(status()) ? std::optional<std::string>(target) : std::nullopt;
  }

  long status() const {
    long status = 0;
    curl_easy_getinfo(handle_, CURLINFO_RESPONSE_CODE, &status);
    return status;
  }

  TransferOutcome response() const {
    const char* url = nullptr;
    curl_easy_getinfo(handle_, CURLINFO_EFFECTIVE_URL, &url);
    return {UrlResponse{static_cast<int>(status()), url ? url : ""}, std::nullopt};
  }

  /// 303 asks for a GET, as do 301 and 302 after a POST by old custom; 307 and 308 keep method and body.
  void follow(Hop& hop, const std::string& next, bool homeOrigin) const {
    const long code = status();
    const bool toGet = (code == 303 && hop.method != "HEAD") || ((code == 301 || code == 302) && hop.method == "POST");
    if (toGet) hop.method = "GET";
    if (toGet) hop.sendBody = false;
    hop.sendHeaders = homeOrigin;
    hop.url = next;
  }

  HeaderList headersOf(const Hop& hop) const {
    HeaderList list(nullptr, &curl_slist_free_all);
    const auto add = [&](const std::string& line) { list.reset(curl_slist_append(list.release(), line.c_str())); };
    add("Expect:");  // no second of waiting before a large body
    if (request_.ignoreCache) add("Cache-Control: no-cache");
    if (request_.ignoreCache) add("Pragma: no-cache");
    if (!hop.sendHeaders) return list;
    for (const auto& [name, value] : request_.headers)
      add(fmt::format(fmt::runtime(value.empty() ? "{};" : "{}: {}"), name, value));
    return list;
  }

  CURLcode perform(const Hop& hop) {
    curl_easy_reset(handle_);
    errorText_[0] = '\0';
    const HeaderList headers = headersOf(hop);
    set(CURLOPT_URL, hop.url.c_str());
    set(CURLOPT_HTTPHEADER, headers.get());
    setMethod(hop);
    setRules();
    setCallbacks();
    watch_.begin();
    return curl_easy_perform(handle_);
  }

  void setMethod(const Hop& hop) {
    const bool body = hop.sendBody && (!request_.body.empty() || hop.method == "POST");
    if (hop.method == "HEAD") return set(CURLOPT_NOBODY, 1L);
    if (body) set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body.size()));
    if (body) set(CURLOPT_POSTFIELDS, request_.body.data());
    set(CURLOPT_CUSTOMREQUEST, hop.method.c_str());
  }

  void setRules() {
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_FOLLOWLOCATION, 0L);
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    if (!rules_.authorities.empty()) set(CURLOPT_CAINFO, rules_.authorities.c_str());
    if (!rules_.authorities.empty()) set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
    set(CURLOPT_PROXY, "");
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_BUFFERSIZE, bufferBytes);
    set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(std::chrono::milliseconds(request_.timeout).count()));
    set(CURLOPT_USERAGENT, "vorlu");
    if (decode_) set(CURLOPT_ACCEPT_ENCODING, "");
  }

  void setCallbacks() {
    set(CURLOPT_ERRORBUFFER, errorText_.data());
    set(CURLOPT_WRITEFUNCTION, &Watch::onBody);
    set(CURLOPT_WRITEDATA, &watch_);
    set(CURLOPT_HEADERFUNCTION, &Watch::onHeader);
    set(CURLOPT_HEADERDATA, &watch_);
    set(CURLOPT_NOPROGRESS, 0L);
    set(CURLOPT_XFERINFOFUNCTION, &Watch::onProgress);
    set(CURLOPT_XFERINFODATA, &watch_);
  }

  template <class Value>
  void set(CURLoption option, Value value) {
    curl_easy_setopt(handle_, option, value);
  }

  CURL* handle_;
  const UrlRequest& request_;
  BodyReceiver& receiver_;
  bool decode_;
  const TransferRules& rules_;
  Watch watch_;
  std::array<char, CURL_ERROR_SIZE> errorText_{};
};

}  // namespace

std::string shownUrl(std::string_view url) {
  url = url.substr(0, url.find_first_of("?#"));
  const auto scheme = url.find("://");
  if (scheme == url.npos) return std::string(url);
  const auto host = scheme + std::string_view("://").size();
  const auto path = std::min(url.find('/', host), url.size());
  const auto at = url.substr(0, path).rfind('@');
  if (at == url.npos || at < host) return std::string(url);
  return std::string(url.substr(0, host)) + std::string(url.substr(at + 1));
}

TransferOutcome transfer(void* handle, const UrlRequest& request, BodyReceiver& receiver, bool decode,
                         const TransferRules& rules) {
  return Transfer(handle, request, receiver, decode, rules).run();
}

}  // namespace vorlu
