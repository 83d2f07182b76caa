#pragma once

namespace veyla {

/// Writes final values to the health store, one sample each, and asks for the permission to do so.
/// Failures are logged and change nothing else.
class HKUtils {
 public:
  /// Asks for permission to write heart rates and oxygen saturations.
  static void setupHK();

  /// Beats per minute, stored as a whole number.
  void writeHeartrateWithValue(double value);
  /// Per cent, 0 to 100, rounded to a whole per cent and stored as a fraction.
  void writeSpo2WithValue(double value);
};

}  // namespace veyla
