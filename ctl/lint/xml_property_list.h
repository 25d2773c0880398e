#pragma once

#include <optional>
#include <string_view>

#include "ctl/lint/finding.h"

namespace vorlu::ctl {

/// Whether a file's first bytes are those of an XML document, in UTF-8 or UTF-16.
bool looksLikeXml(std::string_view bytes);

/// Reads an XML property list with the place of each key and value. Nothing, with one error that names the place, when
/// it is none.
std::optional<LocatedValue> readXmlPropertyList(std::string_view bytes, Findings& findings);

}  // namespace vorlu::ctl
