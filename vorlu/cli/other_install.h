#pragma once

#include <optional>
#include <string>

#include "vorlu/server/blueprint.h"

namespace vorlu {

struct Vorlu;

/// The app that another agent, or this one, was asked to install. It is looked up in the local copy of the catalog;
/// this run's catalog and selection stay as they are.
struct InstallSubject {
  std::string name;                    ///< what the catalog calls it, else the identifier, else "another App"
  std::optional<AppBlueprints> entry;  ///< nothing when the catalog doesn't know it
};
InstallSubject installSubject(Vorlu& vorlu, const std::string& identifier);

}  // namespace vorlu
