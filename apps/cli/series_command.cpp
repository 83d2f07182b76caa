#include "apps/cli/series_command.h"

#include <cmath>
#include <cstdio>

#include "acquisition/frame_averaging.h"
#include "apps/cli/decimal.h"
#include "apps/cli/exit_status.h"
#include "platform/linux/output_file.h"
#include "platform/linux/recording_source.h"

namespace veyla {

namespace {

constexpr int firstCell = 1;
constexpr int lastCell = 16;

/// Averages frames as the measurement does.
class FrameAverager : public SampleBufferDelegate {
 public:
  explicit FrameAverager(const std::vector<int>& cells) : cells_(cells) {}

  void captureOutput(PixelBuffer& didOutputSampleBuffer) override {
    const PixelBuffer& frame = didOutputSampleBuffer;
    sample_ = averageGridCells(frame.baseAddress(), frame.width(), frame.height(), cells_);
  }
  void captureOutput(const FrameSample& didOutputSample) override { sample_ = didOutputSample; }
  void captureOutput(DroppedSample) override {}

  const FrameSample& sample() const { return sample_; }

 private:
  const std::vector<int>& cells_;
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

void requireCells(const std::vector<int>& cells) {
  if (cells.empty()) throw UsageError("cells: none given; give numbers from 1 to 16");
  for (const int cell : cells) {
    if (cell < firstCell || cell > lastCell) {
      throw UsageError("cells: " + std::to_string(cell) + " is not a cell; give 1 to 16");
    }
  }
}

}  // namespace

ExitStatus runSeries(const SeriesOptions& options) {
  return exitStatusOf([&] {
    requireCells(options.cells);
    const auto recording = openRecording(options.input);
    OutputFile output(options.output);
    FrameAverager averager(options.cells);
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
