#pragma once

#include <functional>
#include <string>

#include "acquisition/data.h"

namespace veyla {

/// Pulsatile (AC, the range) and steady (DC, the minimum) part of one channel's window.
struct ChannelPulsation {
  float ac = 0;
  float dc = 0;
};

/// What the last estimate was computed from, for diagnostics and doubts; no value depends on it.
struct Spo2Figures {
  ChannelPulsation red;
  ChannelPulsation green;
  ChannelPulsation blue;
  /// The red and blue ratio of ratios, as reported beside the returned value.
  float oldSpo2 = 0;
  /// Whether it stands on next to no pulse in blue: on next to no blue light, or on a standard
  /// figure for its range. Both formulas take the blue minimum for a factor, so the value then
  /// tends to 100 whatever the blood does, and nothing else in it tells.
  bool lacksBlue = false;
  /// Whether the red channel did not change, or a standard figure stands for its range.
  bool lacksRedPulse = false;
};

/// Estimates the oxygen saturation from the newest stretch of the colour series by the ratio of
/// ratios: 100 · (1 − R), in which R compares the red channel's relative pulsation with a second
/// channel's.
class Spo2Processing {
 public:
  /// Takes one line of diagnostic text; may be empty.
  using Label = std::function<void(const std::string& text)>;

  /// The shared estimator of the platform in force.
  static Spo2Processing& instance();

  Spo2Processing();

  /// One estimate in per cent; 0 where none can be formed, and below 0 or minus infinity where the
  /// colours contradict the model. Only the new algorithm writes to `label`.
  float calculateSpo2(const Label& label);

  /// Whether exactly "neededValidSpo2" values have been accepted.
  bool isDone() const;

  /// Does nothing: no state outlives an estimate.
  void reset() {}

  Data& data() const { return *data_; }
  void setData(Data& data) { data_ = &data; }
  /// Selects the old algorithm's longer window.
  bool usingIphone4or4s() const { return usingIphone4or4s_; }
  void setUsingIphone4or4s(bool usingIphone4or4s) { usingIphone4or4s_ = usingIphone4or4s; }

  const Spo2Figures& figures() const { return figures_; }

 private:
  float calculateOld();
  float calculateNew(const Label& label);

  bool usingIphone4or4s_;
  Data* data_;
  Spo2Figures figures_;
};

}  // namespace veyla
