#include "platform/linux/ffmpeg_source.h"
#include "tests/fuzz/fuzz.h"
#include "tests/linux/recordings.h"

namespace {

/// From a moment on; nothing of a video that is refused.
veyla::PlayedRecording played(const std::string& path, double from = 0) {
  try {
    veyla::FfmpegSource source(path, from);
    return veyla::play(source);
  } catch (const veyla::InputError& error) {
    return {{}, {}, error.what()};
  }
}

}  // namespace

/// Whatever a video holds, its frames have one size and times that go on, the same each time.
void veyla::fuzz(std::string_view input) {
  const std::string file = fileOf(input);
  const PlayedRecording whole = played(file);
  must(whole.remark.find('\n') == std::string::npos, "one line");
  must(!testing::Test::HasFailure(), "frames of the low preset");
  for (std::size_t i = 0; i < whole.times.size(); ++i) {
    const double step = whole.times[i] - (i == 0 ? 0 : whole.times[i - 1]);
    must(step >= 0 && step <= (i == 0 ? 0 : longestStepBetweenFrames), "time goes on, from 0");
  }
  if (whole.times.size() < 2) return;
  const double middle = whole.times[whole.times.size() / 2];
  const PlayedRecording later = played(file, middle);
  must(!later.times.empty() && later.times.front() <= middle, "a frame for the moment");
  must(later.times.size() <= whole.times.size() &&
           std::equal(later.times.rbegin(), later.times.rend(), whole.times.rbegin()),
       "the frames from there on");
}
