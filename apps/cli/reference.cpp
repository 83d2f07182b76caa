#include "apps/cli/reference.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>
#include <string_view>

#include "platform/format.h"
#include "platform/linux/input_file.h"
#include "platform/linux/recording_source.h"

namespace veyla {

namespace {

/// A row after a longer silence speaks for this many seconds only.
constexpr double longestSince = 3;

/// The number in the field, or nothing for an empty one.
std::optional<double> numberIn(std::string_view field, const std::string& path,
                               std::size_t lineNumber) {
  if (field.empty()) return std::nullopt;
  double number = 0;
  const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), number);
  if (error != std::errc() || end != field.data() + field.size() || !std::isfinite(number)) {
    throw InputError(
        formatText("%s: line %zu: \"%.*s\" is no finite number; expected time,heartrate,spo2",
                   path.c_str(), lineNumber, static_cast<int>(field.size()), field.data()));
  }
  return number;
}

std::string_view nextField(std::string_view& line) {
  const std::string_view field = line.substr(0, line.find(','));
  line.remove_prefix(std::min(field.size() + 1, line.size()));
  return field;
}

}  // namespace

Reference::Reference(const std::string& path) {
  requireInputFile(path);
  std::istringstream file(readInputFile(path));
  std::string text;
  std::getline(file, text);
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(byteOrderMark)) text.erase(0, byteOrderMark.size());
  if (!text.starts_with("time,heartrate,spo2")) {
    throw InputError(path +
                     ": does not begin with time,heartrate,spo2; give a reference of that form");
  }
  double lastTime = 0;
  std::size_t lineNumber = 2;
  const auto add = [&](Rows& rows, double time, std::optional<double> value) {
    if (!value) return;
    if (*value <= 0) {
      throw InputError(formatText("%s: line %zu: %g was hardly measured; leave the field empty",
                                  path.c_str(), lineNumber, *value));
    }
    const double since = rows.empty() ? 1 : std::min(time - rows.back().time, longestSince);
    rows.push_back({time, since, *value});
  };
  for (; std::getline(file, text); ++lineNumber) {
    if (text.ends_with('\r')) text.pop_back();
    if (text.empty()) continue;
    std::string_view line = text;
    const auto time = numberIn(nextField(line), path, lineNumber);
    if (!time) throw InputError(formatText("%s: line %zu: no time", path.c_str(), lineNumber));
    if (lineNumber > 2 && *time < lastTime) {
      throw InputError(formatText("%s: line %zu: its time goes back; put the rows in their order",
                                  path.c_str(), lineNumber));
    }
    lastTime = *time;
    add(heartrates_, *time, numberIn(nextField(line), path, lineNumber));
    add(spo2s_, *time, numberIn(nextField(line), path, lineNumber));
  }
  if (heartrates_.empty() && spo2s_.empty()) {
    throw InputError(path + ": holds no value; give a reference with rows");
  }
}

std::optional<double> Reference::heartrate(double from, double to) const {
  return mean(heartrates_, from, to, Weight::row);
}

std::optional<double> Reference::heartratePerTime(double from, double to) const {
  return mean(heartrates_, from, to, Weight::time);
}

std::optional<double> Reference::spo2(double from, double to) const {
  return mean(spo2s_, from, to, Weight::row);
}

std::optional<double> Reference::mean(const Rows& rows, double from, double to, Weight by) {
  double sum = 0;
  double weight = 0;
  for (const Row& row : rows) {
    if (row.time < from || row.time > to) continue;
    const double share = by == Weight::time ? row.since : 1;
    sum += row.value * share;
    weight += share;
  }
  if (weight <= 0) return std::nullopt;
  return sum / weight;
}

}  // namespace veyla
