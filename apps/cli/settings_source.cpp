#include "apps/cli/settings_source.h"

#include <filesystem>

#include "acquisition/settings.h"
#include "apps/cli/complain.h"
#include "platform/linux/recording_source.h"
#include "platform/linux/resource_files.h"
#include "platform/linux/settings_check.h"
#include "platform/portable/json.h"

namespace veyla {

SettingsSource::SettingsSource(const std::string& folder, const std::string& device) {
  if (folder.empty()) {
    resources_ = std::make_unique<EmbeddedResources>();
    return;
  }
  resources_ = std::make_unique<FolderResources>(folder);
  const auto problems = checkSettings(*resources_, NlohmannJsonParser(), Utils::profileOf(device));
  // A line begins with the name of its file.
  const auto placed = [&](const SettingsProblem& problem) {
    return (std::filesystem::path(folder) / problem.line).string();
  };
  for (const auto& problem : problems) {
    if (problem.kind != SettingsProblem::Kind::warning) throw InputError(placed(problem));
  }
  for (const auto& problem : problems) complain("warning: " + placed(problem));
}

}  // namespace veyla
