#include "platform/linux/synthetic_finger.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "platform/linux/series_source.h"

namespace veyla {

namespace {

constexpr double largestSample = 255;
constexpr double breathsPerSecond = 0.25;
constexpr double twoPi = 2 * std::numbers::pi;

// A fingertip before a white light: red passes, green and blue hardly.
constexpr ChannelMeans systolicLevel{180, 90, 25};
/// Of brightness over a beat, in 8-bit steps: large enough for averages over few cells.
constexpr double greenSwing = 10;
constexpr double largestSpo2 = 99.5;

/// One splitmix64 step: a 64-bit mix of all bits of its argument.
constexpr std::uint64_t mixed(std::uint64_t x) {
  x += 0x9E3779B97F4A7C15U;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9U;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBU;
  return x ^ (x >> 31);
}

/// What the channels must swing by for an estimate of `spo2`: the red range r and the green range g
/// stand in 1 - spo2/100 = (r / DCred) / ((g - r) / DCblue). The blue one makes the estimate from
/// red and blue alone, with b for g - r, the same.
ChannelMeans swingFor(double spo2) {
  const double ratio = 1 - std::min(spo2, largestSpo2) / 100;
  const double redPerDifference = ratio * systolicLevel.red / systolicLevel.blue;
  const double red = greenSwing * redPerDifference / (1 + redPerDifference);
  return {red, greenSwing, greenSwing - red};
}

/// A hump on the circle of one beat, 1 at `centre`.
double hump(double phase, double centre, double sharpness) {
  return std::exp(sharpness * (std::cos(twoPi * (phase - centre)) - 1));
}

/// Brightness over one beat, scaled to 0 to 1: two humps of absorption make the systolic wave with
/// its steep rise, and a flat one after the notch the dicrotic wave. Their places and sizes give
/// the second and third harmonic 0.42 and 0.25 of the first, the median of fingertips at rest that
/// phones recorded.
std::vector<double> pulseShape() {
  constexpr std::size_t points = 2048;
  std::vector<double> shape(points);
  for (std::size_t i = 0; i < points; ++i) {
    const double phase = static_cast<double>(i) / points;
    shape[i] = -(hump(phase, 0.14, 8) + 0.9 * hump(phase, 0.28, 5) + 0.35 * hump(phase, 0.5, 5));
  }
  const auto [low, high] = std::minmax_element(shape.begin(), shape.end());
  const double bottom = *low;
  const double range = *high - *low;
  for (double& value : shape) value = (value - bottom) / range;
  return shape;
}

double clamped(double value) { return std::clamp(value, 0.0, largestSample); }

}  // namespace

double randomAt(std::uint64_t seed, std::uint64_t position) {
  constexpr double perStep = 1.0 / 9007199254740992.0;
  return static_cast<double>(mixed(mixed(seed) ^ position) >> 11) * perStep;
}

double gaussianAt(std::uint64_t seed, std::uint64_t position) {
  const double radius = std::sqrt(-2 * std::log(1 - randomAt(seed, 2 * position)));
  return radius * std::cos(twoPi * randomAt(seed, 2 * position + 1));
}

std::int64_t framesIn(double seconds, double framesPerSecond) {
  // Less a hair, so that the rounding of a product does not add a frame.
  return std::max<std::int64_t>(
      1, static_cast<std::int64_t>(std::ceil(seconds * framesPerSecond - 1e-6)));
}

SyntheticFinger::SyntheticFinger(const FingerOptions& options)
    : options_(options),
      level_(systolicLevel),
      swing_(swingFor(options.spo2)),
      breathPhase_(randomAt(options.seed, 0)),
      pulse_(pulseShape()) {}

/// Beats since the start. The breath hastens and slows them: the integral of a rate that swings.
double SyntheticFinger::phaseAt(double time) const {
  const double beatsPerSecond = options_.bpm / 60;
  const double breath = twoPi * (breathsPerSecond * time + breathPhase_);
  return beatsPerSecond *
         (time + options_.rateVariation / (twoPi * breathsPerSecond) * std::sin(breath));
}

/// The part of the light that motion takes: a burst somewhere in every five seconds.
double SyntheticFinger::motionAt(double time) const {
  if (options_.motion == 0) return 0;
  constexpr double slot = 5;
  constexpr double perUnit = 0.01;
  constexpr std::uint64_t draws = 4;
  const auto number = static_cast<std::uint64_t>(time / slot);
  const auto draw = [&](std::uint64_t i) {
    return randomAt(options_.seed + 1, draws * number + i);
  };
  const double halfLength = 0.2 + 0.5 * draw(0);
  const double centre = halfLength + (slot - 2 * halfLength) * draw(1);
  const double distance = std::abs(time - slot * static_cast<double>(number) - centre) / halfLength;
  if (distance >= 1) return 0;
  const double wobble = std::cos(twoPi * (1 + 2 * draw(2)) * distance);
  const double strength = perUnit * options_.motion * (0.3 + 0.7 * draw(3));
  return strength * (1 + std::cos(std::numbers::pi * distance)) / 2 * (1 + wobble) / 2;
}

ChannelMeans SyntheticFinger::at(double time) const {
  const double phase = phaseAt(time);
  const double position = (phase - std::floor(phase)) * static_cast<double>(pulse_.size());
  const std::size_t index = static_cast<std::size_t>(position) % pulse_.size();
  const double fraction = position - std::floor(position);
  const double pulse =
      pulse_[index] + fraction * (pulse_[(index + 1) % pulse_.size()] - pulse_[index]);

  const double breath = std::sin(twoPi * (breathsPerSecond * time + breathPhase_));
  const double swing =
      pulse * (1 + options_.breathing * breath) + options_.breathing * (1 + breath) / 2;
  const double light = 1 - motionAt(time);
  return {clamped(light * (level_.red + swing_.red * swing)),
          clamped(light * (level_.green + swing_.green * swing)),
          clamped(light * (level_.blue + swing_.blue * swing))};
}

ColourTrack::ColourTrack(const std::string& path) {
  SeriesReader reader(path);
  while (const auto row = reader.next()) {
    const FrameSample& sample = row->colours;
    times_.push_back(row->time);
    colours_.push_back({static_cast<double>(sample.red), static_cast<double>(sample.green),
                        static_cast<double>(sample.blue)});
  }
  if (times_.empty()) {
    throw InputError(path + ": no rows; give a series with a row for each frame");
  }
  const double first = times_.front();
  for (double& time : times_) time = (time - first) / 1000;
}

ChannelMeans ColourTrack::at(double time) {
  if (times_[position_] > time) position_ = 0;
  while (position_ + 1 < times_.size() && times_[position_ + 1] <= time) ++position_;
  const ChannelMeans& from = colours_[position_];
  if (position_ + 1 == times_.size() || time <= times_[position_]) return from;
  const ChannelMeans& to = colours_[position_ + 1];
  const double part = (time - times_[position_]) / (times_[position_ + 1] - times_[position_]);
  return {std::lerp(from.red, to.red, part), std::lerp(from.green, to.green, part),
          std::lerp(from.blue, to.blue, part)};
}

// Samples are computed in whole numbers, `fraction` to a step.
namespace {

constexpr int fractionBits = 8;
constexpr double fraction = 1 << fractionBits;
/// Of the relief and of the share of the noise; products stay within 31 bits.
constexpr int partBits = 14;
constexpr double part = 1 << partBits;
constexpr std::size_t tableSize = 1 << 16;

/// The largest deviation from the mean, as a part of it and of the room below white.
constexpr double largestRelief = 0.18;
constexpr double roomForRelief = 0.9;

/// What the samples of a channel or a plane are made of.
struct Swing {
  /// In steps.
  double mean;
  double relief;
  /// Of the tables' noise.
  double noise;
};

Swing swingOf(double colour, double noise) {
  const double value = clamped(colour);
  const double relief = std::min(largestRelief * value, roomForRelief * (largestSample - value));
  // Beyond three deviations there is hardly any noise to cut off.
  const double room = std::min(value - relief, largestSample - value - relief) / 3;
  return {value, relief, noise > 0 ? std::clamp(room / noise, 0.0, 1.0) : 0};
}

/// The plane that weights the channels so; `noise` says by how much it averages their noise.
Swing plane(double black, const ChannelMeans& weights, const std::array<Swing, 3>& channels,
            double noise) {
  const auto& [red, green, blue] = channels;
  return {black + weights.red * red.mean + weights.green * green.mean + weights.blue * blue.mean,
          weights.red * red.relief + weights.green * green.relief + weights.blue * blue.relief,
          noise * std::hypot(weights.red * red.noise, weights.green * green.noise,
                             weights.blue * blue.noise)};
}

/// Brightness, blue, red.
std::array<Swing, 3> planesOf(const std::array<Swing, 3>& channels, const ColourMatrix& matrix) {
  constexpr double black = 16;
  constexpr double luma = 219 / largestSample;
  constexpr double grey = 128;
  constexpr double chroma = 224 / largestSample / 2;
  constexpr double ofFourPixels = 0.5;
  const double green = 1 - matrix.red - matrix.blue;
  const double blueLess = chroma / (1 - matrix.blue);
  const double redLess = chroma / (1 - matrix.red);
  return {plane(black, {luma * matrix.red, luma * green, luma * matrix.blue}, channels, 1),
          plane(grey, {-blueLess * matrix.red, -blueLess * green, chroma}, channels, ofFourPixels),
          plane(grey, {chroma, -redLess * green, -redLess * matrix.blue}, channels, ofFourPixels)};
}

/// One row of samples, each `distance` behind the one before. Narrow numbers are many at a time.
template <std::size_t distance>
void paintRow(const Swing& swing, const std::int16_t* reliefs, const SampleNoise& samples,
              std::uint64_t row, std::size_t width, std::uint8_t* output) {
  constexpr std::int32_t half = 1 << (partBits - 1);
  constexpr std::int32_t white = static_cast<std::int32_t>(largestSample) << fractionBits;
  const auto mean = static_cast<std::int32_t>(std::lround(swing.mean * fraction));
  const auto relief = static_cast<std::int16_t>(std::lround(swing.relief * fraction));
  const auto noise = static_cast<std::int16_t>(std::lround(swing.noise * part));
  const std::int16_t* const noises = samples.gaussian(row);
  const std::int16_t* const dithers = samples.dither(row);
  for (std::size_t x = 0; x < width; ++x) {
    const std::int32_t deviation = (relief * reliefs[x] + noise * noises[x] + half) >> partBits;
    const std::int32_t value = mean + deviation + dithers[x];
    output[distance * x] = static_cast<std::uint8_t>(std::clamp(value, 0, white) >> fractionBits);
  }
}

/// Parts of `largest`, centred on 0.
std::vector<std::int16_t> quantized(std::vector<double> values, double largest) {
  double sum = 0;
  for (const double value : values) sum += value;
  const double mean = sum / static_cast<double>(values.size());
  std::vector<std::int16_t> result(values.size());
  std::transform(values.begin(), values.end(), result.begin(), [&](double value) {
    return static_cast<std::int16_t>(
        std::clamp(std::lround((value - mean) * largest), -32767L, 32767L));
  });
  return result;
}

std::vector<std::int16_t> reliefOf(std::size_t width, std::size_t height) {
  std::vector<double> values(width * height);
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      const double across = (static_cast<double>(x) + 0.5) / static_cast<double>(width);
      const double down = (static_cast<double>(y) + 0.5) / static_cast<double>(height);
      const double dx = across - 0.3;
      const double dy = down - 0.4;
      const double hotSpot = std::exp(-(dx * dx + dy * dy) / (2 * 0.3 * 0.3));
      values[y * width + x] = hotSpot - 0.25 * across - 0.15 * down;
    }
  }
  const auto [low, high] = std::minmax_element(values.begin(), values.end());
  // Both sides of the mean stay within 1.
  return quantized(values, part / (*high - *low));
}

}  // namespace

SampleNoise::SampleNoise(std::size_t width, double noise, std::uint64_t seed)
    : gaussian_(tableSize), dither_(tableSize + width) {
  std::vector<double> values(tableSize);
  for (std::size_t i = 0; i < tableSize; ++i) values[i] = gaussianAt(seed, i);
  gaussian_ = quantized(values, noise * fraction);
  for (std::size_t i = 0; i < tableSize; ++i) {
    dither_[i] = static_cast<std::int16_t>(i % static_cast<std::size_t>(fraction));
  }
  for (std::size_t i = tableSize - 1; i > 0; --i) {
    const auto j = static_cast<std::size_t>(randomAt(seed + 1, i) * static_cast<double>(i + 1));
    std::swap(dither_[i], dither_[j]);
  }
  // A row may start anywhere in the tables and run on from their start.
  gaussian_.resize(tableSize + width);
  for (std::size_t i = 0; i < width; ++i) {
    gaussian_[tableSize + i] = gaussian_[i % tableSize];
    dither_[tableSize + i] = dither_[i % tableSize];
  }
}

const std::int16_t* SampleNoise::gaussian(std::uint64_t row) const {
  return gaussian_.data() + row % tableSize;
}

const std::int16_t* SampleNoise::dither(std::uint64_t row) const {
  return dither_.data() + (row >> 32) % tableSize;
}

FingerPainter::FingerPainter(std::size_t width, std::size_t height, double noise,
                             std::uint64_t seed)
    : width_(width),
      height_(height),
      noise_(noise),
      seed_(mixed(seed + 2)),
      samples_(width, noise, seed_),
      relief_(reliefOf(width, height)),
      coarseRelief_(reliefOf(width / 2, height / 2)) {}

void FingerPainter::paint(const ChannelMeans& colour, std::int64_t index, BgraFrame& frame) const {
  const std::array<Swing, 3> channels{swingOf(colour.blue, noise_), swingOf(colour.green, noise_),
                                      swingOf(colour.red, noise_)};
  std::uint64_t row = mixed(seed_ ^ static_cast<std::uint64_t>(index));
  for (std::size_t y = 0; y < height_; ++y) {
    std::uint8_t* pixels = frame.baseAddress() + y * frame.bytesPerRow();
    for (std::size_t c = 0; c < channels.size(); ++c) {
      row = mixed(row);
      paintRow<BgraFrame::bytesPerPixel>(channels[c], relief_.data() + y * width_, samples_, row,
                                         width_, pixels + c);
    }
    for (std::size_t x = 0; x < width_; ++x) {
      pixels[BgraFrame::bytesPerPixel * x + channels.size()] = 255;
    }
  }
}

void FingerPainter::paint(const ChannelMeans& colour, std::int64_t index, VideoFrame& frame) const {
  const auto swings = planesOf(
      {swingOf(colour.red, noise_), swingOf(colour.green, noise_), swingOf(colour.blue, noise_)},
      VideoFrame::matrixFor(height_));
  std::uint64_t row = mixed(seed_ ^ static_cast<std::uint64_t>(index));
  for (std::size_t p = 0; p < swings.size(); ++p) {
    auto& [width, height, samples] = frame.planes()[p];
    const std::vector<std::int16_t>& relief = p == 0 ? relief_ : coarseRelief_;
    for (std::size_t y = 0; y < height; ++y) {
      row = mixed(row);
      paintRow<1>(swings[p], relief.data() + y * width, samples_, row, width,
                  samples.data() + y * width);
    }
  }
}

SyntheticSource::SyntheticSource(const FingerOptions& options, double seconds,
                                 double framesPerSecond)
    : finger_(options),
      painter_(lowPresetWidth, lowPresetHeight, options.noise, options.seed),
      framesPerSecond_(framesPerSecond),
      frameCount_(framesIn(seconds, framesPerSecond)) {}

bool SyntheticSource::advance() {
  if (index_ + 1 >= frameCount_) return false;
  ++index_;
  return true;
}

std::optional<double> SyntheticSource::nextTime() const {
  if (index_ + 1 >= frameCount_) return std::nullopt;
  return timeOf(index_ + 1);
}

void SyntheticSource::deliver(SampleBufferDelegate& delegate) {
  painter_.paint(finger_.at(time()), index_, frame_);
  delegate.captureOutput(frame_);
}

ChannelMeans seriesMeans(const ChannelMeans& colour, double noise, std::uint64_t seed,
                         std::int64_t frame) {
  constexpr double partOfPixelNoise = 0.03;
  constexpr std::uint64_t channels = 3;
  std::uint64_t position = channels * static_cast<std::uint64_t>(frame);
  const auto noisy = [&](double mean) {
    const double value = mean + partOfPixelNoise * noise * gaussianAt(seed + 3, position++);
    return std::round(std::clamp(value, 0.0, 255.0) * 1000) / 1000;
  };
  ChannelMeans means;
  means.red = noisy(colour.red);
  means.green = noisy(colour.green);
  means.blue = noisy(colour.blue);
  return means;
}

SyntheticSeries::SyntheticSeries(const FingerOptions& options, double seconds,
                                 double framesPerSecond)
    : finger_(options),
      options_(options),
      framesPerSecond_(framesPerSecond),
      frameCount_(framesIn(seconds, framesPerSecond)) {}

bool SyntheticSeries::advance() {
  if (index_ + 1 >= frameCount_) return false;
  ++index_;
  return true;
}

std::optional<double> SyntheticSeries::nextTime() const {
  if (index_ + 1 >= frameCount_) return std::nullopt;
  return timeOf(index_ + 1);
}

void SyntheticSeries::deliver(SampleBufferDelegate& delegate) {
  const ChannelMeans means = seriesMeans(finger_.at(time()), options_.noise, options_.seed, index_);
  FrameSample sample;
  sample.red = static_cast<float>(means.red);
  sample.green = static_cast<float>(means.green);
  sample.blue = static_cast<float>(means.blue);
  sample.hr = sample.red;
  delegate.captureOutput(sample);
}

}  // namespace veyla
