#pragma once

#include <compare>
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
  double over10 = 0.5;
  double unfinished = 4;
  double median = 16.5;
  /// Short recordings finish later: fingers and phones of all kinds.
  double ninetieth = 27.5;

  Limits times(double factor) const;
};

/// The greater mean error as a part of its limit, and what every other figure costs as soon as it
/// comes near its own: a setting is not to be bought with waiting or with wrong numbers.
double costOf(const Figures& figures, const Limits& limits);

/// What becomes of generated fingers.
struct FingerFigures {
  /// In per cent: without a number, and off by more than 2 beats per minute.
  double unfinished = 0;
  double over2 = 0;
  /// Mean absolute error in per cent of the truth.
  double meanPercentageError = 0;
};

/// By how much figures are beyond their limits, in parts of these; 0 when all are within. Where
/// limits pull against each other the last gives way first, so this is the order of choice.
struct Beyond {
  /// Errors, unfinished windows and the slowest tenth.
  double recordings = 0;
  double fingers = 0;
  double median = 0;

  auto operator<=>(const Beyond&) const = default;
};

void addBeyond(const Figures& figures, const Limits& limits, Beyond& sum);
void addBeyond(const FingerFigures& figures, Beyond& sum);

}  // namespace veyla::tuning
