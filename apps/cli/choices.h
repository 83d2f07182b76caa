#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "apps/cli/exit_status.h"
#include "history/history_store.h"
#include "platform/linux/names.h"

namespace veyla {

/// Which of the names `text` is, in any case. Throws a `UsageError` about `option` for one that is
/// none of them.
template <class Names>
std::size_t indexIn(const Names& names, const std::string& option, const std::string& text) {
  std::string all;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (lowerCase(names[i]) == lowerCase(text)) return i;
    all += (i > 0 ? ", " : "") + std::string(names[i]);
  }
  throw UsageError(option + ": \"" + text + "\" is none of " + all);
}

/// What a label can be called on a command line: the names of the labels in their order, then
/// "none".
inline std::vector<std::string> labelChoices() {
  std::vector<std::string> choices(labelNames.begin(), labelNames.end());
  choices.emplace_back("none");
  return choices;
}

}  // namespace veyla
