#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/linux/bgra_frame.h"
#include "platform/linux/recording_source.h"
#include "platform/linux/video_frame.h"

namespace veyla {

/// Mean colours of a frame, 0 to 255 each, with fractions.
struct ChannelMeans {
  double red = 0;
  double green = 0;
  double blue = 0;
};

/// How a generated fingertip behaves.
struct FingerOptions {
  /// Beats per minute, 20 to 300.
  double bpm = 72;
  /// Per cent, 50 to 100. What the estimate on noise-free colours gives, to about half a per cent;
  /// above 99.5 it is that, since a red channel without any pulse has no rate.
  double spo2 = 97;
  /// Standard deviation of one pixel's noise, in steps of 8-bit samples, 0 to 50.
  double noise = 1;
  /// Strength of bursts of motion, 0 (none) to 10; each unit takes up to 1 % of the light.
  double motion = 0;
  /// Swing of the level with the breath, as a part of the pulse's; the pulse's own size swings by
  /// as much.
  double breathing = 0.1;
  /// Swing of the instantaneous rate with the breath, as a part of the rate. Over whole breaths it
  /// averages out; the beats never stray from an even rhythm by more than this part of two thirds
  /// of a second.
  double rateVariation = 0.01;
  /// The same seed gives the same fingertip at every run.
  std::uint64_t seed = 1;
};

/// A fingertip over lens and light as colours over time.
///
/// Blood absorbs light, so brightness falls at each systole, with the shape of a
/// photoplethysmogram: a steep fall, a slower return, and the dicrotic notch. Pulse, breath and
/// their variation move all channels along one direction, so that the ratios between the channels'
/// swings, from which SpO2 is estimated, are the same over every window.
class SyntheticFinger {
 public:
  explicit SyntheticFinger(const FingerOptions& options);

  /// Without noise. `time` in seconds, 0 or more.
  ChannelMeans at(double time) const;

 private:
  double phaseAt(double time) const;
  double motionAt(double time) const;

  FingerOptions options_;
  ChannelMeans level_;
  ChannelMeans swing_;
  double breathPhase_;
  /// The pulse's brightness over one beat: 0 at systole, 1 before the next.
  std::vector<double> pulse_;
};

/// Mean colours over time out of a recorded series, on straight lines between its rows.
class ColourTrack {
 public:
  /// Keeps the whole series. Throws `InputError`.
  explicit ColourTrack(const std::string& path);

  /// `time` in seconds from the first row; the first and last rows hold before and after. Calls
  /// with rising times are the quick ones.
  ChannelMeans at(double time);
  /// From the first row to the last, in seconds.
  double duration() const { return times_.back(); }

 private:
  std::vector<double> times_;
  std::vector<ChannelMeans> colours_;
  std::size_t position_ = 0;
};

/// The random numbers that samples are drawn with, in tables that are a good deal longer than a
/// row: every row of every frame starts at its own place.
class SampleNoise {
 public:
  /// A row is at most `width` long; `noise` as in `FingerOptions`.
  SampleNoise(std::size_t width, double noise, std::uint64_t seed);

  /// A row's, from the place that `row` chooses; in steps of 1/256.
  const std::int16_t* gaussian(std::uint64_t row) const;
  /// Every fraction equally often, in random order.
  const std::int16_t* dither(std::uint64_t row) const;

 private:
  std::vector<std::int16_t> gaussian_;
  std::vector<std::int16_t> dither_;
};

/// Draws what a camera shows of a fingertip of a given mean colour: a hot spot where the light
/// comes in, a gradient over the frame, noise of each sample, and whole 8-bit steps.
///
/// The mean over a frame follows the colour with its fractions, since rounding is dithered and both
/// the gradient and the noise shrink where a channel has no room left below 0 or above 255, as they
/// do on a sensor.
class FingerPainter {
 public:
  /// `noise` as in `FingerOptions`. Builds its tables once.
  FingerPainter(std::size_t width, std::size_t height, double noise, std::uint64_t seed);

  /// Draws frame number `index`, on which the noise depends, into `frame` of the painter's size.
  void paint(const ChannelMeans& colour, std::int64_t index, BgraFrame& frame) const;
  /// The same finger as a video's frame, whose noise is that of samples rather than of pixels;
  /// both sizes even.
  void paint(const ChannelMeans& colour, std::int64_t index, VideoFrame& frame) const;

 private:
  std::size_t width_;
  std::size_t height_;
  double noise_;
  std::uint64_t seed_;
  SampleNoise samples_;
  /// How far each pixel lies above or below the mean, as parts of the relief; 0 on average.
  std::vector<std::int16_t> relief_;
  /// Of each square of four.
  std::vector<std::int16_t> coarseRelief_;
};

/// The generated fingertip as a recording of pixel frames at the size of the low preset.
class SyntheticSource : public RecordingSource {
 public:
  /// `seconds` of frames, at least one; `framesPerSecond` above 0.
  SyntheticSource(const FingerOptions& options, double seconds, double framesPerSecond);

  bool advance() override;
  double time() const override { return timeOf(index_); }
  std::optional<double> nextTime() const override;
  void deliver(SampleBufferDelegate& delegate) override;

 private:
  double timeOf(std::int64_t index) const { return static_cast<double>(index) / framesPerSecond_; }

  SyntheticFinger finger_;
  FingerPainter painter_;
  double framesPerSecond_;
  std::int64_t frameCount_;
  std::int64_t index_ = -1;
  BgraFrame frame_{lowPresetWidth, lowPresetHeight};
};

/// The generated fingertip as a colour series, without pixels: `SyntheticFinger`'s means with the
/// noise of a frame's mean, to three decimals, as the program writes them into a file.
class SyntheticSeries : public RecordingSource {
 public:
  SyntheticSeries(const FingerOptions& options, double seconds, double framesPerSecond);

  bool advance() override;
  double time() const override { return timeOf(index_); }
  std::optional<double> nextTime() const override;
  void deliver(SampleBufferDelegate& delegate) override;

 private:
  double timeOf(std::int64_t index) const { return static_cast<double>(index) / framesPerSecond_; }

  SyntheticFinger finger_;
  FingerOptions options_;
  double framesPerSecond_;
  std::int64_t frameCount_;
  std::int64_t index_ = -1;
};

/// The means that a series holds of a frame of this colour: with noise, within 0 to 255, to three
/// decimals. Pixels' own noise would average out to nothing; what is left in recordings is common
/// to all of them, such as the light's.
ChannelMeans seriesMeans(const ChannelMeans& colour, double noise, std::uint64_t seed,
                         std::int64_t frame);

/// How many frames fall into `seconds`, the one at 0 included and at least one.
std::int64_t framesIn(double seconds, double framesPerSecond);

/// A number in [0, 1) that depends on nothing but its arguments.
double randomAt(std::uint64_t seed, std::uint64_t position);
/// A normally distributed number of mean 0 and deviation 1 likewise.
double gaussianAt(std::uint64_t seed, std::uint64_t position);

}  // namespace veyla
