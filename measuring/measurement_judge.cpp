#include "measuring/measurement_judge.h"

#include "acquisition/data.h"
#include "measuring/measuring_screen.h"
#include "platform/platform.h"

namespace veyla {

namespace {

using namespace MeasuringScreen;

Display& display() { return services().measuringDisplay; }

/// The weightiest is enough to know what to do; reports name them all.
std::string lineOf(const std::vector<Doubt>& doubts) {
  return doubts.empty() ? "" : std::string(textOf(doubts.front()));
}

}  // namespace

void MeasurementJudge::measurementBegan() {
  coach_.reset();
  evidence_ = {};
  heartrate_.reset();
  spo2_.reset();
  showFinger(std::nullopt);
}

void MeasurementJudge::frameSeen(const FrameColours& colours) {
  coach_.look(colours);
  showFinger(coach_.state());
}

void MeasurementJudge::frameDropped() { coach_.miss(); }

void MeasurementJudge::spo2Estimated(std::int32_t /*counter*/, float /*spo2*/,
                                     const Spo2Figures& figures, EstimateVerdict verdict) {
  if (verdict != EstimateVerdict::accepted) return;
  ++evidence_.estimates;
  if (figures.lacksBlue) ++evidence_.withoutBlue;
  const bool isCutOff = coach_.state() == FingerState::tooBright;
  if (figures.lacksRedPulse || isCutOff) ++evidence_.withoutRedPulse;
  if (coach_.state() == FingerState::noFinger) ++evidence_.withoutFinger;
}

void MeasurementJudge::heartrateFinal(float heartrate) {
  const Data& data = Data::instance();
  heartrate_ = judgeHeartrate(static_cast<double>(heartrate), *data.rawRedValues(),
                              *data.rawGreenValues(), coach_);
  heartrateLine_ = lineOf(heartrate_->doubts);
  showDoubts();
}

void MeasurementJudge::spo2Final(float /*spo2*/) {
  spo2_ = judgeSpo2(evidence_);
  spo2Line_ = lineOf(*spo2_);
  showDoubts();
}

void MeasurementJudge::measurementEnded(std::int32_t /*counter*/, MeasurementEnd /*end*/) {
  showFinger(std::nullopt);
}

void MeasurementJudge::showDoubts() {
  display().setText(labelDoubtHeartrate, heartrateLine_);
  // What is wrong with both values is said once.
  display().setText(labelDoubtSpo2, spo2Line_ == heartrateLine_ ? "" : spo2Line_);
}

void MeasurementJudge::showFinger(std::optional<FingerState> state) {
  if (state == shown_) return;
  shown_ = state;
  display().setText(labelFinger, state ? std::string(textOf(*state)) : "");
  display().setImage(labelFinger, state ? nameOf(*state) : "");
}

std::string_view textOf(FingerState state) {
  switch (state) {
    case FingerState::noFinger:
      return "Move your finger over lens and light";
    case FingerState::moving:
      return "Hold still";
    case FingerState::good:
      return "Finger in place";
    case FingerState::tooBright:
    case FingerState::weak:
      break;
  }
  return "Press more lightly";
}

std::string_view nameOf(FingerState state) {
  switch (state) {
    case FingerState::noFinger:
      return "noFinger";
    case FingerState::tooBright:
      return "tooBright";
    case FingerState::moving:
      return "moving";
    case FingerState::weak:
      return "weak";
    case FingerState::good:
      break;
  }
  return "good";
}

}  // namespace veyla
