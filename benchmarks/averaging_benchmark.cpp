#include <benchmark/benchmark.h>

#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include "acquisition/frame_averaging.h"

namespace veyla {
namespace {

std::vector<std::uint8_t> noisyFrame(std::size_t width, std::size_t height) {
  std::mt19937 random(1);
  std::vector<std::uint8_t> pixels(4 * width * height);
  for (auto& byte : pixels) byte = static_cast<std::uint8_t>(100 + random() % 64);
  return pixels;
}

void sizes(benchmark::internal::Benchmark* of) {
  of->Args({192, 144})->Args({640, 480})->Args({1920, 1080});
}

struct Frame {
  std::size_t width;
  std::size_t height;
  std::vector<std::uint8_t> pixels;

  explicit Frame(const benchmark::State& state)
      : width(static_cast<std::size_t>(state.range(0))),
        height(static_cast<std::size_t>(state.range(1))),
        pixels(noisyFrame(width, height)) {}
};

void wholeFrame(benchmark::State& state) {
  const Frame frame(state);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        averageWholeFrame(frame.pixels.data(), frame.width, frame.height, 4 * frame.width));
  }
}
BENCHMARK(wholeFrame)->Apply(sizes);

/// Merely reads the bytes that the whole-frame path sums: every blue, green and red one.
void wholeFrame_yardstick(benchmark::State& state) {
  const Frame frame(state);
  for (auto _ : state) {
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < frame.pixels.size(); i += 4) {
      sum += frame.pixels[i];
      sum += frame.pixels[i + 1];
      sum += frame.pixels[i + 2];
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(wholeFrame_yardstick)->Apply(sizes);

void gridCells(benchmark::State& state) {
  const Frame frame(state);
  std::vector<int> cells(16);
  std::iota(cells.begin(), cells.end(), 1);
  GridAverager averager;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        averager.average(frame.pixels.data(), frame.width, frame.height, cells));
  }
}
BENCHMARK(gridCells)->Apply(sizes);

/// Merely reads the bytes that the grid path samples.
void gridCells_yardstick(benchmark::State& state) {
  const Frame frame(state);
  for (auto _ : state) {
    std::uint32_t sum = 0;
    for (std::size_t y = 0; y < frame.height; y += 4) {
      const std::uint8_t* row = frame.pixels.data() + 4 * frame.width * y;
      for (std::size_t x = 0; x < 4 * frame.width; x += 16) {
        sum += row[x];
        sum += row[x + 1];
        sum += row[x + 2];
      }
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(gridCells_yardstick)->Apply(sizes);

}  // namespace
}  // namespace veyla
