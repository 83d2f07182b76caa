#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "acquisition/data.h"
#include "acquisition/heartrate_result.h"
#include "analysis/spo2_processing.h"
#include "platform/real_fft.h"

namespace veyla {

/// Estimates the heart rate from the newest stretch of the pulse signal: the strongest bin of its
/// spectrum, and how clearly it dominates.
///
/// The spectrum's scale is that of 15 frames a second whatever the capture's own rate: one bin of
/// the 1024-point transform is 15 / 1024 Hz, 0.87890625 beats per minute. The strength of a bin is
/// the absolute value of its real part, not its modulus; the settings' thresholds belong to that.
class HeartrateProcessing {
 public:
  /// The shared estimator of the platform in force.
  static HeartrateProcessing& instance();

  HeartrateProcessing();

  /// One estimate from the last "rawDataSize" values of the record, which must hold that many;
  /// what is missing counts as 0.
  HeartrateResult calculateHeartrate();

  /// Beats per minute of a bin.
  static float calcBPM(std::int64_t bin);

  /// Whether exactly "neededValidHeartrate" results have been accepted.
  bool isDone() const;

  /// The sample standard deviation of the last "neededValidHeartrate" accepted heart rates: 0
  /// without any, not-a-number with one.
  float diffHeartrates() const;

  /// Does nothing: no state outlives an estimate.
  void reset() {}

  /// Frees the buffers; no estimate may follow.
  void exitApp() { buffers_ = nullptr; }

  Data& data() const { return *data_; }
  void setData(Data& data) { data_ = &data; }
  Spo2Processing& spo2Processing() const { return *spo2Processing_; }
  void setSpo2Processing(Spo2Processing& processing) { spo2Processing_ = &processing; }
  bool usingIphone4or4s() const { return usingIphone4or4s_; }
  void setUsingIphone4or4s(bool usingIphone4or4s) { usingIphone4or4s_ = usingIphone4or4s; }

 private:
  struct Buffers {
    std::array<double, RealFft::length> input;
    // One slot more than bins: the cut at the top of the spectrum begins there.
    std::array<double, RealFft::binCount + 1> real;
    std::array<double, RealFft::binCount> imaginary;
    std::array<FFTValue, RealFft::binCount> bins;
  };

  void fillInput(std::size_t n);
  void transform(float lowBin);

  std::unique_ptr<Buffers> buffers_;
  bool usingIphone4or4s_;
  Data* data_;
  Spo2Processing* spo2Processing_;
};

}  // namespace veyla
