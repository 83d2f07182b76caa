#include "apps/cli/reference.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <string_view>

#include "platform/format.h"
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
  if (error != std::errc() || end != field.data() + field.size()) {
    throw InputError(formatText("%s: line %zu: \"%.*s\" is no number; expected time,heartrate,spo2",
                                path.c_str(), lineNumber, static_cast<int>(field.size()),
                                field.data()));
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
  std::ifstream file(path);
  std::string text;
  if (!std::getline(file, text) || !text.starts_with("time,heartrate,spo2")) {
    throw InputError(path +
                     ": does not begin with time,heartrate,spo2; give a reference of that form");
  }
  const auto add = [](Rows& rows, double time, std::optional<double> value) {
    if (!value) return;
    const double since = rows.empty() ? 1 : std::min(time - rows.back().time, longestSince);
    rows.push_back({time, since, *value});
  };
  for (std::size_t lineNumber = 2; std::getline(file, text); ++lineNumber) {
    if (text.ends_with('\r')) text.pop_back();
    if (text.empty()) continue;
    std::string_view line = text;
    const auto time = numberIn(nextField(line), path, lineNumber);
    if (!time) throw InputError(formatText("%s: line %zu: no time", path.c_str(), lineNumber));
    add(heartrates_, *time, numberIn(nextField(line), path, lineNumber));
    add(spo2s_, *time, numberIn(nextField(line), path, lineNumber));
  }
}

std::optional<double> Reference::heartrate(double from, double to) const {
  return mean(heartrates_, from, to);
}

std::optional<double> Reference::spo2(double from, double to) const {
  return mean(spo2s_, from, to);
}

std::optional<double> Reference::mean(const Rows& rows, double from, double to) {
  double sum = 0;
  double weight = 0;
  for (const Row& row : rows) {
    if (row.time < from || row.time > to) continue;
    sum += row.value * row.since;
    weight += row.since;
  }
  if (weight <= 0) return std::nullopt;
  return sum / weight;
}

}  // namespace veyla
