#pragma once

#include <string>

#include "refserver/exchange.h"

namespace vorlu::refserver {

/// "2026-01-01T00:00:00Z GET /catalog/live 200". Without the query, which may hold a signature; control characters of
/// the path are escaped.
std::string accessLine(double when, const Exchange& exchange);

}  // namespace vorlu::refserver
