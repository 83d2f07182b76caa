#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/resources.h"

namespace veyla {

/// The files of resources/ by name, as they were when the program was built.
const std::map<std::string_view, std::string_view>& embeddedResources();

/// The files that are part of the program.
class EmbeddedResources : public Resources {
 public:
  std::optional<std::string> read(std::string_view name, std::string_view type) const override {
    const auto& files = embeddedResources();
    const auto found = files.find(std::string(name).append(".").append(type));
    return found == files.end() ? std::nullopt : std::optional(std::string(found->second));
  }
};

}  // namespace veyla
