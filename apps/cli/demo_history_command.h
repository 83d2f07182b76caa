#pragma once

#include <cstdint>
#include <string>

#include "apps/cli/exit_status.h"

namespace veyla {

/// `veyla demo-history`: random entries, for trying charts and lists.
struct DemoHistoryOptions {
  static constexpr std::int32_t mostDays = 3650;

  /// Up to today, 1 to `mostDays`.
  std::int32_t days = 90;
  /// A new or an empty folder: random entries must not mix with measurements. Empty for one beside
  /// the user's own, "veyla-demo".
  std::string dataFolder;
};

ExitStatus runDemoHistory(const DemoHistoryOptions& options);

}  // namespace veyla
