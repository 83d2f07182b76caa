#include "benchmarks/tuning/figures.h"

#include <algorithm>
#include <cmath>

namespace veyla::tuning {

namespace {

double secondsOf(std::uint16_t frames) {
  return (static_cast<double>(frames) - 1) / framesPerSecond;
}

double quantileOf(std::vector<std::uint16_t> frames, double share) {
  if (frames.empty()) return windowSeconds;
  std::sort(frames.begin(), frames.end());
  const double position = share * static_cast<double>(frames.size() - 1);
  const auto below = static_cast<std::size_t>(position);
  const std::size_t above = std::min(below + 1, frames.size() - 1);
  return std::lerp(secondsOf(frames[below]), secondsOf(frames[above]),
                   position - static_cast<double>(below));
}

/// Nothing below nine tenths of the limit, then by how much of it.
double excess(double value, double limit) { return std::max(0.0, value / limit - 0.9); }

double over(double value, double limit) { return std::max(0.0, value / limit - 1); }

}  // namespace

void Tally::add(const Window& window, const std::optional<Finish>& finish) {
  ++windows_;
  if (!finish) return;
  const auto frames = static_cast<std::size_t>(finish->frames);
  const auto error = static_cast<double>(std::abs(finish->heartrate - window.reference[frames]));
  error_ += error;
  errorPerTime_ +=
      static_cast<double>(std::abs(finish->heartrate - window.referencePerTime[frames]));
  if (error > 5) ++over5_;
  if (error > 10) ++over10_;
  frames_.push_back(static_cast<std::uint16_t>(finish->frames));
}

void Tally::add(const Tally& other) {
  windows_ += other.windows_;
  error_ += other.error_;
  errorPerTime_ += other.errorPerTime_;
  over5_ += other.over5_;
  over10_ += other.over10_;
  frames_.insert(frames_.end(), other.frames_.begin(), other.frames_.end());
}

Tally::Figures Tally::figures() const {
  const auto finished = static_cast<double>(frames_.size());
  const double divisor = std::max(finished, 1.0);
  Figures figures;
  figures.meanError = error_ / divisor;
  figures.meanErrorPerTime = errorPerTime_ / divisor;
  figures.over5 = 100 * over5_ / divisor;
  figures.over10 = 100 * over10_ / divisor;
  figures.unfinished = 100 * (windows_ - finished) / std::max(windows_, 1);
  figures.median = quantileOf(frames_, 0.5);
  figures.ninetieth = quantileOf(frames_, 0.9);
  return figures;
}

Limits Limits::times(double factor) const {
  return {meanError * factor,  over5 * factor,  over10 * factor,
          unfinished * factor, median * factor, ninetieth * factor};
}

double costOf(const Figures& figures, const Limits& limits) {
  return std::max(figures.meanError, figures.meanErrorPerTime) / limits.meanError +
         0.5 * excess(figures.over5, limits.over5) + 0.5 * excess(figures.over10, limits.over10) +
         excess(figures.unfinished, limits.unfinished) + 2 * excess(figures.median, limits.median) +
         excess(figures.ninetieth, limits.ninetieth);
}

void addBeyond(const Figures& figures, const Limits& limits, Beyond& sum) {
  sum.recordings += over(figures.meanError, limits.meanError) + over(figures.over5, limits.over5) +
                    over(figures.over10, limits.over10) +
                    over(figures.unfinished, limits.unfinished) +
                    over(figures.ninetieth, limits.ninetieth);
  sum.median += over(figures.median, limits.median);
}

void addBeyond(const FingerFigures& figures, Beyond& sum) {
  constexpr double mostUnfinished = 0.5;
  sum.fingers += over(figures.unfinished, mostUnfinished) + figures.over2;
}

}  // namespace veyla::tuning
