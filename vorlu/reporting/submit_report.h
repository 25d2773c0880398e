#pragma once

#include <string>

#include "vorlu/platform/file_manager.h"
#include "vorlu/platform/url_session.h"

namespace vorlu {

struct ReportData;
struct Vorlu;

/// Keeps the report as it was sent (Run/lastReportEnc.json) and in the clear (Run/lastReport.json), for the owner's
/// support: hidden, root's alone. A failed file doesn't keep the other from being written.
Status writeReportFiles(FileManager& files, const std::string& report, const std::string& encrypted);

/// Posts an encrypted report. Fails, with nothing sent, when the server has told no address for reports.
Result<UrlReply> submitReport(Vorlu& vorlu, const std::string& encrypted);

/// The log line that tells what became of a posted report. The server's status doesn't count, its message does.
std::string verdictOnReply(const UrlReply& reply);

/// Enciphers, keeps and posts a report, once. Every outcome is logged; without a usable public key nothing is written
/// and nothing sent.
void handOverReport(Vorlu& vorlu, const ReportData& report);

}  // namespace vorlu
