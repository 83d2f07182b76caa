#pragma once

#include <memory>
#include <vector>

#include "acquisition/heartrate_result.h"

namespace veyla {

/// The record of the measurement under way: what the camera delivered, frame by frame, and which
/// estimates were accepted. Nothing ever trims it; `reset` starts a new one.
///
/// The getters hand out the sequences themselves: a holder sees later appends, and keeps the old
/// contents across a `reset`, which makes new sequences.
class Data {
 public:
  template <class Element>
  using Sequence = std::shared_ptr<std::vector<Element>>;

  /// The shared record of the platform in force.
  static Data& instance();

  Data();

  /// Starts empty sequences.
  void reset();

  void addRedValue(float value) { rawRedValues_->push_back(value); }
  void addGreenValue(float value) { rawGreenValues_->push_back(value); }
  void addBlueValue(float value) { rawBlueValues_->push_back(value); }
  void addHRValue(float value) { rawHRValues_->push_back(value); }
  void addSpo2Value(float value) { spo2Values_->push_back(value); }
  void addHeartrateValue(float value) { heartrateValues_->push_back(value); }
  void addFourierValues(HeartrateResult result) { fourierValues_->push_back(std::move(result)); }

  /// Does nothing: the record holds nothing that the end of the application must free.
  void exitApp() {}

  /// Channel averages of each stored frame, 0 to 255.
  const Sequence<float>& rawRedValues() const { return rawRedValues_; }
  const Sequence<float>& rawGreenValues() const { return rawGreenValues_; }
  const Sequence<float>& rawBlueValues() const { return rawBlueValues_; }
  /// The pulse signal of each stored frame.
  const Sequence<float>& rawHRValues() const { return rawHRValues_; }
  /// Accepted SpO2 estimates, in per cent.
  const Sequence<float>& spo2Values() const { return spo2Values_; }
  /// Accepted heart-rate estimates, in beats per minute.
  const Sequence<float>& heartrateValues() const { return heartrateValues_; }
  /// The whole result of each accepted heart-rate estimate.
  const Sequence<HeartrateResult>& fourierValues() const { return fourierValues_; }

  void setRawRedValues(Sequence<float> values) { rawRedValues_ = std::move(values); }
  void setRawGreenValues(Sequence<float> values) { rawGreenValues_ = std::move(values); }
  void setRawBlueValues(Sequence<float> values) { rawBlueValues_ = std::move(values); }
  void setRawHRValues(Sequence<float> values) { rawHRValues_ = std::move(values); }
  void setSpo2Values(Sequence<float> values) { spo2Values_ = std::move(values); }
  void setHeartrateValues(Sequence<float> values) { heartrateValues_ = std::move(values); }
  void setFourierValues(Sequence<HeartrateResult> values) { fourierValues_ = std::move(values); }

 private:
  Sequence<float> rawRedValues_;
  Sequence<float> rawGreenValues_;
  Sequence<float> rawBlueValues_;
  Sequence<float> rawHRValues_;
  Sequence<float> spo2Values_;
  Sequence<float> heartrateValues_;
  Sequence<HeartrateResult> fourierValues_;
};

}  // namespace veyla
