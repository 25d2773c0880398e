#include "refserver/server.h"

#include <fmt/format.h>
#include <httplib.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "refserver/body_source.h"
#include "refserver/connection.h"

namespace vorlu::refserver {

namespace {

constexpr std::size_t largestRequestBody = std::size_t{64} << 20;  // bytes
constexpr std::size_t blockBytes = std::size_t{64} << 10;
constexpr std::chrono::milliseconds clientGoneCheck{50};

Request requestOf(const httplib::Request& incoming) {
  Request request;
  request.method = incoming.method;
  request.path = incoming.path;
  if (const auto mark = incoming.target.find('?'); mark != std::string::npos) {
    request.query = incoming.target.substr(mark + 1);
  }
  request.headers.assign(incoming.headers.begin(), incoming.headers.end());
  request.body = incoming.body;
  return request;
}

}  // namespace

double systemSeconds() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

/// The listening socket, its thread and what they share.
class Server::Connections {
 public:
  explicit Connections(ServerConfig config)
      : config_(std::move(config)), endpoints_(config_.dataFolder, config_.site, config_.keys, config_.clock) {}
  ~Connections() { stop(); }

  Result<int> start();
  void stop();
  std::string baseUrl() const {
    const bool isIPv6 = config_.address.find(':') != std::string::npos;
    return fmt::format(fmt::runtime(isIPv6 ? "http://[{}]:{}" : "http://{}:{}"), config_.address, port_);
  }
  std::vector<Exchange> exchanges() const {
    const std::lock_guard lock(mutex_);
    return exchanges_;
  }
  void forgetExchanges() {
    const std::lock_guard lock(mutex_);
    exchanges_.clear();
  }

 private:
  void configureListener();
  void serve(const httplib::Request& incoming, httplib::Response& outgoing);
  Response answer(const Request& request);
  void record(const Request& request, const Response& response);
  void send(const Response& response, httplib::Response& outgoing);
  bool sendPiece(const BodySource& body, const Fault& fault, std::size_t offset, httplib::DataSink& sink);
  void waitForStop(std::chrono::milliseconds time);
  void stall(httplib::DataSink& sink);

  ServerConfig config_;
  Endpoints endpoints_;
  httplib::Server listener_;
  std::thread thread_;
  int port_ = 0;
  mutable std::mutex mutex_;
  std::condition_variable stopRequested_;
  bool stopping_ = false;
  std::vector<Exchange> exchanges_;
};

Server::Server(ServerConfig config) : connections_(std::make_unique<Connections>(std::move(config))) {}
Server::~Server() = default;
Result<int> Server::start() {
  return connections_->start();
}
void Server::stop() {
  connections_->stop();
}
std::string Server::baseUrl() const {
  return connections_->baseUrl();
}
std::vector<Exchange> Server::exchanges() const {
  return connections_->exchanges();
}
void Server::forgetExchanges() {
  connections_->forgetExchanges();
}

void Server::Connections::configureListener() {
  // Without SO_REUSEPORT, so that a second server on the port fails instead of taking half of the requests.
  listener_.set_socket_options([](int socket) {
    const int on = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  });
  // Nothing to wait for on a connection once it is answered: stopping is immediate.
  listener_.set_keep_alive_max_count(1);
  listener_.set_payload_max_length(largestRequestBody);
  const auto handler = [this](const httplib::Request& incoming, httplib::Response& outgoing) {
    serve(incoming, outgoing);
  };
  const std::string anyPath = R"([\s\S]*)";
  listener_.Get(anyPath, handler);
  listener_.Post(anyPath, handler);
  listener_.Put(anyPath, handler);
  listener_.Patch(anyPath, handler);
  listener_.Delete(anyPath, handler);
  listener_.Options(anyPath, handler);
  // Requests that never reach the handler, such as malformed ones.
  listener_.set_error_handler([](const httplib::Request&, httplib::Response& outgoing) {
    if (!outgoing.body.empty() || outgoing.content_length_ > 0) return;
    const char* why = outgoing.status == 413 ? "the body is too large" : "the request can't be served";
    outgoing.set_content(messageResponse(outgoing.status, why).body, "application/json");
  });
}

Result<int> Server::Connections::start() {
  configureListener();
  if (config_.port == 0) {
    port_ = listener_.bind_to_any_port(config_.address);
  } else if (listener_.bind_to_port(config_.address, config_.port)) {
    port_ = config_.port;
  } else {
    port_ = -1;
  }
  if (port_ <= 0) return Failure{fmt::format("can't listen on {} port {}", config_.address, config_.port)};
  thread_ = std::thread([this] { listener_.listen_after_bind(); });
  while (!listener_.is_running()) std::this_thread::yield();
  return port_;
}

void Server::Connections::stop() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  stopRequested_.notify_all();
  listener_.stop();
  if (thread_.joinable()) thread_.join();
}

void Server::Connections::serve(const httplib::Request& incoming, httplib::Response& outgoing) {
  const Request request = requestOf(incoming);
  Response response = answer(request);
  if (config_.hook) config_.hook(request, response);
  record(request, response);
  if (response.fault.delay.count() > 0) waitForStop(response.fault.delay);
  if (response.fault.noAnswer) shutDownConnection(incoming.local_port, incoming.remote_port);
  send(response, outgoing);
}

Response Server::Connections::answer(const Request& request) {
  try {
    return endpoints_.answer(request);
  } catch (const std::exception& error) {
    return messageResponse(500, error.what());
  }
}

void Server::Connections::record(const Request& request, const Response& response) {
  const std::lock_guard lock(mutex_);
  Exchange exchange{request, response.status, response.reason};
  if (config_.onExchange) config_.onExchange(exchange);
  if (config_.keepExchanges) exchanges_.push_back(std::move(exchange));
}

void Server::Connections::send(const Response& response, httplib::Response& outgoing) {
  auto body = std::make_shared<BodySource>(response);
  if (!body->isOpen()) {
    // The file went away between the answer and its sending.
    outgoing.status = 404;
    outgoing.set_content(messageResponse(404, "the file is gone").body, "application/json");
    return;
  }
  outgoing.status = response.status;
  for (const auto& [name, value] : response.headers) outgoing.set_header(name, value);
  if (body->size() == 0) {
    outgoing.set_content("", response.contentType);
    return;
  }
  outgoing.set_content_provider(
      body->size(), response.contentType,
      [this, body, fault = response.fault](std::size_t offset, std::size_t, httplib::DataSink& sink) {
        return sendPiece(*body, fault, offset, sink);
      });
}

/// Sends the next block from `offset`; false closes the connection.
bool Server::Connections::sendPiece(const BodySource& body, const Fault& fault, std::size_t offset,
                                    httplib::DataSink& sink) {
  std::size_t end = std::min(body.size(), offset + blockBytes);
  if (fault.dropAfter) end = std::min(end, *fault.dropAfter);
  if (fault.stallAfter) end = std::min(end, *fault.stallAfter);
  if (end <= offset) {
    if (fault.stallAfter && offset >= *fault.stallAfter) stall(sink);
    return false;
  }
  const std::string block = body.read(offset, end - offset);
  return !block.empty() && sink.write(block.data(), block.size());
}

void Server::Connections::waitForStop(std::chrono::milliseconds time) {
  std::unique_lock lock(mutex_);
  stopRequested_.wait_for(lock, time, [this] { return stopping_; });
}

void Server::Connections::stall(httplib::DataSink& sink) {
  std::unique_lock lock(mutex_);
  while (!stopping_) {
    lock.unlock();
    if (!sink.is_writable()) return;
    lock.lock();
    stopRequested_.wait_for(lock, clientGoneCheck, [this] { return stopping_; });
  }
}

}  // namespace vorlu::refserver
