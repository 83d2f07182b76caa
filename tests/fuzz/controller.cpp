#include "tests/fuzz/fuzz.h"
#include "tests/support/random_walk.h"

/// After any order of taps, frames, interruptions and animations the screen makes sense.
void veyla::fuzz(std::string_view input) {
  Choices choices(input);
  // An event takes three choices or so.
  const int events = static_cast<int>(std::min<std::size_t>(input.size() / 3, 100));
  const std::string fault =
      RandomWalk([&](std::size_t count) { return choices.pick(count); }).run(events);
  must(fault.empty(), fault);
}
