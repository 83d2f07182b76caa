#pragma once

#include <string>

namespace veyla {

/// Runs the gnuplot program on a script and returns what it wrote. Throws `OutputError` when it is
/// missing or fails.
std::string runGnuplot(const std::string& script);

}  // namespace veyla
