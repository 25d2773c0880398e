#pragma once

#include <optional>
#include <string>

#include "vorlu/detection/update_state.h"
#include "vorlu/install/install_progress.h"
#include "vorlu/platform/platform.h"
#include "vorlu/server/catalog.h"
#include "vorlu/server/current_app.h"
#include "vorlu/server/key_material.h"
#include "vorlu/state/log.h"
#include "vorlu/state/preferences.h"
#include "vorlu/state/run_data.h"
#include "vorlu/state/run_modes.h"
#include "vorlu/state/site.h"

namespace vorlu {

/// One run of the agent: what lives as long as the process, by owner. It has no behaviour of its own.
struct Vorlu {
  Vorlu(Platform& thePlatform, const Site& theSite)
      : platform(thePlatform),
        site(theSite),
        log(thePlatform, modes.runStage),
        preferences(thePlatform, log),
        runData(thePlatform.files),
        startedAt(thePlatform.clock.now()) {}
  Vorlu(const Vorlu&) = delete;
  Vorlu& operator=(const Vorlu&) = delete;

  Platform& platform;
  const Site& site;
  RunModes modes;
  Log log;
  Preferences preferences;
  RunData runData;
  const Seconds startedAt;  ///< when this run began
  KeyMaterial keys;
  Catalog catalog;
  CurrentApp currentApp;
  UpdateState updates;
  InstallProgress progress;
  std::optional<std::string> consoleUser;  ///< name of the console user, once asked
};

}  // namespace vorlu
