#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include "acquisition/settings.h"
#include "analysis/heartrate_processing.h"
#include "analysis/spo2_processing.h"
#include "benchmarks/bench_platform.h"

namespace veyla {
namespace {

/// A platform with the built-in settings and a record that holds `frames` frames of a pulse.
class Recorded {
 public:
  explicit Recorded(int frames) {
    Utils::setSpo2Settings(Utils::loadDefaultSettings("Spo2Settings"));
    Utils::setHeartrateSettings(Utils::loadDefaultSettings("HeartrateSettings"));
    Data& data = Data::instance();
    data.reset();
    for (int i = 0; i < frames; ++i) {
      const double turns = 1.2 * i / 15.0;
      const auto pulse =
          static_cast<float>(std::sin(2 * std::numbers::pi * turns) + 0.2 * std::sin(37.1 * i));
      data.addRedValue(200 + pulse);
      data.addGreenValue(60 + 3 * pulse);
      data.addBlueValue(40 + pulse);
      data.addHRValue(200 + pulse);
    }
  }

  BenchPlatform& platform() { return platform_; }

 private:
  MemoryKeyValueStore store_;
  BenchPlatform platform_{store_};
};

void heartrateEstimate(benchmark::State& state) {
  Recorded recorded(static_cast<int>(state.range(0)));
  auto& estimator = HeartrateProcessing::instance();
  for (auto _ : state) benchmark::DoNotOptimize(estimator.calculateHeartrate());
}
// The second record is that of an hour: an estimate must not cost more for it.
BENCHMARK(heartrateEstimate)->Arg(600)->Arg(54000);

/// One 1024-point transform of the same library.
void heartrateEstimate_yardstick(benchmark::State& state) {
  KissRealFft fft;
  std::array<double, RealFft::length> samples{};
  std::array<double, RealFft::binCount> real{};
  std::array<double, RealFft::binCount> imaginary{};
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] = std::sin(0.5 * static_cast<double>(i));
  for (auto _ : state) {
    fft.forward(samples, real, imaginary);
    benchmark::DoNotOptimize(real);
  }
}
BENCHMARK(heartrateEstimate_yardstick);

void spo2Estimate(benchmark::State& state) {
  Recorded recorded(static_cast<int>(state.range(0)));
  auto& estimator = Spo2Processing::instance();
  for (auto _ : state) benchmark::DoNotOptimize(estimator.calculateSpo2({}));
}
BENCHMARK(spo2Estimate)->Arg(600)->Arg(54000);

/// Merely finds the ends of three windows of the same length.
void spo2Estimate_yardstick(benchmark::State& state) {
  std::vector<float> window(90);
  for (std::size_t i = 0; i < window.size(); ++i) window[i] = std::sin(static_cast<float>(i));
  for (auto _ : state) {
    for (int channel = 0; channel < 3; ++channel) {
      benchmark::DoNotOptimize(window.data());
      benchmark::DoNotOptimize(std::minmax_element(window.begin(), window.end()));
    }
  }
}
BENCHMARK(spo2Estimate_yardstick);

}  // namespace
}  // namespace veyla
