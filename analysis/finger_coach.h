#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "platform/frame_colours.h"

namespace veyla {

enum class FingerState {
  /// Nothing that looks like a lit fingertip: dark, pale, grey, violet, lifeless, or of many
  /// colours.
  noFinger,
  /// A channel stands at its upper end, where a pulse is cut off.
  tooBright,
  moving,
  /// A finger, perhaps, without a pulse that shows.
  weak,
  good,
};

/// What lies with the camera's lens and not with the finger before it.
enum class LensFault {
  /// For 3 s nothing but dark: the light is too far from this lens to come to it through a finger.
  unlit,
  /// The picture changed from one frame to the next and was at rest before and after: the phone has
  /// taken another of its lenses.
  switched,
};

/// Looks at each second of colours and says what is right or wrong with the finger. It stands
/// beside the measurement and decides nothing in it.
///
/// It counts on 15 frames a second, changes its mind only when it has seen the same for 0.7 s, and
/// says nothing until it has seen enough: half a second of what no finger does, three seconds of
/// what may be a pulse. Its thresholds come from recorded fingers, which stay within all but one in
/// two hundred of the looks at them, and from pictures without a finger.
class FingerCoach {
 public:
  /// What was seen from one frame on and up to another, which is the first of the next span. A
  /// span begins with what it tells of and not with the moment of telling.
  struct Span {
    FingerState state = FingerState::noFinger;
    std::size_t from = 0;
    std::size_t to = 0;
  };

  void reset() { *this = {}; }

  /// The next frame; to be called for each one from the light's coming on.
  void look(const FrameColours& frame);
  /// A frame that did not come: time goes on.
  void miss() { ++frames_; }

  /// What is told now; nothing as long as nothing can be said.
  std::optional<FingerState> state() const { return told_; }
  /// What is seen of the lens now; a switch, until a pulse has been looked for in the new picture.
  /// A finger that was good before a switch stays so until then.
  std::optional<LensFault> lens() const;
  /// Whether no frame was brighter than a dark one.
  bool isBlack() const { return frames_ > 0 && !sawLight_; }
  /// Frames seen and missed.
  std::size_t frames() const { return frames_; }
  /// Everything told so far; what nothing could be told of lies between. The last one ends now,
  /// if it is told still.
  std::vector<Span> spans() const;

 private:
  /// Frames behind the look at one moment: 0.8 s.
  static constexpr std::size_t glance = 12;
  /// Frames behind the search for a pulse: 4 s.
  static constexpr std::size_t pulseWindow = 60;

  std::optional<FingerState> verdictOn(const FrameColours& frame);
  void followStep(const FrameColours& frame);
  float swingOf(const FrameColours& frame, std::size_t count) const;
  bool isLifeless() const;
  bool isMoving(const FrameColours& frame) const;
  bool glides() const;
  bool looksUnlikeTheFinger(const FrameColours& frame) const;
  bool seesPulse() const;
  void followChange(const FrameCells& frame);
  /// Whether over the newest frames the cells changed with all of them rather than each in its own
  /// way.
  bool cellsChangeAlike(std::size_t count) const;
  void consider(std::optional<FingerState> verdict);
  /// The frame at which what the candidate tells of began.
  std::size_t beginningOf(std::optional<FingerState> verdict) const;

  /// The newest values of a channel, side by side.
  class Channel {
   public:
    void add(float value);
    std::span<const float> newest(std::size_t count) const;
    /// By how much the newest `count` values differ.
    float swing(std::size_t count) const;

   private:
    std::array<float, 4 * pulseWindow> values_{};
    std::size_t end_ = 0;
  };

  bool sawLight_ = false;
  std::size_t frames_ = 0;
  /// Frames looked at.
  std::size_t seen_ = 0;
  Channel red_;
  Channel green_;
  Channel blue_;
  /// Of the newest frames, by their number.
  std::array<FrameCells, pulseWindow> cells_{};
  /// Squared changes up to each of them: of all cells together, and of each in its own way.
  struct Change {
    float common = 0;
    float own = 0;
  };
  std::array<Change, pulseWindow> changes_{};
  /// Frames with cells, without one between that had none.
  std::size_t cellsSeen_ = 0;
  std::size_t darkFrames_ = 0;
  /// The frame, by its number among those seen, at which the picture changed at once.
  std::optional<std::size_t> stepAt_;
  bool isSwitched_ = false;
  /// Frames since the last one that moved, or that no finger gives at any moment.
  std::size_t settled_ = 0;
  /// The same, but for what glides by.
  std::size_t unbroken_ = 0;
  /// The same, but for pictures without life, too: what a pulse is looked for in.
  std::size_t steady_ = 0;
  bool pulse_ = false;
  /// The last stretch of movement.
  std::size_t movedFrom_ = 0;
  std::size_t movedTo_ = 0;
  /// The finger's own colours when its pulse was last seen.
  std::optional<FrameColours> finger_;

  std::optional<FingerState> told_;
  std::optional<FingerState> candidate_;
  std::size_t candidateSince_ = 0;
  std::size_t unknownFrom_ = 0;
  std::vector<Span> spans_;
};

}  // namespace veyla
