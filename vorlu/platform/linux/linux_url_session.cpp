#include "vorlu/platform/linux/linux_url_session.h"

#include <curl/curl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "vorlu/platform/linux/sha256_digest.h"
#include "vorlu/platform/linux/temporary_file.h"
#include "vorlu/platform/linux/url_transfer.h"

namespace vorlu {
namespace {

constexpr std::string_view downloadPrefix = ".vorlu-download-";

/// A body kept in memory, up to a cap.
class MemoryReceiver : public BodyReceiver {
 public:
  bool receive(std::string_view bytes) override {
    if (body.size() + bytes.size() > LinuxUrlSession::bodyCap) {
      failure_ = "the answer is larger than 64 MiB";
      return false;
    }
    body.append(bytes);
    return true;
  }
  bool restart() override {
    body.clear();
    return true;
  }

  std::string body;
};

/// A body written to a file, with its digest computed on the way.
class FileReceiver : public BodyReceiver {
 public:
  FileReceiver(int descriptor, std::string path, std::uint64_t diskReserve)
      : descriptor_(descriptor), path_(std::move(path)), diskReserve_(diskReserve) {}

  bool receive(std::string_view bytes) override {
    digest_.update(bytes);
    unmeasured_ += bytes.size();
    if (unmeasured_ >= measureGap && isVolumeFull()) return false;
    return writeAll(descriptor_, bytes) || fail();
  }
  bool restart() override {
    digest_.restart();
    return (::ftruncate(descriptor_, 0) == 0 && ::lseek(descriptor_, 0, SEEK_SET) == 0) || fail();
  }
  std::string digest() { return digest_.finishHex(); }

 private:
  static constexpr std::size_t measureGap = std::size_t{8} << 20;

  /// A server that never ends its answer must not take the last of the disk.
  bool isVolumeFull() {
    struct statvfs volume {};
    unmeasured_ = 0;
    if (::fstatvfs(descriptor_, &volume) != 0 || volume.f_bavail * volume.f_frsize >= diskReserve_) return false;
    failure_ = fmt::format("{}: less than {} MiB of the disk are left", path_, diskReserve_ >> 20);
    return true;
  }

  bool fail() {
    failure_ = systemFailure(path_, errno).text;
    return false;
  }

  int descriptor_;
  std::string path_;
  std::uint64_t diskReserve_;
  std::size_t unmeasured_ = 0;  ///< bytes since the volume was last looked at
  Sha256Digest digest_;
};

/// The library is made ready when the first transfer needs it; a run without network never pays for it.
bool libraryReady() {
  static const bool ready = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  return ready;
}

}  // namespace

/// The session's curl handle for one request; a second request at the same time gets a handle of its own.
class LinuxUrlSession::Borrowed {
 public:
  explicit Borrowed(LinuxUrlSession& session) : session_(session) {
    if (!libraryReady()) return;
    const std::scoped_lock lock(session_.mutex_);
    handle_ = session_.idle_ ? std::exchange(session_.idle_, nullptr) : curl_easy_init();
  }
  Borrowed(const Borrowed&) = delete;
  Borrowed& operator=(const Borrowed&) = delete;
  ~Borrowed() {
    const std::scoped_lock lock(session_.mutex_);
    if (session_.idle_)
      curl_easy_cleanup(handle_);
    else
      session_.idle_ = handle_;
  }

  TransferOutcome transfer(const UrlRequest& request, BodyReceiver& receiver, bool decode) {
    if (!handle_) return {std::nullopt, fmt::format("libcurl can't be used ({})", shownUrl(request.url))};
    return vorlu::transfer(handle_, request, receiver, decode, session_.rules_);
  }

 private:
  LinuxUrlSession& session_;
  CURL* handle_ = nullptr;
};

LinuxUrlSession::~LinuxUrlSession() {
  if (idle_) curl_easy_cleanup(idle_);
}

UrlReply LinuxUrlSession::send(const UrlRequest& request) {
  MemoryReceiver receiver;
  TransferOutcome outcome = Borrowed(*this).transfer(request, receiver, /*decode=*/true);
  if (outcome.error) return {std::nullopt, std::nullopt, outcome.error};
  return {std::move(receiver.body), outcome.response, std::nullopt};
}

DownloadReply LinuxUrlSession::download(const UrlRequest& request, const std::string& folder) {
  DownloadReply reply;
  auto file = TemporaryFile::create(root_.hostPath(folder), folder, downloadPrefix);
  if (!file) {
    reply.error = file.error();
    return reply;
  }
  const std::string location = folder + "/" + file->name();
  FileReceiver receiver(file->descriptor(), location, rules_.diskReserve);
  const TransferOutcome outcome = Borrowed(*this).transfer(request, receiver, /*decode=*/false);
  struct stat status {};
  reply.error = outcome.error;
  if (!reply.error && (::fchmod(file->descriptor(), 0644) != 0 || ::fstat(file->descriptor(), &status) != 0))
    reply.error = systemFailure(location, errno).text;
  if (reply.error) return reply;
  file->keep();
  reply.location = location;
  reply.response = outcome.response;
  reply.sha256 = receiver.digest();
  reply.file = accounts_.describe(status);
  return reply;
}

}  // namespace vorlu
