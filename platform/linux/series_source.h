#pragma once

#include <array>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/recording_source.h"

namespace veyla {

/// One row of a colour series.
struct SeriesRow {
  /// Milliseconds, on the file's own scale.
  double time = 0;
  FrameSample colours;
};

/// Reads a colour series row by row: comma-separated text whose first line names its columns.
///
/// Needed are `time` (milliseconds, never going back, at most `longestStepBetweenFrames` on) and
/// `R`, `G`, `B` (0 to 255); `hr` is the pulse value, which is red where there is no such column.
/// Names come in any order and case, other columns are passed over. Numbers are read the same under
/// every locale.
class SeriesReader {
 public:
  /// Reads the first line. Throws `InputError`, as `next` does, naming file, line and column.
  explicit SeriesReader(const std::string& path);

  /// The next row, nothing at the end.
  std::optional<SeriesRow> next();

  /// Whether the last line broke off in the middle of its row, which was then passed over.
  bool cutOff() const { return cutOff_; }

 private:
  enum Column : std::size_t { timeColumn, red, green, blue, hr, columnCount };
  static constexpr std::array<const char*, columnCount> columnNames{"time", "R", "G", "B", "hr"};

  bool readLine();
  void readHeader();
  double number(std::string_view field, Column column) const;
  double colour(Column column) const;
  [[noreturn]] void refuse(const std::string& reason) const;
  [[noreturn]] void refuse(Column column, const std::string& reason) const;

  std::string path_;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
  std::vector<char> buffer_;
  std::size_t bufferStart_ = 0;
  std::size_t bufferEnd_ = 0;
  /// Into `buffer_`, without its line end; valid until the next one is read.
  std::string_view line_;
  bool lineHasEnd_ = false;
  std::size_t lineNumber_ = 0;

  std::size_t fieldCount_ = 0;
  /// Which field holds each column.
  std::array<std::optional<std::size_t>, columnCount> positions_{};
  std::vector<std::string_view> fields_;
  std::optional<double> lastTime_;
  bool cutOff_ = false;
};

/// A colour series as a recording: its rows are frames whose averages are known already. Time 0 is
/// the first row.
class SeriesSource : public RecordingSource {
 public:
  /// Reads the file through once, so that a series with a fault anywhere is refused before anything
  /// is measured, and keeps no more than a row of it. Throws `InputError`.
  explicit SeriesSource(const std::string& path);

  bool advance() override;
  double time() const override { return secondsOf(current_); }
  std::optional<double> nextTime() const override;
  void deliver(SampleBufferDelegate& delegate) override;
  std::string remark() const override;

 private:
  double secondsOf(const SeriesRow& row) const { return (row.time - firstTime_) / 1000; }

  std::string path_;
  SeriesReader reader_;
  /// In rows.
  std::size_t size_ = 0;
  bool cutOff_ = false;
  double firstTime_ = 0;
  double lastTime_ = 0;
  SeriesRow current_;
  std::optional<SeriesRow> next_;
};

}  // namespace veyla
