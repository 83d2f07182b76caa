#include "analysis/spo2_processing.h"

#include <algorithm>
#include <span>

#include "acquisition/settings.h"
#include "analysis/vector_utils.h"
#include "platform/format.h"
#include "platform/platform.h"

namespace veyla {

namespace {

constexpr std::size_t oldWindow = 90;
constexpr std::size_t oldWindowOnIphone4or4s = 150;
constexpr float largestSpo2 = 100;
/// In steps of 8 bits. Below it, rounding alone moves the value's distance from 100 by an eighth,
/// and a camera's black level by half or more.
constexpr float leastBlue = 4;

ChannelPulsation pulsationOf(std::span<const double> window) {
  const float dc = VectorUtils::minOf(window).value_or(0);
  return {VectorUtils::maxOf(window).value_or(0) - dc, dc};
}

bool pulsates(const ChannelPulsation& channel) { return channel.ac > 0 && channel.dc > 0; }

/// The ratio in single precision, the percentage in double precision.
float spo2Of(float redRatio, float otherRatio) {
  const float quotient = redRatio / otherRatio;
  return static_cast<float>((1.0 - static_cast<double>(quotient)) * 100.0);
}

float redOverBlue(const ChannelPulsation& red, const ChannelPulsation& blue) {
  if (!pulsates(blue) || !pulsates(red)) return 0;
  return spo2Of(red.ac / red.dc, blue.ac / blue.dc);
}

/// The second ratio sets the green range beyond the red one against the blue minimum, although the
/// green minimum is what the guard looks at.
float redOverGreenAndBlue(const Spo2Figures& of) {
  if (!pulsates(of.red) || !pulsates(of.green)) return 0;
  return spo2Of(of.red.ac / of.red.dc, (of.green.ac - of.red.ac) / of.blue.dc);
}

/// Phones whose blue channel hardly moves get standard figures instead.
void correctForDevice(ChannelPulsation& red, ChannelPulsation& blue) {
  if (blue.ac < 3) blue.ac = 10;
  if (red.ac == 0) red.ac = 1;
  if (blue.dc == 0) blue.dc = 5;
}

std::string labelText(const Spo2Figures& of, float spo2) {
  return formatText(
      "ACR=%.0f DCR=%.0f ACG=%.0f DCG=%.0f ACB=%.0f DCB=%.0f old spo2=%.1f, new spo2=%.1f",
      static_cast<double>(of.red.ac), static_cast<double>(of.red.dc),
      static_cast<double>(of.green.ac), static_cast<double>(of.green.dc),
      static_cast<double>(of.blue.ac), static_cast<double>(of.blue.dc),
      static_cast<double>(of.oldSpo2), static_cast<double>(spo2));
}

}  // namespace

Spo2Processing& Spo2Processing::instance() { return Platform::current().shared<Spo2Processing>(); }

Spo2Processing::Spo2Processing() : data_(&Data::instance()) {
  const std::string profile = Utils::platformString();
  usingIphone4or4s_ = profile == "iphone4" || profile == "iphone4s";
}

float Spo2Processing::calculateSpo2(const Label& label) {
  return Utils::getSpo2Settings("useNewAlgorithm").boolValue() ? calculateNew(label)
                                                               : calculateOld();
}

float Spo2Processing::calculateOld() {
  logLine("Using old spo2 algorithm");
  const std::size_t window = usingIphone4or4s_ ? oldWindowOnIphone4or4s : oldWindow;
  figures_ = {};
  ChannelPulsation& red = figures_.red;
  ChannelPulsation& blue = figures_.blue;
  red = pulsationOf(VectorUtils::lastObjectsOf(*data_->rawRedValues(), window));
  blue = pulsationOf(VectorUtils::lastObjectsOf(*data_->rawBlueValues(), window));

  const float measuredRange = blue.ac;
  figures_.lacksRedPulse = red.ac == 0;
  figures_.lacksBlue = blue.dc < leastBlue;
  const std::string profile = Utils::platformString();
  if (profile == "iphone4s" || profile == "iphone4") correctForDevice(red, blue);
  figures_.lacksBlue = figures_.lacksBlue || blue.ac != measuredRange;

  const float spo2 = figures_.oldSpo2 = redOverBlue(red, blue);
  logLine("spo2: %.1f, ACred: %.1f, DCred: %.1f, ACblue: %.1f, DCblue: %.1f",
          static_cast<double>(spo2), static_cast<double>(red.ac), static_cast<double>(red.dc),
          static_cast<double>(blue.ac), static_cast<double>(blue.dc));
  return spo2;
}

float Spo2Processing::calculateNew(const Label& label) {
  logLine("Using new spo2 algorithm");
  const auto n =
      static_cast<std::size_t>(std::max(Utils::getSpo2Settings("rawDataSize").intValue(), 0));
  const bool useTrend = Utils::getSpo2Settings("useTrend").boolValue();
  logLine(useTrend ? "Using spo2 raw values detrend" : "Not Using spo2 raw values detrend");

  const auto channel = [&](const std::vector<float>& series) {
    const auto window = VectorUtils::lastObjectsOf(series, n);
    return pulsationOf(useTrend ? VectorUtils::detrend(window, false) : window);
  };
  ChannelPulsation& red = figures_.red;
  ChannelPulsation& green = figures_.green;
  ChannelPulsation& blue = figures_.blue;
  red = channel(*data_->rawRedValues());
  green = channel(*data_->rawGreenValues());
  blue = channel(*data_->rawBlueValues());

  figures_.lacksBlue = blue.dc < leastBlue;
  figures_.lacksRedPulse = red.ac == 0;
  const float spo2 = redOverGreenAndBlue(figures_);
  figures_.oldSpo2 = redOverBlue(red, blue);

  if (label) label(labelText(figures_, spo2));
  logLine("newspo2: %.1f, spo2: %.1f, ACred: %.1f, DCred: %.1f, ACblue: %.1f, DCblue: %.1f",
          static_cast<double>(spo2), static_cast<double>(figures_.oldSpo2),
          static_cast<double>(red.ac), static_cast<double>(red.dc), static_cast<double>(blue.ac),
          static_cast<double>(blue.dc));
  return spo2 > largestSpo2 ? 0 : spo2;
}

bool Spo2Processing::isDone() const {
  // The count is the same on every phone; if one should ever need another, it parts here.
  static_cast<void>(Utils::isIphone6or6plus());
  const int needed = Utils::getSpo2Settings("neededValidSpo2").intValue();
  return static_cast<std::int64_t>(data_->spo2Values()->size()) == needed;
}

}  // namespace veyla
