#pragma once

#include <cstdint>
#include <vector>

#include "benchmarks/tuning/material.h"
#include "benchmarks/tuning/replay.h"

namespace veyla::tuning {

/// Counts windows of one recording, or of several together.
class Tally {
 public:
  void add(const Window& window, const std::optional<Finish>& finish);
  void add(const Tally& other);

  struct Figures {
    /// Absolute errors in beats per minute, against both means of the reference.
    double meanError = 0;
    double meanErrorPerTime = 0;
    /// Per cent of the finished windows.
    double over5 = 0;
    double over10 = 0;
    /// Per cent of all.
    double unfinished = 0;
    /// Seconds to the finish.
    double median = 0;
    double ninetieth = 0;
  };
  Figures figures() const;

 private:
  int windows_ = 0;
  double error_ = 0;
  double errorPerTime_ = 0;
  int over5_ = 0;
  int over10_ = 0;
  /// Stored frames of each finished window.
  std::vector<std::uint16_t> frames_;
};

using Figures = Tally::Figures;

/// What is aimed at: see `costOf`.
struct Limits {
  double meanError = 1.6;
  double over5 = 5;
  double over10 = 1;
  double unfinished = 4;
  double median = 18.5;
  /// Short recordings finish later: fingers and phones of all kinds.
  double ninetieth = 32;

  Limits times(double factor) const;
};

/// The greater mean error as a part of its limit, and what every other figure costs as soon as it
/// comes near its own: a setting is not to be bought with waiting or with wrong numbers.
double costOf(const Figures& figures, const Limits& limits);

/// By how much the figures are beyond their limits, in parts of these; 0 when all are within.
double beyond(const Figures& figures, const Limits& limits);

/// What becomes of generated fingers.
struct FingerFigures {
  /// Up to 160 beats per minute, in per cent: without a number, and farther from the truth than
  /// one bin.
  double unfinished = 0;
  double wrong = 0;
  /// Up to 180: mean absolute error in per cent of the truth.
  double meanPercentageError = 0;
};

}  // namespace veyla::tuning
