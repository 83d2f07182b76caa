#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace veyla {

/// Usage counters in the key-value store, and the check of a typed mail address.
///
/// A counter that was never set is 0; setting one makes it durable at once. They are offered to
/// programs: nothing in the core counts, and no screen shows them.
class UsageUtils {
 public:
  /// Finished measurements.
  static std::int64_t total_finished();
  static void setTotal_finished(std::int64_t value);
  static std::int64_t total_finished_percent();
  static void setTotal_finished_percent(std::int64_t value);
  /// Measurements with a low heart rate.
  static std::int64_t total_hr_low();
  static void setTotal_hr_low(std::int64_t value);
  static std::int64_t total_hr_low_percent();
  static void setTotal_hr_low_percent(std::int64_t value);
  /// Measurements that a low signal ended.
  static std::int64_t total_lowsig();
  static void setTotal_lowsig(std::int64_t value);
  static std::int64_t total_lowsig_percent();
  static void setTotal_lowsig_percent(std::int64_t value);

  // By the keys under which the store holds them.

  static constexpr std::string_view totalFinished = "total_finished";
  static constexpr std::string_view totalFinishedPercent = "total_finished_percent";
  static constexpr std::string_view totalHrLow = "total_hr_low";
  static constexpr std::string_view totalHrLowPercent = "total_hr_low_percent";
  static constexpr std::string_view totalLowsig = "total_lowsig";
  static constexpr std::string_view totalLowsigPercent = "total_lowsig_percent";
  static constexpr std::array counterKeys{totalFinished, totalFinishedPercent,
                                          totalHrLow,    totalHrLowPercent,
                                          totalLowsig,   totalLowsigPercent};
  static std::int64_t counter(std::string_view key);
  static void setCounter(std::string_view key, std::int64_t value);

  static int getSome() { return 42; }

  /// Whether the text is an address with a last part of two to four letters. As many UTF-16 code
  /// units are looked at as the text has user-perceived characters.
  bool isEmailWithEmail(const std::string& email) const;
};

}  // namespace veyla
