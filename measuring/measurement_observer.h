#pragma once

#include <cstdint>

#include "acquisition/heartrate_result.h"
#include "analysis/spo2_processing.h"
#include "platform/frame_colours.h"

namespace veyla {

/// What becomes of one estimate. Only SpO2 estimates can be low.
enum class EstimateVerdict { accepted, rejected, low, none };

/// How many estimates of one value met which verdict.
struct EstimateCounts {
  int accepted = 0;
  int rejected = 0;
  int low = 0;
  int none = 0;

  void add(EstimateVerdict verdict);
};

inline void EstimateCounts::add(EstimateVerdict verdict) {
  switch (verdict) {
    case EstimateVerdict::accepted:
      ++accepted;
      break;
    case EstimateVerdict::rejected:
      ++rejected;
      break;
    case EstimateVerdict::low:
      ++low;
      break;
    case EstimateVerdict::none:
      ++none;
      break;
  }
}

/// How a measurement ended; each does so once.
enum class MeasurementEnd {
  /// Every requested value is final.
  finished,
  /// Too many saturations were too low.
  lowSignal,
  /// By STOP.
  stopped,
  /// The application went to the background.
  background,
  /// Another screen was opened.
  left,
  /// Another program took the camera, or it was unplugged.
  cameraLost,
  /// The camera may not be used.
  refused,
  /// The camera did not start.
  failed,
  /// By another START after an interruption that had brought START back, or by the next camera.
  replaced,
};

/// Follows measurements from outside, for traces and reports; it changes nothing. `counter` is the
/// frame counter at which the event fell.
class MeasurementObserver {
 public:
  virtual ~MeasurementObserver() = default;

  /// The camera may be used, and everything of the measurement before is gone. One that ends
  /// before, refused or left within a moment, tells its end alone.
  virtual void measurementBegan() {}
  /// The colours of a frame that is about to be stored, and a frame that did not come; from the
  /// light's coming on.
  virtual void frameSeen(const FrameColours& /*colours*/) {}
  virtual void frameDropped() {}
  /// A frame was stored in the record.
  virtual void frameStored(std::int32_t /*counter*/) {}
  virtual void heartrateEstimated(std::int32_t /*counter*/, const HeartrateResult& /*result*/,
                                  EstimateVerdict /*verdict*/) {}
  virtual void spo2Estimated(std::int32_t /*counter*/, float /*spo2*/,
                             const Spo2Figures& /*figures*/, EstimateVerdict /*verdict*/) {}
  /// A value is final, to be the last one and shown.
  virtual void heartrateFinal(float /*heartrate*/) {}
  virtual void spo2Final(float /*spo2*/) {}
  /// After everything that the end shows and keeps. `counter` is the former measurement's where
  /// this one has not begun.
  virtual void measurementEnded(std::int32_t /*counter*/, MeasurementEnd /*end*/) {}
};

}  // namespace veyla
