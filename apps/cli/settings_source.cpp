#include "apps/cli/settings_source.h"

#include "acquisition/settings.h"
#include "apps/cli/complain.h"
#include "platform/linux/json.h"
#include "platform/linux/recording_source.h"
#include "platform/linux/resource_files.h"
#include "platform/linux/settings_check.h"

namespace veyla {

SettingsSource::SettingsSource(const std::string& folder, const std::string& device) {
  if (folder.empty()) {
    resources_ = std::make_unique<EmbeddedResources>();
    return;
  }
  resources_ = std::make_unique<FolderResources>(folder);
  const std::string profile = Utils::profileOf(device);
  for (const auto& problem : checkSettings(*resources_, NlohmannJsonParser(), profile)) {
    if (problem.kind != SettingsProblem::Kind::warning) throw InputError(problem.line);
    complain("warning: " + problem.line);
  }
}

}  // namespace veyla
