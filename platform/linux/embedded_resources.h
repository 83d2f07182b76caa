#pragma once

#include <map>
#include <string_view>

namespace veyla {

/// The files of resources/ by name, as they were when the program was built.
const std::map<std::string_view, std::string_view>& embeddedResources();

}  // namespace veyla
