#include "platform/portable/json.h"

#include "tests/fuzz/fuzz.h"

/// What was read is written and read again as the same, as a resource and as what is stored.
void veyla::fuzz(std::string_view input) {
  // What is nearly too deep to be read can be too deep to be written.
  const bool isDeep = std::count_if(input.begin(), input.end(), [](char c) {
                        return c == '[' || c == '{';
                      }) > static_cast<std::ptrdiff_t>(deepestJson / 2);
  if (const auto parsed = NlohmannJsonParser().parse(input)) {
    const auto printed = NlohmannJsonWriter().prettyPrinted(*parsed);
    must(printed && NlohmannJsonParser().parse(*printed) == parsed, "a resource reads back");
    const auto written = writeJson(*parsed);
    must(written ? readJson(*written) == parsed : isDeep, "any JSON can be stored");
  }
  if (const auto stored = readJson(input)) {
    const auto written = writeJson(*stored);
    must(written || isDeep, "what is stored can be stored again");
    if (!written) return;
    const auto again = readJson(*written);
    must(again && writeJson(*again) == written, "what is stored reads back");
    must(again == stored || written->find("nan:") != std::string::npos, "bit for bit");
  }
}
