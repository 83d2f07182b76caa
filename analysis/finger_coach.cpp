#include "analysis/finger_coach.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>

#include "analysis/pulse_clarity.h"
#include "platform/capture.h"

namespace veyla {

namespace {

/// No channel of a lit fingertip is this dark all together; nor is any this pale in all of them.
constexpr float darkest = 16;
constexpr float palest = 130;
/// Blood colours what comes through it. Recorded fingers have a channel of at most 0.81 of another,
/// and where blue exceeds green, it is at most 0.4 of the red.
constexpr float greyest = 0.9F;
constexpr float bluest = 0.7F;
/// The mean of a channel that is cut off in nearly every pixel.
constexpr float cutOff = 254;
/// Within 0.8 s some channel of a living finger swings by more: 0.31 at the least in the
/// recordings.
constexpr float leastLife = 0.25F;
/// Within half a second, less than the coach's patience, so that a twitch is not told, the
/// brightest channel of a finger at rest swings by less of itself.
constexpr float mostSwing = 0.13F;
constexpr std::size_t twitch = 8;
/// By how much cells may change otherwise than the frame does, as a part of it.
constexpr float mostShift = 0.05F;
constexpr float mostColours = 0.2F;
/// How much more cells may change each in its own way than all of them together, and what whole
/// numbers of 8 bits amount to, in sums of three channels.
constexpr float mostOwn = 2;
constexpr float wholeSteps = 1.5F;
/// Frames from one look at the cells to the next: whole numbers hide what glides slowly for less.
constexpr std::size_t changeStep = 10;
/// Frames behind the look for what glides by.
constexpr std::size_t glideWindow = 14;
/// By how much of its level a picture changes from one frame to the next with another lens.
constexpr float leastStep = 0.2F;
/// What has been put down where the finger was: another level or another colour.
constexpr float otherLevel = 0.35F;
constexpr float otherColour = 0.12F;

/// In frames. The first thing told needs less: it changes nothing.
constexpr std::size_t patience = 11;
constexpr std::size_t firstPatience = 8;
constexpr std::size_t longestFirstLook = 16;
constexpr std::size_t fewestForPulse = 45;
constexpr std::size_t pulseEvery = 10;
constexpr std::size_t longestDark = 45;
/// A finger that leaves moves first, and what lies beneath it takes a moment to be known: so many
/// frames of the one and the other belong to its absence.
constexpr std::size_t longestLeaving = 24;
constexpr std::size_t longestDoubt = 12;

constexpr float leastPulse = 0.5F;

float sumOf(const FrameColours& colours) { return colours.red + colours.green + colours.blue; }

float brightest(const FrameColours& colours) {
  return std::max({colours.red, colours.green, colours.blue});
}

bool isUnlikeBlood(const FrameColours& colours) {
  const float least = std::min({colours.red, colours.green, colours.blue});
  return least > palest || least > greyest * brightest(colours) ||
         (colours.blue > colours.green && colours.blue > bluest * colours.red);
}

/// Of red and green as parts of the whole, 0 to 2.
float colourDifference(const FrameColours& one, const FrameColours& other) {
  return std::abs(one.red / sumOf(one) - other.red / sumOf(other)) +
         std::abs(one.green / sumOf(one) - other.green / sumOf(other));
}

}  // namespace

void FingerCoach::look(const FrameColours& frame) {
  red_.add(frame.red);
  green_.add(frame.green);
  blue_.add(frame.blue);
  if (frame.cells) {
    if (cellsSeen_ >= changeStep) followChange(*frame.cells);
    cells_[seen_ % pulseWindow] = *frame.cells;
  }
  cellsSeen_ = frame.cells ? cellsSeen_ + 1 : 0;
  ++seen_;
  consider(verdictOn(frame));
  if (steady_ == 0 || steady_ >= fewestForPulse) isSwitched_ = false;
  ++frames_;
}

std::optional<LensFault> FingerCoach::lens() const {
  if (darkFrames_ >= longestDark) return LensFault::unlit;
  return isSwitched_ ? std::optional(LensFault::switched) : std::nullopt;
}

/// Another level of the same colours, at rest on both sides of the step, is the same finger.
void FingerCoach::followStep(const FrameColours& frame) {
  if (settled_ >= glance) {
    const FrameColours before{
        red_.newest(2).front(), green_.newest(2).front(), blue_.newest(2).front(), {}};
    const bool jumps = std::abs(sumOf(frame) / sumOf(before) - 1) > leastStep;
    if (jumps && colourDifference(frame, before) <= otherColour) stepAt_ = seen_ - 1;
  }
  if (!stepAt_) return;
  const std::size_t since = seen_ - *stepAt_;
  if (swingOf(frame, since) > mostSwing) stepAt_.reset();
  if (!stepAt_ || since < twitch) return;
  stepAt_.reset();
  isSwitched_ = true;
  finger_.reset();
  settled_ = unbroken_ = steady_ = since - 1;
  cellsSeen_ = std::min(cellsSeen_, since);
}

/// By how much the brightest channel swings, as a part of it.
float FingerCoach::swingOf(const FrameColours& frame, std::size_t count) const {
  const float level = brightest(frame);
  const Channel& channel = level == frame.red ? red_ : level == frame.green ? green_ : blue_;
  return channel.swing(count) / level;
}

std::optional<FingerState> FingerCoach::verdictOn(const FrameColours& frame) {
  const auto noPulse = [&](FingerState state) {
    steady_ = 0;
    return state;
  };
  const bool unlit = brightest(frame) < darkest;
  sawLight_ = sawLight_ || !unlit;
  darkFrames_ = unlit ? darkFrames_ + 1 : 0;
  const bool manyColours = frame.cells && frame.cells->colourSpread > mostColours;
  if (unlit || isUnlikeBlood(frame) || manyColours) {
    settled_ = 0;
    unbroken_ = 0;
    stepAt_.reset();
    return noPulse(FingerState::noFinger);
  }
  followStep(frame);
  const bool jumps = isMoving(frame);
  unbroken_ = jumps ? 0 : unbroken_ + 1;
  if (jumps) {
    if (settled_ > 0 || movedTo_ == 0) movedFrom_ = frames_;
    movedTo_ = frames_ + 1;
  }
  if (jumps || (glides() && !looksUnlikeTheFinger(frame))) {
    settled_ = 0;
    return noPulse(FingerState::moving);
  }
  ++settled_;
  ++steady_;
  if (isLifeless()) return noPulse(FingerState::noFinger);
  if (brightest(frame) >= cutOff) return noPulse(FingerState::tooBright);

  if (steady_ >= fewestForPulse) {
    if (steady_ == fewestForPulse || steady_ % pulseEvery == 0) pulse_ = seesPulse();
    if (pulse_) finger_ = frame;
    if (pulse_ || !looksUnlikeTheFinger(frame)) {
      return pulse_ ? FingerState::good : FingerState::weak;
    }
  }
  if (looksUnlikeTheFinger(frame)) return FingerState::noFinger;
  // A twitch takes the pulse from sight for a while, and not the finger.
  return told_ == FingerState::good ? told_ : std::nullopt;
}

bool FingerCoach::isLifeless() const {
  constexpr std::size_t fewest = glance - 2;
  if (settled_ < fewest) return false;
  const std::size_t count = std::min(settled_, glance);
  return std::max({red_.swing(count), green_.swing(count), blue_.swing(count)}) < leastLife;
}

bool FingerCoach::isMoving(const FrameColours& frame) const {
  if (swingOf(frame, std::min(seen_, twitch)) > mostSwing) return true;
  if (cellsSeen_ < glance) return false;

  // A pulse dims all cells alike; what moves dims one and lights another.
  const auto& now = frame.cells->brightness;
  const auto& before = cells_[(seen_ - glance) % pulseWindow].brightness;
  const float sumNow = std::accumulate(now.begin(), now.end(), 0.0F);
  const float sumBefore = std::accumulate(before.begin(), before.end(), 0.0F);
  if (sumBefore <= 0) return false;
  float squares = 0;
  for (std::size_t cell = 0; cell < FrameCells::count; ++cell) {
    const float shift = now[cell] - before[cell] * sumNow / sumBefore;
    squares += shift * shift;
  }
  constexpr auto cells = static_cast<float>(FrameCells::count);
  return std::sqrt(squares / cells) > mostShift * sumNow / cells;
}

bool FingerCoach::glides() const {
  return std::min(unbroken_, cellsSeen_) >= glideWindow && !cellsChangeAlike(glideWindow);
}

bool FingerCoach::looksUnlikeTheFinger(const FrameColours& frame) const {
  if (!finger_) return false;
  const float level = sumOf(frame) / sumOf(*finger_);
  return std::abs(level - 1) > otherLevel || colourDifference(frame, *finger_) > otherColour;
}

bool FingerCoach::seesPulse() const {
  const std::size_t count = std::min(steady_, pulseWindow);
  if (std::max(pulseIn(red_.newest(count)), pulseIn(green_.newest(count))) < leastPulse) {
    return false;
  }
  // A picture that glides by may repeat itself, too, each cell in its own way.
  return cellsSeen_ < count || cellsChangeAlike(count);
}

void FingerCoach::followChange(const FrameCells& frame) {
  constexpr auto cells = static_cast<float>(FrameCells::count);
  const auto& now = frame.brightness;
  const auto& before = cells_[(seen_ - changeStep) % pulseWindow].brightness;
  const float sumNow = std::accumulate(now.begin(), now.end(), 0.0F);
  const float sumBefore = std::accumulate(before.begin(), before.end(), 0.0F);
  const float change = (sumNow - sumBefore) / cells;
  const float ratio = sumBefore > 0 ? sumNow / sumBefore : 0;
  float own = 0;
  for (std::size_t cell = 0; cell < FrameCells::count; ++cell) {
    const float shift = now[cell] - before[cell] * ratio;
    own += shift * shift / cells;
  }
  changes_[seen_ % pulseWindow] = {change * change, own};
}

bool FingerCoach::cellsChangeAlike(std::size_t count) const {
  float common = 0;
  float own = 0;
  for (std::size_t i = seen_ - count + changeStep; i < seen_; ++i) {
    common += changes_[i % pulseWindow].common;
    own += changes_[i % pulseWindow].own;
  }
  const auto steps = static_cast<float>(count - changeStep);
  return std::sqrt(own / steps) <= std::max(wholeSteps, mostOwn * std::sqrt(common / steps));
}

void FingerCoach::Channel::add(float value) {
  if (end_ == values_.size()) {
    std::copy(values_.end() - pulseWindow, values_.end(), values_.begin());
    end_ = pulseWindow;
  }
  values_[end_++] = value;
}

std::span<const float> FingerCoach::Channel::newest(std::size_t count) const {
  return std::span(values_).subspan(end_ - count, count);
}

float FingerCoach::Channel::swing(std::size_t count) const {
  const auto values = newest(count);
  const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
  return *greatest - *least;
}

void FingerCoach::consider(std::optional<FingerState> verdict) {
  if (verdict != candidate_) {
    candidate_ = verdict;
    candidateSince_ = frames_;
  }
  if (candidate_ == told_) return;
  const std::size_t agreed = frames_ + 1 - candidateSince_;
  if (agreed < (spans_.empty() ? firstPatience : patience)) return;

  const std::size_t from = beginningOf(candidate_);
  while (!spans_.empty() && spans_.back().from >= from) spans_.pop_back();
  if (told_ && !spans_.empty()) spans_.back().to = from;
  if (candidate_) {
    spans_.push_back({*candidate_, from, from});
  } else {
    unknownFrom_ = from;
  }
  told_ = candidate_;
}

std::size_t FingerCoach::beginningOf(std::optional<FingerState> verdict) const {
  const std::size_t since = candidateSince_;
  const bool sawFinger = verdict == FingerState::weak || verdict == FingerState::good;
  // It takes a moment to see what was there from the beginning, and longer to see a pulse.
  if (spans_.empty()) return sawFinger || since <= longestFirstLook ? 0 : since;
  // A finger is gone from the moment at which it began to leave, and there from the moment at which
  // it began to come.
  const bool justMoved = movedTo_ > movedFrom_ && movedTo_ - movedFrom_ <= longestLeaving;
  if (verdict == FingerState::noFinger && justMoved && since <= movedTo_ + longestDoubt) {
    return std::min(since, movedFrom_);
  }
  if (!verdict && justMoved && since == movedTo_) return movedFrom_;
  return sawFinger && !told_ ? std::min(since, unknownFrom_) : since;
}

std::vector<FingerCoach::Span> FingerCoach::spans() const {
  auto spans = spans_;
  if (told_) spans.back().to = frames_;
  return spans;
}

}  // namespace veyla
