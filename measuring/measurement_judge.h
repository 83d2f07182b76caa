#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "analysis/finger_coach.h"
#include "measuring/doubts.h"
#include "measuring/measurement_observer.h"
#include "measuring/shortfall.h"

namespace veyla {

/// What a measurement came to, so far as it says which of several to go by: the greater. What may
/// be relied on counts before what is final, as a doubted value is worth less than one that lacks;
/// how clear the pulse was decides between equals, and where no heart rate was measured, how long
/// the finger was as it should be.
struct MeasurementWorth {
  int reliableValues = 0;
  int finalValues = 0;
  /// `HeartrateJudgement::clarity`; 0 without one.
  double clarity = 0;
  /// 0 to 1.
  double shareOfGoodFinger = 0;

  bool operator<(const MeasurementWorth& other) const {
    const auto parts = [](const MeasurementWorth& of) {
      return std::tie(of.reliableValues, of.finalValues, of.clarity, of.shareOfGoodFinger);
    };
    return parts(*this) < parts(other);
  }
};

/// Stands beside a measurement and says what is wrong with the finger while it lasts, and whether a
/// final value can be relied on. It changes nothing in the flow: no value, no order, no entry.
///
/// What it has to say goes to the display's lines for it: `labelFinger` while measuring, and
/// `labelDoubtHeartrate` and `labelDoubtSpo2` from a final value on until the next one: the value
/// stands there as the last one for as long. (The history keeps values alone: one read from it at
/// the next launch bears no mark.) Why a measurement ended without a value stands in `labelFinger`
/// until the next begins. What lies with the lens goes before what lies with the finger, and where
/// no light reaches it, `buttonNextCamera` offers another where the machine has one.
class MeasurementJudge : public MeasurementObserver {
 public:
  /// The finger as it is seen now and was seen in the measurement.
  const FingerCoach& coach() const { return coach_; }
  /// Of the final values; nothing for one that is not final.
  const std::optional<HeartrateJudgement>& heartrate() const { return heartrate_; }
  const std::optional<std::vector<Doubt>>& spo2() const { return spo2_; }

  MeasurementWorth worth() const;

  /// The finger of this measurement in seconds since START was tapped `start` seconds into a
  /// recording.
  std::vector<FingerSpan> finger(double start = 0) const;
  /// Why a value is not final; nothing for lack of time alone. Seconds as above.
  std::optional<Shortfall> shortfall(double start = 0) const;

  void measurementBegan() override;
  void frameSeen(const FrameColours& colours) override;
  void frameDropped() override;
  void heartrateEstimated(std::int32_t counter, const HeartrateResult& result,
                          EstimateVerdict verdict) override;
  void spo2Estimated(std::int32_t counter, float spo2, const Spo2Figures& figures,
                     EstimateVerdict verdict) override;
  void heartrateFinal(float heartrate) override;
  void spo2Final(float spo2) override;
  void measurementEnded(std::int32_t counter, MeasurementEnd end) override;

 private:
  void showFinger(std::string_view text, std::string_view picture);
  void showLensOrFinger();
  void offerNextCamera(bool offered);
  void showDoubts();

  FingerCoach coach_;
  /// In `labelFinger`.
  std::string text_;
  std::string_view picture_;
  std::optional<bool> offersNextCamera_;
  EstimateCounts heartrateEstimates_;
  EstimateCounts spo2Estimates_;
  Spo2Evidence evidence_;
  std::optional<HeartrateJudgement> heartrate_;
  std::optional<std::vector<Doubt>> spo2_;
  /// What is shown of the doubts about the last values, of this measurement or one before.
  std::string heartrateLine_;
  std::string spo2Line_;
};

/// What to do about the finger: "Move your finger over lens and light" and so on.
std::string_view textOf(FingerState state);
/// "noFinger" and so on, as reports name it; the name of its picture, too.
std::string_view nameOf(FingerState state);

/// The same of the lens: "unlit" and "switched".
std::string_view textOf(LensFault fault);
std::string_view nameOf(LensFault fault);

}  // namespace veyla
