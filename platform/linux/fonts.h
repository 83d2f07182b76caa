#pragma once

#include <string>

namespace veyla {

/// The text with a "?" for each character that no font of this machine has: what draws letters
/// would put something in their place that may be as large as the picture.
std::string drawable(const std::string& text);

}  // namespace veyla
