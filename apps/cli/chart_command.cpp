#include "apps/cli/chart_command.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "apps/cli/choices.h"
#include "apps/cli/complain.h"
#include "apps/cli/history_platform.h"
#include "apps/cli/kept_store.h"
#include "apps/cli/number_range.h"
#include "apps/cli/output_apart.h"
#include "apps/cli/terminal.h"
#include "history/chart_results_view_controller.h"
#include "history/history_store.h"
#include "platform/action_sheet.h"
#include "platform/linux/gnuplot_chart.h"
#include "platform/linux/gnuplot_program.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/names.h"
#include "platform/linux/output_file.h"
#include "platform/linux/pictures.h"

namespace veyla {

namespace {

constexpr std::array<std::string_view, 4> periodNames{"week", "month", "3months", "all"};

std::optional<PictureFormat> pictureFormat(const std::string& output) {
  if (output.empty()) return std::nullopt;
  const std::string ending = endingOf(output);
  if (ending == ".png") return PictureFormat::png;
  if (ending == ".svg") return PictureFormat::svg;
  throw UsageError("-o: " + output + " does not end in .png or .svg; name a picture of these");
}

/// Taps the action of a sheet that a command's option names.
class OptionSheet : public ActionSheetView {
 public:
  explicit OptionSheet(std::string_view title) : title_(title) {}

  void present(const ActionSheet& sheet) override {
    for (const SheetAction& action : sheet.actions) {
      if (action.title == title_) action.action();
    }
  }
  void dismiss() override {}

 private:
  std::string_view title_;
};

/// The title of the sheet's action for a label, or for none.
std::string labelActionOf(const std::string& name) {
  const std::size_t choice = indexIn(labelChoices(), "--label", name);
  return choice < labelNames.size() ? std::string(labelNames[choice]) : "None";
}

/// Hands the history over to the first that asks for it: a copy of a long one takes a tenth of its
/// chart.
class HistoryHandedOver : public MemoryKeyValueStore {
 public:
  std::optional<Value> value(std::string_view key) override {
    const auto found = values.find(key);
    if (found == values.end()) return std::nullopt;
    return std::move(values.extract(found).mapped());
  }
};

/// Tells of stored elements that the charts have to leave out, by their numbers in the list.
ExitStatus tellDamage(const std::filesystem::path& file, const Value::Array& entries) {
  const auto isDamaged = [](const Value& entry) { return !faultOf(entry).empty(); };
  const auto newest = std::find_if(entries.rbegin(), entries.rend(), isDamaged);
  if (newest == entries.rend()) return ExitStatus::done;
  const std::string number = std::to_string(newest - entries.rbegin() + 1);
  std::string line =
      file.string() + ": entry " + number + " of the history is left out: " + faultOf(*newest);
  if (const auto more = std::count_if(newest + 1, entries.rend(), isDamaged); more > 0) {
    line += " (and " + std::to_string(more) + " more entries)";
  }
  complain(line + "; delete it with veyla history delete " + number);
  return ExitStatus::unreadableInput;
}

/// Tells, in a line, of daily means that lie outside the chart's range; `value` is what one is.
void tellOutside(const GnuplotChart& chart, const char* value) {
  if (!chart.data()) return;
  const ChartAxis& axis = chart.settings().rightAxis;
  const NumberRange range{axis.minimum.value(), axis.maximum.value()};
  const auto& points = chart.data()->entries;
  const auto count = std::count_if(points.begin(), points.end(), [&](const ChartDataEntry& point) {
    return !range.holds(point.y);
  });
  if (count == 0) return;
  const bool isOne = count == 1;
  complain(std::to_string(count) + " " + value + (isOne ? " lies" : "s lie") + " outside " +
           range.text() + (isOne ? " and is" : " and are") + " not drawn");
}

std::string headingOf(const ChartResultsViewController& screen, const char* dash) {
  std::string heading(ChartResultsViewController::periodTitles.at(
      static_cast<std::size_t>(screen.selectedPeriod())));
  if (screen.selectedLabel() >= 0) {
    heading += std::string(" ") + dash + " ";
    heading += labelNames.at(static_cast<std::size_t>(screen.selectedLabel()));
  }
  return heading;
}

/// The terminal's legend of a chart.
std::string legendOf(const LineDataSet& data, const TextChartStyle& style,
                     const Terminal& terminal) {
  const std::string mark = textMark(style) + " ";
  std::string legend = wrapped(mark + data.label, terminal);
  if (!style.color) return legend;
  const bool isRed = data.color.red > data.color.blue;
  return (isRed ? "\x1b[1;31m" : "\x1b[1;34m") + mark + "\x1b[0m" + legend.substr(mark.size());
}

/// Without the changes of colour.
std::string plain(std::string line) {
  for (std::size_t begin = 0; (begin = line.find("\x1b[", begin)) != std::string::npos;) {
    const std::size_t end = line.find_first_not_of("0123456789;", begin + 2);
    if (end != std::string::npos && line[end] == 'm') {
      line.erase(begin, end + 1 - begin);
    } else {
      ++begin;
    }
  }
  return line;
}

/// Without the page feed, the blanks at the ends of lines and the empty lines around the drawing.
std::string trimmed(const std::string& drawing) {
  std::vector<std::string> lines;
  std::istringstream rest(drawing);
  for (std::string line; std::getline(rest, line);) {
    std::erase(line, '\f');
    line.erase(line.find_last_not_of(' ') + 1);
    const bool isEmpty = plain(line).find_first_not_of(' ') == std::string::npos;
    if (!lines.empty() || !isEmpty) lines.push_back(isEmpty ? "" : line);
  }
  while (!lines.empty() && lines.back().empty()) lines.pop_back();
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

std::string drawnInTerminal(std::span<const GnuplotChart> charts,
                            const ChartResultsViewController& screen) {
  constexpr std::size_t fewestColumns = 40;
  constexpr std::size_t mostColumns = 240;
  const Terminal terminal = terminalBehind(STDOUT_FILENO);
  const TextChartStyle style{.columns = std::clamp(terminal.columns, fewestColumns, mostColumns),
                             .color = terminal.color,
                             .unicode = terminal.unicode};
  std::string text = wrapped(headingOf(screen, terminal.unicode ? "–" : "-"), terminal) + "\n";
  for (const GnuplotChart& chart : charts) {
    text += "\n";
    if (!chart.data()) {
      text += wrapped(chart.settings().noDataText, terminal) + "\n";
      continue;
    }
    text += legendOf(*chart.data(), style, terminal) + "\n";
    text += trimmed(runGnuplot(textScript(charts, chart, style)));
  }
  return text;
}

/// Whether gnuplot wrote its last bytes.
bool isWhole(const std::string& picture, PictureFormat format) {
  const std::string_view end = format == PictureFormat::png ? "IEND" : "</svg>";
  constexpr std::size_t furthestFromEnd = 32;
  return picture.size() > furthestFromEnd &&
         picture.find(end, picture.size() - furthestFromEnd) != std::string::npos;
}

class DaysInDigits : public AxisValueFormatter {
 public:
  explicit DaysInDigits(const IcuText& text) : text_(text) {}

  std::string stringForValue(double value, const ChartAxis& /*axis*/) const override {
    return text_.dayInDigits(Date{value});
  }

 private:
  const IcuText& text_;
};

bool isDrawable(const ChartAxis& axis, double value) {
  if (!axis.valueFormatter) return true;
  const std::string label = axis.valueFormatter->stringForValue(value, axis);
  return pictures().drawable(label) == label;
}

/// Labels in ASCII's digits for those whose letters no font here has; tells of it once.
void useLettersThatAreThere(std::span<GnuplotChart> charts, const IcuText& text) {
  bool isTold = false;
  for (GnuplotChart& chart : charts) {
    if (!chart.data()) continue;
    LineChartSettings settings = chart.settings();
    const auto& points = chart.data()->entries;
    const bool showsDays = std::all_of(points.begin(), points.end(), [&](const auto& point) {
      return isDrawable(settings.xAxis, point.x);
    });
    constexpr double everyDigit = 1234567890;
    const bool showsNumbers = isDrawable(settings.rightAxis, everyDigit);
    if (!showsDays) settings.xAxis.valueFormatter = std::make_shared<DaysInDigits>(text);
    if (!showsNumbers) settings.rightAxis.valueFormatter = nullptr;
    chart.configure(settings);
    if ((showsDays && showsNumbers) || std::exchange(isTold, true)) continue;
    complain(
        "no font here has the letters of this language: days are drawn in digits; install a font "
        "that has them, as of fonts-noto or fonts-noto-cjk");
  }
}

std::string drawnAsPicture(std::span<const GnuplotChart> charts,
                           const ChartResultsViewController& screen, PictureFormat format) {
  const std::string heading = headingOf(screen, "–");
  const std::string picture = runGnuplot(pictureScript(charts, heading, format));
  if (!isWhole(picture, format)) {
    throw OutputError(
        "gnuplot: its picture is not whole; install it again: apt-get install gnuplot-nox");
  }
  return format == PictureFormat::svg ? polishedSvg(picture, heading) : picture;
}

ExitStatus chart(const ChartOptions& options) {
  const std::size_t period = indexIn(periodNames, "--period", options.period);
  const std::string label = options.label.empty() ? "" : labelActionOf(options.label);
  const auto format = pictureFormat(options.output);
  const auto file = dataFolderOf(options.dataFolder) / SqliteKeyValueStore::fileName;
  if (format) requireApart("-o", options.output, file);

  Value values;
  if (const auto store = openKeptStore(options.dataFolder, SqliteKeyValueStore::Use::read)) {
    values = store->value(Utils::valuesKey).value_or(Value());
    if (store->failure()) throw StoreError(*store->failure());
  }
  OutputFile output(format ? options.output : "-", Readers::ownerAlone);
  HistoryHandedOver history;
  HistoryPlatform platform(history);

  std::array<GnuplotChart, 2> charts;
  OptionSheet sheet(label);
  ChartResultsViewController screen(platform.display(), sheet, charts[0], charts[1]);
  screen.viewDidLoad();
  screen.viewWillAppear();
  if (!label.empty()) screen.tapButtonLabels();
  const ExitStatus status = values.array() ? tellDamage(file, *values.array()) : ExitStatus::done;
  // The screen reads all of the history at each choice: it comes before the last one.
  history.values.emplace(Utils::valuesKey, std::move(values));
  screen.tapSegmentPeriod(static_cast<std::int32_t>(period));

  if (format == PictureFormat::png) useLettersThatAreThere(charts, platform.text());
  output.write(format ? drawnAsPicture(charts, screen, *format) : drawnInTerminal(charts, screen));
  output.commit();
  tellOutside(charts[0], "heart rate");
  tellOutside(charts[1], "SpO2 value");
  return status;
}

}  // namespace

ExitStatus runChart(const ChartOptions& options) {
  return exitStatusOf([&] { return chart(options); });
}

}  // namespace veyla
