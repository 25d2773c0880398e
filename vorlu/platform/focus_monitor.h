#pragma once

#include <optional>

namespace vorlu {

/// Stands for DNDSAuxiliaryStateMonitor.
class FocusMonitor {
 public:
  virtual ~FocusMonitor() = default;
  /// Whether the screen is shared or mirrored; nothing without the framework.
  virtual std::optional<bool> screenShared() = 0;
};

}  // namespace vorlu
