#pragma once

namespace vorlu {

struct Vorlu;

/// Brings the local icons of the catalog's entries up to date: missing ones are fetched, and those whose hash differs
/// from the catalog's fetched anew. Failures are logged. After three servers in a row that can't be reached the sync
/// ends for this time. May end the run through the catalog.
void syncIcons(Vorlu& vorlu);

}  // namespace vorlu
