#pragma once

namespace vorlu {

struct Vorlu;

/// Fetches the key material when a part of it is missing. A failure is logged; later steps catch it.
void obtainKeyMaterial(Vorlu& vorlu);

/// Fetches the key material for each keychain item that is missing; false when it can't be had. `stamped`: each success
/// is stored as `SecretsTimestamp`.
bool requireKeychainItems(Vorlu& vorlu, bool stamped = false);

}  // namespace vorlu
