#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace veyla {

/// Behind a recording's name, without its own ending.
constexpr std::string_view referenceEnding = ".reference.csv";

/// What a reference instrument measured during a recording, `NAME.reference.csv`: rows of
/// `time,heartrate,spo2` in seconds since the recording began, beats per minute and per cent; an
/// empty field was not measured.
class Reference {
 public:
  /// Throws `InputError`.
  explicit Reference(const std::string& path);

  /// The mean of the rows from `from` to `to` seconds; nothing without a row there.
  std::optional<double> heartrate(double from, double to) const;
  std::optional<double> spo2(double from, double to) const;
  /// The same with each row weighted by the time since the row before. With a row per beat, that is
  /// the number of beats per time, where the plain mean counts quick beats for too much.
  std::optional<double> heartratePerTime(double from, double to) const;

 private:
  struct Row {
    double time;
    /// Seconds since the row before.
    double since;
    double value;
  };
  using Rows = std::vector<Row>;

  enum class Weight { row, time };
  static std::optional<double> mean(const Rows& rows, double from, double to, Weight by);

  Rows heartrates_;
  Rows spo2s_;
};

}  // namespace veyla
