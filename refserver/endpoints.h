#pragma once

#include <functional>
#include <string>

#include "refserver/data_folder.h"
#include "refserver/exchange.h"
#include "refserver/report_store.h"
#include "refserver/signed_url.h"
#include "seal/keys.h"
#include "seal/site_file.h"

namespace vorlu::refserver {

/// Seconds since the epoch, with their fraction.
using ClockFunction = std::function<double()>;

/// What the server answers, without a connection. Calls from several threads are safe.
class Endpoints {
 public:
  /// `keys` outlives the object.
  Endpoints(const std::string& dataFolder, seal::SiteFile site, const seal::ServerKeys& keys, ClockFunction clock);

  /// The answer; errors are a status and a JSON object with a message.
  Response answer(const Request& request) const;

 private:
  bool isMethodServed(const std::string& method) const;
  Response timestamp() const;
  Response secrets(const Request& request) const;
  Response file(const std::string& name) const;
  /// Catalogs and the manifest: whatever the inventory knows by this path.
  Response inventoried(const Request& request) const;
  Response catalog(const Request& request, const InventoryRecord& record, const char* file) const;
  Response manifest(const Request& request, const InventoryRecord& record) const;
  Result<bool> isReport(const Request& request) const;
  Response report(const Request& request) const;
  SignatureVerdict checkSignature(const Request& request, const std::string& secret, const std::string& path) const;

  DataFolder data_;
  ReportStore reports_;
  seal::SiteFile site_;
  const seal::ServerKeys& keys_;
  ClockFunction clock_;
  QueryPrefixes prefixes_;
};

}  // namespace vorlu::refserver
