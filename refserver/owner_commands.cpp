#include "refserver/owner_commands.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <unistd.h>

#include <ctime>
#include <filesystem>

#include "refserver/data_folder.h"
#include "refserver/options.h"
#include "refserver/report_store.h"
#include "refserver/sealed_report.h"
#include "seal/rsa_key.h"
#include "seal/small_file.h"
#include "vorlu/state/encoding.h"

namespace vorlu::refserver {

namespace {

using Arguments = std::vector<std::string>;

constexpr unsigned reportKeyBits = 2048;

OwnerOutcome misused(const std::string& why) {
  return {2, why};
}
OwnerOutcome failed(const std::string& why) {
  return {1, why};
}

OwnerOutcome listReports(const Arguments& arguments) {
  std::string data = ".";
  if (Status read = readOptions(arguments, {{"--data", &data}}); !read) return misused(read.error());
  if (!std::filesystem::is_directory(data)) return failed(fmt::format("{} is no folder", data));
  const auto reports = ReportStore(DataFolder::reports(data)).list();
  if (!reports) return failed(reports.error());
  std::string lines;
  for (const StoredReport& report : *reports) {
    lines += fmt::format("{} {:%Y-%m-%dT%H:%M:%S}Z {} bytes\n", report.id,
                         fmt::gmtime(static_cast<std::time_t>(report.arrived)), report.bytes);
  }
  return {0, lines};
}

OwnerOutcome showReport(const Arguments& arguments) {
  if (arguments.empty()) return misused("report show needs an ID");
  std::string data = ".";
  std::string keyFile;
  const Status read = readOptions({arguments.begin() + 1, arguments.end()}, {{"--data", &data}, {"--key", &keyFile}});
  if (!read) return misused(read.error());
  if (keyFile.empty()) return misused("report show needs --key");
  const auto pem = seal::readSmallFile(keyFile);
  if (!pem) return failed(pem.error());
  const auto key = seal::RsaKey::fromPrivatePem(*pem);
  if (!key) return failed(fmt::format("{}: {}", keyFile, key.error()));
  const auto body = ReportStore(DataFolder::reports(data)).body(arguments.front());
  if (!body) return failed(body.error());
  const auto sealed = parseSealedReport(*body);
  if (!sealed) return failed(fmt::format("the report is damaged: {}", sealed.error()));
  const auto text = openReport(*sealed, *key);
  if (!text) return failed(text.error());
  return {0, *text + "\n"};
}

/// The private key goes into a file of its owner's alone; the public one is printed as the preference wants it.
OwnerOutcome makeKeys(const Arguments& arguments) {
  std::string out = "private.pem";
  if (Status read = readOptions(arguments, {{"--out", &out}}); !read) return misused(read.error());
  if (::access(out.c_str(), F_OK) == 0) return failed(fmt::format("{} is there already", out));
  const auto key = seal::RsaKey::generate(reportKeyBits);
  const std::string pem = key.privatePem();
  if (Status written = seal::makeOnce(out, pem, 0600); !written) return failed(written.error());
  const auto kept = seal::readSmallFile(out);
  if (!kept || *kept != pem) return failed(fmt::format("{} was made by another program meanwhile", out));
  return {0, base64Encode(key.publicDer()) + "\n"};
}

}  // namespace

bool isOwnerCommand(const Arguments& arguments) {
  return !arguments.empty() && (arguments.front() == "report" || arguments.front() == "keygen");
}

OwnerOutcome runOwnerCommand(const Arguments& arguments) {
  if (arguments.front() == "keygen") return makeKeys({arguments.begin() + 1, arguments.end()});
  const std::string verb = arguments.size() > 1 ? arguments[1] : "";
  if (verb == "list") return listReports({arguments.begin() + 2, arguments.end()});
  if (verb == "show") return showReport({arguments.begin() + 2, arguments.end()});
  return misused("report needs \"list\" or \"show\"");
}

}  // namespace vorlu::refserver
