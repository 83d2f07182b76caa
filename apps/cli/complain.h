#pragma once

#include <iostream>
#include <string>

namespace veyla {

/// One line on standard error, under the program's name.
inline void complain(const std::string& line) { std::cerr << "veyla: " << line << std::endl; }

}  // namespace veyla
