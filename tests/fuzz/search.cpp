#include "tests/fuzz/fuzz.h"

/// What the search calls.
extern "C" int LLVMFuzzerTestOneInput(const char* bytes, std::size_t size) {
  veyla::fuzz({bytes, size});
  return 0;
}
