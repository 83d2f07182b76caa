#include "platform/linux/series_source.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>

#include "platform/format.h"
#include "platform/linux/input_file.h"
#include "platform/linux/names.h"

namespace veyla {

namespace {

/// Also the longest line that is still taken for text.
constexpr std::size_t bufferSize = 64 * 1024;
constexpr double largestColour = 255;
constexpr double millisecondsPerSecond = 1000;
/// More rows than this within a second are times given in seconds rather than a camera so fast.
constexpr std::size_t mostRowsPerSecond = 30;

std::FILE* openForReading(const std::string& path) {
  requireInputFile(path);
  std::FILE* file = std::fopen(path.c_str(), "rbe");
  if (!file) throw InputError(path + ": " + readProblem(errno));
  return file;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t";
  const std::size_t start = text.find_first_not_of(blanks);
  if (start == std::string_view::npos) return {};
  return text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

bool sameName(std::string_view a, std::string_view b) { return lowerCase(a) == lowerCase(b); }

void split(std::string_view line, std::vector<std::string_view>& fields) {
  fields.clear();
  while (true) {
    const std::size_t comma = line.find(',');
    fields.push_back(trimmed(line.substr(0, comma)));
    if (comma == std::string_view::npos) return;
    line.remove_prefix(comma + 1);
  }
}

/// As it can be shown in one line of a terminal.
std::string quoted(std::string_view text) {
  constexpr std::size_t longest = 24;
  std::string shown = "\"";
  for (const char c : text.substr(0, longest)) {
    shown += std::isprint(static_cast<unsigned char>(c)) ? c : '?';
  }
  return shown + (text.size() > longest ? "...\"" : "\"");
}

}  // namespace

SeriesReader::SeriesReader(const std::string& path)
    : path_(path), file_(openForReading(path), std::fclose), buffer_(bufferSize) {
  readHeader();
}

void SeriesReader::refuse(const std::string& reason) const {
  throw InputError(path_ + ": line " + std::to_string(lineNumber_) + ": " + reason);
}

void SeriesReader::refuse(Column column, const std::string& reason) const {
  refuse("column " + std::string(columnNames[column]) + ": " + reason);
}

/// False at the end of the file.
bool SeriesReader::readLine() {
  std::size_t searched = bufferStart_;
  while (true) {
    const char* start = buffer_.data() + bufferStart_;
    const auto* end = static_cast<const char*>(
        std::memchr(buffer_.data() + searched, '\n', bufferEnd_ - searched));
    if (end) {
      line_ = {start, static_cast<std::size_t>(end - start)};
      bufferStart_ += line_.size() + 1;
      lineHasEnd_ = true;
      break;
    }
    std::memmove(buffer_.data(), start, bufferEnd_ - bufferStart_);
    bufferEnd_ -= bufferStart_;
    bufferStart_ = 0;
    searched = bufferEnd_;
    const std::size_t count =
        std::fread(buffer_.data() + bufferEnd_, 1, buffer_.size() - bufferEnd_, file_.get());
    if (std::ferror(file_.get())) {
      ++lineNumber_;
      refuse("cannot be read; copy the file again");
    }
    if (count == 0) {
      if (bufferEnd_ == 0) return false;
      if (bufferEnd_ == buffer_.size()) {
        ++lineNumber_;
        refuse("longer than any row; give a colour series as text");
      }
      line_ = {buffer_.data(), bufferEnd_};
      bufferStart_ = bufferEnd_;
      lineHasEnd_ = false;
      break;
    }
    bufferEnd_ += count;
  }
  ++lineNumber_;
  if (std::memchr(line_.data(), '\0', line_.size())) {
    refuse("not text; give a colour series as text");
  }
  if (line_.ends_with('\r')) line_.remove_suffix(1);
  return true;
}

void SeriesReader::readHeader() {
  readLine();
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (line_.starts_with(byteOrderMark)) line_.remove_prefix(byteOrderMark.size());
  split(line_, fields_);
  fieldCount_ = fields_.size();
  for (std::size_t field = 0; field < fieldCount_; ++field) {
    for (std::size_t column = 0; column < columnCount; ++column) {
      if (!sameName(fields_[field], columnNames[column])) continue;
      if (positions_[column]) {
        refuse(static_cast<Column>(column), "named twice; leave one of them out");
      }
      positions_[column] = field;
    }
  }
  for (const Column column : {timeColumn, red, green, blue}) {
    if (!positions_[column]) {
      refuse(column, "missing; the first line must name time, R, G and B, and is " + quoted(line_));
    }
  }
}

double SeriesReader::number(std::string_view field, Column column) const {
  double value = 0;
  const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
  if (field.empty()) refuse(column, "empty; fill it in or take the row out");
  if (error != std::errc{} || end != field.data() + field.size()) {
    refuse(column, quoted(field) + " is not a number; correct it or take the row out");
  }
  if (!std::isfinite(value)) {
    refuse(column, quoted(field) + " is not finite; correct it or take the row out");
  }
  return value;
}

double SeriesReader::colour(Column column) const {
  const std::string_view field = fields_[*positions_[column]];
  const double value = number(field, column);
  if (value < 0 || value > largestColour) {
    refuse(column, quoted(field) + " is outside 0 to 255; scale the colours to that range");
  }
  return value;
}

std::optional<SeriesRow> SeriesReader::next() {
  if (!readLine()) return std::nullopt;
  if (trimmed(line_).empty()) {
    const std::size_t blankLine = lineNumber_;
    while (readLine()) {
      if (trimmed(line_).empty()) continue;
      lineNumber_ = blankLine;
      refuse("blank between rows; take it out");
    }
    return std::nullopt;
  }

  split(line_, fields_);
  if (!lineHasEnd_ &&
      (fields_.size() < fieldCount_ || (fields_.size() == fieldCount_ && fields_.back().empty()))) {
    cutOff_ = true;
    return std::nullopt;
  }
  if (fields_.size() != fieldCount_) {
    refuse(std::to_string(fields_.size()) + " fields where the first line names " +
           std::to_string(fieldCount_) + "; complete the row or take it out");
  }

  SeriesRow row;
  const std::string_view timeField = fields_[*positions_[timeColumn]];
  row.time = number(timeField, timeColumn);
  // Cameras stamp two frames alike now and then; the later one stands.
  if (lastTime_ && row.time < *lastTime_) {
    refuse(timeColumn, quoted(timeField) + " is before the row above; put the rows in order");
  }
  const double step = lastTime_ ? (row.time - *lastTime_) / millisecondsPerSecond : 0;
  if (step > longestStepBetweenFrames) {
    refuse(timeColumn, formatText("a step of %.6g s from the row above; times are milliseconds, "
                                  "correct them or cut the series there",
                                  step));
  }
  lastTime_ = row.time;
  row.colours.red = static_cast<float>(colour(red));
  row.colours.green = static_cast<float>(colour(green));
  row.colours.blue = static_cast<float>(colour(blue));
  row.colours.hr = positions_[hr] ? static_cast<float>(colour(hr)) : row.colours.red;
  return row;
}

SeriesSource::SeriesSource(const std::string& path) : path_(path), reader_(path) {
  SeriesReader check(path);
  while (const auto row = check.next()) {
    ++size_;
    lastTime_ = row->time;
  }
  if (size_ == 0) throw InputError(path + ": no rows; give a series with a row for each frame");
  cutOff_ = check.cutOff();
  next_ = reader_.next();
  if (next_) firstTime_ = next_->time;
}

bool SeriesSource::advance() {
  if (!next_) return false;
  current_ = *next_;
  next_ = reader_.next();
  return true;
}

std::optional<double> SeriesSource::nextTime() const {
  if (!next_) return std::nullopt;
  return secondsOf(*next_);
}

void SeriesSource::deliver(SampleBufferDelegate& delegate) {
  delegate.captureOutput(current_.colours);
}

std::string SeriesSource::remark() const {
  std::string text;
  if (cutOff_) text = "; cut off in the middle of its last row, the rows before it were used";
  const double span = (lastTime_ - firstTime_) / millisecondsPerSecond;
  if (size_ > mostRowsPerSecond && span < 1) {
    text += formatText("; all its rows lie within %.3g s, times are milliseconds: ", span) +
            "if they are given in seconds, multiply them by 1000";
  }
  return text.empty() ? text : path_ + ":" + text.substr(1);
}

}  // namespace veyla
