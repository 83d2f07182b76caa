#include "measuring/measurement_judge.h"

#include <utility>

#include "acquisition/data.h"
#include "measuring/measurement.h"
#include "measuring/measuring_screen.h"
#include "platform/platform.h"

namespace veyla {

namespace {

using namespace MeasuringScreen;

Display& display() { return services().measuringDisplay; }

/// The picture beside a reason that does not lie with the finger.
constexpr std::string_view noValue = "noValue";

/// The weightiest is enough to know what to do; reports name them all.
std::string lineOf(const std::vector<Doubt>& doubts) {
  return doubts.empty() ? "" : std::string(textOf(doubts.front()));
}

}  // namespace

void MeasurementJudge::measurementBegan() {
  coach_.reset();
  heartrateEstimates_ = {};
  spo2Estimates_ = {};
  evidence_ = {};
  heartrate_.reset();
  spo2_.reset();
  showFinger("", "");
  offerNextCamera(false);
}

void MeasurementJudge::frameSeen(const FrameColours& colours) {
  coach_.look(colours);
  showLensOrFinger();
}

void MeasurementJudge::frameDropped() { coach_.miss(); }

void MeasurementJudge::heartrateEstimated(std::int32_t /*counter*/,
                                          const HeartrateResult& /*result*/,
                                          EstimateVerdict verdict) {
  heartrateEstimates_.add(verdict);
}

void MeasurementJudge::spo2Estimated(std::int32_t /*counter*/, float /*spo2*/,
                                     const Spo2Figures& figures, EstimateVerdict verdict) {
  spo2Estimates_.add(verdict);
  if (verdict != EstimateVerdict::accepted) return;
  ++evidence_.estimates;
  if (figures.lacksBlue) ++evidence_.withoutBlue;
  const auto seen = coach_.state();
  if (figures.lacksRedPulse || seen == FingerState::tooBright) ++evidence_.withoutRedPulse;
  if (seen == FingerState::noFinger) ++evidence_.withoutFinger;
  if (!seen || seen == FingerState::moving || seen == FingerState::weak) ++evidence_.withoutPulse;
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

void MeasurementJudge::measurementEnded(std::int32_t /*counter*/, MeasurementEnd end) {
  // Whoever was interrupted asks for no reason.
  offerNextCamera(false);
  const bool asksWhy = end == MeasurementEnd::stopped || end == MeasurementEnd::lowSignal;
  const auto why = asksWhy ? shortfall() : std::nullopt;
  showFinger(why ? why->text : "", !why ? "" : why->state ? nameOf(*why->state) : noValue);
}

MeasurementWorth MeasurementJudge::worth() const {
  MeasurementWorth worth;
  const auto count = [&](const std::vector<Doubt>& doubts) {
    ++worth.finalValues;
    if (doubts.empty()) ++worth.reliableValues;
  };
  if (heartrate_) {
    count(heartrate_->doubts);
    worth.clarity = heartrate_->clarity;
  }
  if (spo2_) count(*spo2_);
  if (coach_.frames() > 0) {
    worth.shareOfGoodFinger = secondsIn(finger(), FingerState::good) *
                              VideoDataOutput::framesPerSecond /
                              static_cast<double>(coach_.frames());
  }
  return worth;
}

std::vector<FingerSpan> MeasurementJudge::finger(double start) const {
  const auto secondOf = [&](std::size_t frame) {
    return start + Measurement::countdownSeconds +
           static_cast<double>(frame) / VideoDataOutput::framesPerSecond;
  };
  std::vector<FingerSpan> finger;
  for (const FingerCoach::Span& span : coach_.spans()) {
    finger.push_back({span.state, secondOf(span.from), secondOf(span.to)});
  }
  return finger;
}

std::optional<Shortfall> MeasurementJudge::shortfall(double start) const {
  return shortfallOf(
      {.finger = finger(start),
       .isBlack = coach_.isBlack(),
       .seconds = static_cast<double>(coach_.frames()) / VideoDataOutput::framesPerSecond,
       .heartrate = heartrateEstimates_,
       .spo2 = spo2Estimates_,
       .hasHeartrate = heartrate_.has_value(),
       .hasSpo2 = spo2_.has_value(),
       .isDoubted = heartrate_ && !heartrate_->doubts.empty()});
}

void MeasurementJudge::showDoubts() {
  display().setText(labelDoubtHeartrate, heartrateLine_);
  // What is wrong with both values is said once.
  display().setText(labelDoubtSpo2, spo2Line_ == heartrateLine_ ? "" : spo2Line_);
}

void MeasurementJudge::showLensOrFinger() {
  const auto state = coach_.state();
  const auto lens = coach_.lens();
  // Without another camera the finger is all that can be moved.
  const bool isOffered = lens == LensFault::unlit && services().camera.hasNextBackCamera();
  offerNextCamera(isOffered);
  if (isOffered || lens == LensFault::switched) {
    showFinger(textOf(*lens), nameOf(*lens));
  } else {
    showFinger(state ? textOf(*state) : "", state ? nameOf(*state) : "");
  }
}

void MeasurementJudge::offerNextCamera(bool offered) {
  if (std::exchange(offersNextCamera_, offered) != offered) {
    display().setHidden(buttonNextCamera, !offered);
  }
}

void MeasurementJudge::showFinger(std::string_view text, std::string_view picture) {
  if (text == text_ && picture == picture_) return;
  text_ = text;
  picture_ = picture;
  if (!picture_.empty()) logLine("finger: %s", std::string(picture_).c_str());
  display().setText(labelFinger, text_);
  display().setImage(labelFinger, picture_);
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

std::string_view textOf(LensFault fault) {
  return fault == LensFault::unlit ? "No light reaches this lens"
                                   : "The phone changed its lens: hold still";
}

std::string_view nameOf(LensFault fault) {
  return fault == LensFault::unlit ? "unlit" : "switched";
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
