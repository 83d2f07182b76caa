#include "platform/linux/series_source.h"
#include "tests/fuzz/fuzz.h"

/// A series that is taken has its rows in time and in range, and each of them becomes a frame.
void veyla::fuzz(std::string_view input) {
  const std::string file = fileOf(input);
  try {
    SeriesSource source(file);
    SeriesReader reader(file);
    double before = 0;
    std::size_t frames = 0;
    for (; const auto row = reader.next(); ++frames) {
      must(source.advance(), "a frame for each row");
      must(frames > 0 || source.time() == 0, "time begins at 0");
      must(source.time() >= before && source.time() - before <= longestStepBetweenFrames * 1.001,
           "time goes on, by at most the longest step");
      before = source.time();
      const FrameSample& colours = row->colours;
      for (const float colour : {colours.red, colours.green, colours.blue, colours.hr}) {
        must(colour >= 0 && colour <= 255, "colours are in their range");
      }
    }
    must(frames > 0 && !source.advance(), "a frame for each row and no more");
  } catch (const InputError& error) {
    must(std::string_view(error.what()).find('\n') == std::string_view::npos, "one line");
  }
}
