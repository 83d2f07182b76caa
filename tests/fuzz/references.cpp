#include <cmath>

#include "apps/cli/reference.h"
#include "platform/linux/recording_source.h"
#include "tests/fuzz/fuzz.h"

/// What a reference says of any span is a number that can have been measured, or nothing.
void veyla::fuzz(std::string_view input) {
  Choices choices(input);
  const double from = choices.next<std::int16_t>();
  const double to = from + choices.next<std::uint16_t>();
  const std::string file = fileOf(input.substr(input.size() - choices.left()));
  try {
    const Reference reference(file);
    for (const auto& mean : {reference.heartrate(from, to), reference.heartratePerTime(from, to),
                             reference.spo2(from, to)}) {
      must(!mean || (std::isfinite(*mean) && *mean > 0), "a mean of what was measured");
    }
    must(reference.heartrate(from, to).has_value() ||
             !reference.heartratePerTime(from, to).has_value(),
         "rows count by their time only where there are any");
  } catch (const InputError& error) {
    must(std::string_view(error.what()).find('\n') == std::string_view::npos, "one line");
  }
}
