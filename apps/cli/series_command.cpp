#include "apps/cli/series_command.h"

#include <cmath>
#include <cstdio>

#include "apps/cli/decimal.h"
#include "apps/cli/exit_status.h"
#include "apps/cli/frame_averager.h"
#include "apps/cli/settings_source.h"
#include "platform/linux/output_file.h"
#include "platform/linux/recording_source.h"

namespace veyla {

namespace {

std::string rowOf(double seconds, const FrameSample& sample) {
  constexpr double microsecondsPerSecond = 1e6;
  std::string row;
  appendDecimal(row, std::round(seconds * microsecondsPerSecond) / 1000);
  for (const float value : {sample.red, sample.green, sample.blue, sample.hr}) {
    row += ',';
    appendDecimal(row, value);
  }
  row += '\n';
  return row;
}

}  // namespace

ExitStatus runSeries(const SeriesOptions& options) {
  return exitStatusOf([&] {
    const auto recording = openRecording(options.input);
    const SettingsSource settings(options.settingsFolder, options.device);
    OutputFile output(options.output);
    FrameAverager averager(settings.resources(), options.device);
    complainWhenStopped("while reading " + options.input + "; " +
                        (options.output == "-" ? "the series breaks off where it stands"
                                               : options.output + " is not written"));
    output.write("time,R,G,B,hr\n");
    while (recording->advance()) {
      recording->deliver(averager);
      output.write(rowOf(recording->time(), averager.frame().record));
    }
    output.commit();
    if (const std::string remark = recording->remark(); !remark.empty()) {
      complain(remark);
    }
    return ExitStatus::done;
  });
}

}  // namespace veyla
