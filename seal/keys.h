#pragma once

#include <string>

#include "seal/decoys.h"
#include "seal/rsa_key.h"
#include "vorlu/platform/result.h"

namespace vorlu::seal {

/// What the server knows of the agents' keys.
struct ServerKeys {
  RsaKey agent;               ///< the public half
  std::string signingSecret;  ///< text behind the signed URLs
  Decoys decoys;
};

/// What is sealed into the agent.
struct AgentKeys {
  RsaKey agent;  ///< the whole key
  std::string signingSecret;
  Decoys decoys;
};

/// The keys of `folder`; those that are absent are made, mode 0600. Builds that run at once end with the same keys. A
/// failure names the file.
Result<AgentKeys> openOrMakeKeys(const std::string& folder);

/// The server's part of `folder`, which must be complete; the private key isn't read and may be absent.
Result<ServerKeys> readServerKeys(const std::string& folder);

/// Names of the files in a key folder.
inline constexpr const char* privateKeyFile = "agent_private.pem";
inline constexpr const char* publicKeyFile = "agent_public.pem";
inline constexpr const char* signingSecretFile = "signing_secret";
inline constexpr const char* decoysFile = "decoys";

}  // namespace vorlu::seal
