#pragma once

namespace veyla {

/// Asks the user once to rate the application, when it has been in use for long and often enough.
/// What it counts is stored.
class RatingPrompt {
 public:
  /// The prompt of the platform in force.
  static RatingPrompt& instance();

  /// All three must be reached before it asks; days may be fractions. `AppDelegate` says which.
  void configure(double days, int significantEvents, int uses);

  /// One launch of the application.
  void logUse();
  /// One thing done that the user came for: a finished measurement.
  void logSignificantEvent();

 private:
  void countAndMaybeAsk(const char* counterKey);

  double days_ = 0;
  int significantEvents_ = 0;
  int uses_ = 0;
};

}  // namespace veyla
