#include "apps/cli/series_command.h"

#include <cmath>
#include <cstdio>

#include "acquisition/frame_averaging.h"
#include "acquisition/settings.h"
#include "apps/cli/decimal.h"
#include "apps/cli/exit_status.h"
#include "apps/cli/settings_source.h"
#include "platform/linux/output_file.h"
#include "platform/linux/recording_source.h"
#include "platform/portable/json.h"

namespace veyla {

namespace {

/// The cells that a device of this profile averages.
std::vector<int> measuredCells(const Resources& resources, const std::string& profile) {
  const auto text = resources.read("Spo2Settings", "json");
  const Value resource = NlohmannJsonParser().parse(text.value_or("")).value_or(Value());
  std::vector<int> cells;
  if (const Value* entry = Utils::entryFor(profile, resource)) {
    Utils::appendCells((*entry)["grids"], cells);
  }
  return cells;
}

/// Averages frames as the measurement does.
class FrameAverager : public SampleBufferDelegate {
 public:
  FrameAverager(const Resources& resources, const std::string& profile)
      : averagesWholeFrame_(profile == wholeFrameProfile),
        cells_(measuredCells(resources, profile)) {}

  void captureOutput(PixelBuffer& didOutputSampleBuffer) override {
    const PixelBuffer& frame = didOutputSampleBuffer;
    sample_ = averagesWholeFrame_
                  ? averageWholeFrame(frame.baseAddress(), frame.width(), frame.height(),
                                      frame.bytesPerRow())
                  : averager_.average(frame.baseAddress(), frame.width(), frame.height(), cells_);
  }
  void captureOutput(const FrameSample& didOutputSample) override {
    sample_ = averagesWholeFrame_ ? wholeFrameRecord(didOutputSample) : didOutputSample;
  }
  void captureOutput(DroppedSample) override {}

  const FrameSample& sample() const { return sample_; }

 private:
  bool averagesWholeFrame_;
  std::vector<int> cells_;
  GridAverager averager_;
  FrameSample sample_;
};

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
    FrameAverager averager(settings.resources(), Utils::profileOf(options.device));
    output.write("time,R,G,B,hr\n");
    while (recording->advance()) {
      recording->deliver(averager);
      output.write(rowOf(recording->time(), averager.sample()));
    }
    output.commit();
    if (const std::string remark = recording->remark(); !remark.empty()) {
      complain(remark);
    }
    return ExitStatus::done;
  });
}

}  // namespace veyla
