#pragma once

#include <stdexcept>

namespace veyla {

/// A store that cannot be opened: one line that names the file, the reason and the way out.
class StoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace veyla
