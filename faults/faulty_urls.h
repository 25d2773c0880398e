#pragma once

#include <cstring>
#include <string>

#include "faults/fault_plan.h"
#include "vorlu/platform/url_session.h"

namespace vorlu::faults {

/// Transfers that end with an error before anything has come.
class FaultyUrls : public UrlSession {
 public:
  FaultyUrls(UrlSession& urls, FaultPlan& plan) : urls_(urls), plan_(plan) {}

  UrlReply send(const UrlRequest& request) override {
    return plan_.through(
        Touch::network, request.url, [&] { return urls_.send(request); }, failed<UrlReply>);
  }
  DownloadReply download(const UrlRequest& request, const std::string& folder) override {
    return plan_.through(
        Touch::download, request.url, [&] { return urls_.download(request, folder); }, failed<DownloadReply>);
  }

 private:
  template <class Reply>
  static Reply failed(int error) {
    Reply reply;
    reply.error = std::strerror(error);
    return reply;
  }

  UrlSession& urls_;
  FaultPlan& plan_;
};

}  // namespace vorlu::faults
