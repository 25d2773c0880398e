#include "seal/keys.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <filesystem>

#include "seal/random.h"
#include "seal/small_file.h"
#include "vorlu/state/encoding.h"

namespace vorlu::seal {

namespace {

constexpr unsigned agentKeyBits = 2048;
constexpr std::size_t signingSecretBytes = 32;
constexpr mode_t ownerOnly = 0600;

std::string inFolder(const std::string& folder, const char* name) {
  return folder + "/" + name;
}

std::string firstLine(const std::string& text) {
  return text.substr(0, text.find_first_of("\r\n"));
}

/// The file's content, made by `make` first when there is none. Reading back gives every maker the winner's.
template <class Make>
Result<std::string> readOrMake(const std::string& path, Make make) {
  if (!std::filesystem::exists(path)) {
    if (Status status = makeOnce(path, make(), ownerOnly); !status) return status.failure();
  }
  return readSmallFile(path);
}

Status makeKeyFolder(const std::string& folder) {
  std::error_code error;
  const bool made = std::filesystem::create_directories(folder, error);
  if (error) return Failure{fmt::format("can't create {}: {}", folder, error.message())};
  if (made) std::filesystem::permissions(folder, std::filesystem::perms::owner_all, error);
  return success();
}

template <class T>
Result<T> namingFile(const std::string& path, Result<T> result) {
  if (result) return result;
  return Failure{fmt::format("{}: {}", path, result.error())};
}

Result<RsaKey> openOrMakeAgentKey(const std::string& folder) {
  const std::string path = inFolder(folder, privateKeyFile);
  const auto pem = readOrMake(path, [] { return RsaKey::generate(agentKeyBits).privatePem(); });
  if (!pem) return pem.failure();
  return namingFile(path, RsaKey::fromPrivatePem(*pem));
}

/// The server encrypts to the public file: one of another key would lock every agent out.
Status keepPublicHalf(const std::string& folder, const RsaKey& agent) {
  const std::string path = inFolder(folder, publicKeyFile);
  const auto pem = readOrMake(path, [&agent] { return agent.publicPem(); });
  if (!pem) return pem.failure();
  const auto stored = namingFile(path, RsaKey::fromPublicPem(*pem));
  if (!stored) return stored.failure();
  if (stored->publicDer() == agent.publicDer()) return success();
  return Failure{fmt::format("{} isn't the public half of {}", path, inFolder(folder, privateKeyFile))};
}

Result<std::string> signingSecretOf(const std::string& path, const Result<std::string>& content) {
  if (!content) return content.failure();
  std::string secret = firstLine(*content);
  if (secret.empty()) return Failure{fmt::format("{} is empty", path)};
  return secret;
}

std::string decoyLines(const Decoys& decoys) {
  std::string lines;
  for (const std::string& decoy : decoys) lines += decoy + "\n";
  return lines;
}

Result<Decoys> decoysOf(const std::string& path, const Result<std::string>& content) {
  if (!content) return content.failure();
  if (content->size() != decoyCount * (decoyLength + 1)) {
    return Failure{fmt::format("{} doesn't hold {} lines of {} characters", path, decoyCount, decoyLength)};
  }
  Decoys decoys;
  for (std::size_t i = 0; i < decoyCount; ++i) {
    decoys[i] = content->substr(i * (decoyLength + 1), decoyLength);
    if (!base64Decode(decoys[i])) return Failure{fmt::format("{}: line {} is no Base64", path, i + 1)};
  }
  return decoys;
}

}  // namespace

Result<AgentKeys> openOrMakeKeys(const std::string& folder) {
  if (Status status = makeKeyFolder(folder); !status) return status.failure();
  auto agent = openOrMakeAgentKey(folder);
  if (!agent) return agent.failure();
  if (Status status = keepPublicHalf(folder, *agent); !status) return status.failure();

  const std::string secretPath = inFolder(folder, signingSecretFile);
  auto secret = signingSecretOf(
      secretPath, readOrMake(secretPath, [] { return hexEncode(randomBytes(signingSecretBytes)) + "\n"; }));
  if (!secret) return secret.failure();

  const std::string decoysPath = inFolder(folder, decoysFile);
  auto decoys = decoysOf(decoysPath, readOrMake(decoysPath, [] { return decoyLines(makeDecoys()); }));
  if (!decoys) return decoys.failure();
  return AgentKeys{std::move(*agent), std::move(*secret), std::move(*decoys)};
}

Result<ServerKeys> readServerKeys(const std::string& folder) {
  const std::string publicPath = inFolder(folder, publicKeyFile);
  const auto pem = readSmallFile(publicPath);
  if (!pem) return pem.failure();
  auto agent = namingFile(publicPath, RsaKey::fromPublicPem(*pem));
  if (!agent) return agent.failure();

  const std::string secretPath = inFolder(folder, signingSecretFile);
  auto secret = signingSecretOf(secretPath, readSmallFile(secretPath));
  if (!secret) return secret.failure();

  const std::string decoysPath = inFolder(folder, decoysFile);
  auto decoys = decoysOf(decoysPath, readSmallFile(decoysPath));
  if (!decoys) return decoys.failure();
  return ServerKeys{std::move(*agent), std::move(*secret), std::move(*decoys)};
}

}  // namespace vorlu::seal
