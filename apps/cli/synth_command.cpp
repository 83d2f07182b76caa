#include "apps/cli/synth_command.h"

#include <charconv>
#include <cmath>
#include <filesystem>
#include <functional>

#include "apps/cli/decimal.h"
#include "apps/cli/exit_status.h"
#include "apps/cli/progress_bar.h"
#include "apps/cli/tell.h"
#include "platform/format.h"
#include "platform/linux/names.h"
#include "platform/linux/output_file.h"
#include "platform/linux/synthetic_finger.h"
#include "platform/linux/videos.h"

namespace veyla {

namespace {

using ColourAt = std::function<ChannelMeans(double time)>;

void requireRange(const char* name, double value, const NumberRange& range) {
  if (range.holds(value)) return;
  std::string text = std::string("--") + name + ": ";
  if (std::isfinite(value)) {
    appendDecimal(text, value);
    text += " is out of range; give ";
  } else {
    text += "not a finite number; give ";
  }
  throw UsageError(text + range.text());
}

void requireRanges(const SynthOptions& options) {
  if (options.output.empty()) throw UsageError("no output named; give a file such as finger.mp4");
  requireRange("bpm", options.bpm, SynthOptions::rates);
  requireRange("spo2", options.spo2, SynthOptions::saturations);
  requireRange("seconds", options.seconds.value_or(1), SynthOptions::lengths);
  requireRange("fps", options.fps, SynthOptions::frameRates);
  requireRange("size: width", static_cast<double>(options.width), SynthOptions::widths);
  requireRange("size: height", static_cast<double>(options.height), SynthOptions::heights);
  requireRange("noise", options.noise, SynthOptions::noises);
  requireRange("motion", options.motion, SynthOptions::motions);
}

bool isSeries(const std::string& path) { return endingOf(path) == ".csv"; }

void writeSeries(const SynthOptions& options, const ColourAt& colourAt, std::int64_t frames) {
  const auto rounded = [](double value) { return std::round(value * 1000) / 1000; };
  OutputFile output(options.output);
  ProgressBar bar("Drawing");
  output.write("time,R,G,B\n");
  for (std::int64_t frame = 0; frame < frames; ++frame) {
    bar.show(static_cast<std::size_t>(frame), static_cast<std::size_t>(frames));
    const double time = static_cast<double>(frame) / options.fps;
    const ChannelMeans means = seriesMeans(colourAt(time), options.noise, options.seed, frame);
    std::string row;
    appendDecimal(row, rounded(1000 * time));
    for (const double value : {means.red, means.green, means.blue}) {
      row += ',';
      appendDecimal(row, value);
    }
    output.write(row += '\n');
  }
  output.commit();
}

void writeVideo(const SynthOptions& options, const ColourAt& colourAt, std::int64_t frames) {
  const std::size_t width = options.width + options.width % 2;
  const std::size_t height = options.height + options.height % 2;
  const auto video = videos().create(options.output, {width, height, options.fps, options.noise});
  const FingerPainter painter(width, height, options.noise, options.seed);
  VideoFrame frame(width, height);
  ProgressBar bar("Drawing");
  for (std::int64_t index = 0; index < frames; ++index) {
    bar.show(static_cast<std::size_t>(index), static_cast<std::size_t>(frames));
    painter.paint(colourAt(static_cast<double>(index) / options.fps), index, frame);
    video->write(frame);
  }
  video->finish();
}

/// What was written, and what to do with it.
std::string told(const SynthOptions& options, double seconds) {
  std::string text = "Saved ";
  appendDecimal(text, std::round(1000 * seconds) / 1000);
  text += " s of a fingertip";
  std::error_code unknown;
  const auto bytes = static_cast<double>(std::filesystem::file_size(options.output, unknown));
  // A pipe has none.
  if (!unknown && bytes < 1e6) text += formatText(", %.0f KB,", std::ceil(bytes / 1e3));
  if (!unknown && bytes >= 1e6) text += formatText(", %.1f MB,", bytes / 1e6);
  return text + " in " + printable(options.output) + "; see veyla measure " +
         shellWord(options.output);
}

/// The last row is a frame of its own.
std::int64_t framesOf(const ColourTrack& track, double fps) {
  return static_cast<std::int64_t>(std::floor(track.duration() * fps + 1e-6)) + 1;
}

}  // namespace

void setSize(SynthOptions& options, const std::string& text) {
  const char* const end = text.data() + text.size();
  const auto width = std::from_chars(text.data(), end, options.width);
  const bool separated = width.ec == std::errc() && width.ptr != end && *width.ptr == 'x';
  const auto height = std::from_chars(separated ? width.ptr + 1 : end, end, options.height);
  if (!separated || height.ec != std::errc() || height.ptr != end) {
    throw UsageError("--size: \"" + text + "\" is no size; give it as in 640x480");
  }
}

double drawRecording(const SynthOptions& options) {
  requireRanges(options);
  constexpr double defaultSeconds = 30;
  std::int64_t frames = framesIn(options.seconds.value_or(defaultSeconds), options.fps);
  ColourAt colourAt;
  if (options.from) {
    const auto track = std::make_shared<ColourTrack>(*options.from);
    if (!options.seconds) frames = framesOf(*track, options.fps);
    colourAt = [track](double time) { return track->at(time); };
  } else {
    FingerOptions finger;
    finger.bpm = options.bpm;
    finger.spo2 = options.spo2;
    finger.motion = options.motion;
    finger.seed = options.seed;
    colourAt = [generated = SyntheticFinger(finger)](double time) { return generated.at(time); };
  }
  complainWhenStopped("while drawing; " + options.output + " is not written");
  if (isSeries(options.output)) {
    writeSeries(options, colourAt, frames);
  } else {
    writeVideo(options, colourAt, frames);
  }
  return static_cast<double>(frames) / options.fps;
}

ExitStatus runSynth(const SynthOptions& options) {
  return exitStatusOf([&] {
    const std::string text = told(options, drawRecording(options));
    const bool isTold = writes([&] { tell(text); }, "done, but ");
    return isTold ? ExitStatus::done : ExitStatus::unwritableData;
  });
}

}  // namespace veyla
