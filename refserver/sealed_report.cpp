#include "refserver/sealed_report.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <optional>

#include "refserver/aes.h"
#include "vorlu/state/encoding.h"

namespace vorlu::refserver {

namespace {

constexpr std::size_t blockBytes = 16;

Result<std::string> bytesAt(const nlohmann::json& document, const char* key) {
  const auto value = document.find(key);
  if (value == document.end() || !value->is_string()) return Failure{fmt::format("{} is missing or no text", key)};
  std::optional<std::string> bytes = hexDecode(value->get_ref<const std::string&>());
  if (!bytes || bytes->empty()) return Failure{fmt::format("{} is no hexadecimal text", key)};
  return std::move(*bytes);
}

}  // namespace

Result<SealedReport> parseSealedReport(const std::string& body) {
  const auto document = nlohmann::json::parse(body, nullptr, /*allow_exceptions=*/false);
  if (!document.is_object()) return Failure{"the body is no JSON object"};
  auto data = bytesAt(document, "encrypted_data_hex");
  if (!data) return data.failure();
  auto iv = bytesAt(document, "iv_hex");
  if (!iv) return iv.failure();
  auto key = bytesAt(document, "aes_key_encrypted_hex");
  if (!key) return key.failure();
  if (data->size() % blockBytes != 0) return Failure{"encrypted_data_hex is no whole number of AES blocks"};
  if (iv->size() != blockBytes) return Failure{"iv_hex isn't 16 bytes"};
  return SealedReport{std::move(*data), std::move(*iv), std::move(*key)};
}

Result<std::string> openReport(const SealedReport& report, const seal::RsaKey& owner) {
  const auto key = owner.decrypt(report.wrappedKey);
  if (!key) return Failure{"the report isn't for this key, or its wrapped AES key is damaged"};
  const auto text = aesDecrypt(report.data, *key, report.iv);
  const auto document = text ? nlohmann::ordered_json::parse(*text, nullptr, /*allow_exceptions=*/false)
                             : nlohmann::ordered_json(nlohmann::json::value_t::discarded);
  if (document.is_discarded()) return Failure{"the report's data are damaged"};
  return document.dump(2);
}

}  // namespace vorlu::refserver
