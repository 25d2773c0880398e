#pragma once

#include <string>

namespace vorlu::reference {

/// A configuration profile for a first group of Macs: weekly questions in working hours, three deferrals, nobody
/// disturbed in a call.
std::string sampleProfile();
/// Its settings alone, as they lie on a Mac.
std::string samplePreferences();

}  // namespace vorlu::reference
