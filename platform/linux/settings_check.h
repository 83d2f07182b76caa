#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/resources.h"

namespace veyla {

struct SettingsProblem {
  enum class Kind {
    /// Measures all the same.
    warning,
    /// Measuring with it would not work or not end.
    error,
    /// The file is fine and has no entry for the profile: every key reads as 0, and nothing can be
    /// measured.
    noEntry,
  };

  Kind kind;
  /// Names the file, the key, the reason and the way out.
  std::string line;

  bool operator==(const SettingsProblem&) const = default;
};

/// What is wrong with the three settings resources for a device of `profile`, in the order of the
/// files and their entries. The entry that the profile gets, its last one, is judged by the bounds
/// of measuring; what is wrong with another entry is a warning.
std::vector<SettingsProblem> checkSettings(const Resources& resources, const JsonParser& json,
                                           std::string_view profile);

}  // namespace veyla
