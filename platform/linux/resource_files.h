#pragma once

#include <filesystem>

#include "platform/portable/embedded_resources.h"

namespace veyla {

/// The three settings from a folder of the user's, everything else from the program. Settings that
/// the folder lacks are missing: they are not made up for by those in the program.
class FolderResources : public Resources {
 public:
  explicit FolderResources(std::filesystem::path folder);

  std::optional<std::string> read(std::string_view name, std::string_view type) const override;

 private:
  std::filesystem::path folder_;
  EmbeddedResources embedded_;
};

}  // namespace veyla
