#pragma once

#include <cstdint>
#include <optional>

namespace veyla {

/// Makes 15 frames a second of a camera's, by the times at which the camera took them.
///
/// Every tick of 1/15 s takes the newest frame at or before it. What a frame is good for is known
/// when the next one has come: until then its taker holds it.
class FramePacer {
 public:
  static constexpr int framesPerSecond = 15;

  /// What becomes of the held frame when the next one comes, in this order.
  struct Due {
    /// Ticks that take the held frame. More than one where there is no other: the count of frames
    /// keeps time, and rates are measured by it.
    int delivered = 0;
    /// Those among them whose own frames came while nobody was there to take them.
    int dropped = 0;

    bool operator==(const Due&) const = default;
  };

  /// Begins anew: the next frame is the first.
  void restart();

  /// The camera's next frame, `missed` frames after the last one that was taken. `time` is in
  /// seconds of the camera's own time; one that does not go on makes nothing due.
  Due frameAt(double time, int missed);

 private:
  double secondsOfTick(std::int64_t tick) const;

  std::optional<double> first_;
  std::int64_t nextTick_ = 0;
  bool heldIsNew_ = false;
};

}  // namespace veyla
