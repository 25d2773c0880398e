#pragma once

#include <string>
#include <utility>

#include "vorlu/state/site.h"

namespace vorlu {

struct Vorlu;

/// An opened text of the site; a text that can't be opened ends the run with 1.
std::string decryptString(Vorlu& vorlu, SiteText text);

/// The header by which a bearer of `token` shows itself: the site's prefix, directly followed by the token.
std::pair<std::string, std::string> authorizationHeader(Vorlu& vorlu, const std::string& token);

}  // namespace vorlu
