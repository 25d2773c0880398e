#include "vorlu/reporting/submit_report.h"

#include <fmt/format.h>

#include "vorlu/reporting/encrypt_report.h"
#include "vorlu/reporting/report_data.h"
#include "vorlu/server/key_material.h"
#include "vorlu/server/server_texts.h"
#include "vorlu/state/json.h"
#include "vorlu/state/paths.h"
#include "vorlu/vorlu.h"

namespace vorlu {
namespace {

const Ownership reportOwnership{0600, "root", "wheel"};

/// What the server says to a report, be it good or bad.
struct ReportAnswer {
  std::optional<std::string> message;
  static constexpr auto fields() { return std::array{field<&ReportAnswer::message>("message")}; }
};

Status writeHidden(FileManager& files, const std::string& path, const std::string& text) {
  Status written = files.writeAtomically(path, text, reportOwnership);
  if (written) files.setHidden(path);
  return written;
}

}  // namespace

Status writeReportFiles(FileManager& files, const std::string& report, const std::string& encrypted) {
  if (!files.isDirectory(paths::run))
    return Failure{"Error Domain=FileManagerError Code=0 \"Unable to access document directory\""};
  Status plain = writeHidden(files, paths::lastReport, report);
  Status sealed = writeHidden(files, paths::lastReportEnc, encrypted);
  return plain ? sealed : plain;
}

Result<UrlReply> submitReport(Vorlu& vorlu, const std::string& encrypted) {
  UrlRequest request;
  request.url = fetchInventoryValue(vorlu, reportsLabel, false);
  if (request.url.empty()) return Failure{fmt::format("the inventory has no URL labelled \"{}\"", reportsLabel)};
  request.method = decryptString(vorlu, SiteText::reportMethod);
  request.headers.push_back(authorizationHeader(vorlu, decryptString(vorlu, SiteText::reportToken)));
  request.headers.emplace_back(decryptString(vorlu, SiteText::reportHeaderName),
                               decryptString(vorlu, SiteText::reportHeaderValue));
  // Else the transfer calls it a form, and servers take only small forms.
  request.headers.emplace_back("Content-Type", "application/json");
  request.body = encrypted;
  return vorlu.platform.urls.send(request);
}

std::string verdictOnReply(const UrlReply& reply) {
  if (!reply.data) return "Warning: No data received from the request to submit reporting data.";
  const Result<ReportAnswer> answer = decodeJson<ReportAnswer>(*reply.data);
  if (!answer) return fmt::format("Error: Could not submit report data - {}", answer.error());
  if (!answer->message) return "Error: Failed to submit reporting data due to unknown error";
  if (answer->message->find("upserted successfully") != std::string::npos)
    return "Successfully submitted reporting data";
  return fmt::format("Error: Failed to submit reporting data with server response - {}", *answer->message);
}

void handOverReport(Vorlu& vorlu, const ReportData& report) {
  const std::string text = encodeJson(report, JsonLayout::pretty);
  const std::string publicKey = vorlu.preferences.general().publicKey.value_or("");
  if (publicKey.empty()) {
    vorlu.log("Error: a Public Key is required for reporting data but could not be found");
    return;
  }
  const auto encrypted = encryptReport(vorlu.platform.security, vorlu.log, text, publicKey);
  if (!encrypted) {
    vorlu.log(encrypted.error());
    return;
  }
  const std::string body = encodeJson(*encrypted, JsonLayout::compact);
  const Status written = writeReportFiles(vorlu.platform.files, text, body);
  if (!written) vorlu.log(fmt::format("Error writing to JSON file {}", written.error()));
  const Result<UrlReply> reply = submitReport(vorlu, body);
  vorlu.log(reply ? verdictOnReply(*reply) : fmt::format("Error: Could not submit reporting data - {}", reply.error()));
}

}  // namespace vorlu
