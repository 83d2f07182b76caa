#include "analysis/finger_coach.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>
#include <numbers>
#include <random>

#include "acquisition/frame_averaging.h"

namespace veyla {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using enum FingerState;

constexpr double pi = std::numbers::pi;

struct Rgb {
  double red = 0;
  double green = 0;
  double blue = 0;
};

/// What stands at a place of the picture, both in 0 to 1, at a moment in seconds.
using Scene = std::function<Rgb(double x, double y, double time)>;

/// As a camera's cells show it: whole steps of 8 bits, each cell at a point of its own.
FrameColours frameOf(const Scene& scene, double time) {
  std::array<double, FrameCells::count> red{};
  std::array<double, FrameCells::count> green{};
  std::array<double, FrameCells::count> blue{};
  FrameColours frame;
  for (std::size_t cell = 0; cell < FrameCells::count; ++cell) {
    const double x = (static_cast<double>(cell % 4) + 0.5) / 4;
    const double y = (static_cast<double>(cell / 4) + 0.5) / 4;
    const Rgb rgb = scene(x, y, time);
    const auto step = [](double value) { return std::floor(std::clamp(value, 0.0, 255.0)); };
    red[cell] = step(rgb.red);
    green[cell] = step(rgb.green);
    blue[cell] = step(rgb.blue);
    frame.red += static_cast<float>(red[cell] / FrameCells::count);
    frame.green += static_cast<float>(green[cell] / FrameCells::count);
    frame.blue += static_cast<float>(blue[cell] / FrameCells::count);
  }
  frame.cells = cellsOf(red, green, blue);
  return frame;
}

/// A lit fingertip with a hot spot: red falls by a hundredth with each beat.
Rgb finger(double x, double y, double time) {
  const double spot = 1.1 - 0.3 * x - 0.2 * y;
  const double pulse = 1 - 0.01 * std::pow(std::sin(pi * 1.2 * time), 2);
  return {200 * spot * pulse, 40 * spot * pulse, 30 * spot * pulse};
}

/// A picture of many shapes and like colours, seen from `across` picture widths to the right.
Rgb photograph(double x, double y, double across) {
  const double u = x + across;
  const double light =
      120 + 50 * std::sin(9 * u + 3 * y) + 40 * std::sin(5 * y - 4 * u + 1) + 20 * std::sin(23 * u);
  return {light, 0.8 * light, 0.6 * light};
}

void watch(FingerCoach& coach, const Scene& scene, double from, double to) {
  for (double time = from; time < to - 1e-9; time += 1.0 / 15) coach.look(frameOf(scene, time));
}

std::optional<FingerState> after(double seconds, const Scene& scene) {
  FingerCoach coach;
  watch(coach, scene, 0, seconds);
  return coach.state();
}

TEST(FingerCoachTest, WhatIsNoFingerIsToldSoonAndNeverCalledGood) {
  std::mt19937 random(1);
  std::normal_distribution<double> noise;
  const auto plain = [](Rgb colour) { return [=](double, double, double) { return colour; }; };
  const std::pair<const char*, Scene> scenes[] = {
      {"black", plain({0, 0, 0})},
      {"black with noise",
       [&](double, double, double) {
         return Rgb{8 + 3 * noise(random), 8 + 3 * noise(random), 8 + 3 * noise(random)};
       }},
      {"white", plain({255, 255, 255})},
      {"pale with noise",
       [&](double, double, double) {
         const double shade = 4 * noise(random);
         return Rgb{220 + shade, 180 + shade, 150 + shade};
       }},
      {"grey with noise",
       [&](double, double, double) {
         const double light = 60 + 2 * noise(random);
         return Rgb{light, light, 0.95 * light};
       }},
      {"violet, slowly panned",
       [](double x, double, double time) {
         const double light = 160 + 40 * std::sin(2 * x + 0.1 * time);
         return Rgb{light, 0.6 * light, 0.8 * light};
       }},
      {"red", plain({255, 0, 0})},
      {"colour bars",
       [&](double x, double, double) {
         const double shade = noise(random);
         return x < 0.25  ? Rgb{200 + shade, 20, 20}
                : x < 0.5 ? Rgb{20, 200 + shade, 20}
                : x < 0.8 ? Rgb{20, 20, 200 + shade}
                          : Rgb{200 + shade, 200, 20};
       }},
      {"still photograph", [](double x, double y, double) { return photograph(x, y, 0.3); }},
      {"slow pan", [](double x, double y, double time) { return photograph(x, y, 0.1 * time); }},
      {"moving lamp",
       [](double x, double y, double time) {
         const double dx = x - 0.5 - 0.4 * std::sin(2 * time);
         const double dy = y - 0.5 - 0.4 * std::cos(1.3 * time);
         const double light = 60 + 150 * std::exp(-8 * (dx * dx + dy * dy));
         return Rgb{light, 0.6 * light, 0.5 * light};
       }},
      {"flicker",
       [](double, double, double time) {
         const double light = std::fmod(time, 0.8) < 0.4 ? 60 : 180;
         return Rgb{light, light / 4, light / 4};
       }},
  };
  for (const auto& [name, scene] : scenes) {
    SCOPED_TRACE(name);
    FingerCoach coach;
    watch(coach, scene, 0, 1.5);
    EXPECT_THAT(coach.state(), AnyOf(noFinger, moving));
    watch(coach, scene, 1.5, 25);
    for (const auto& span : coach.spans()) EXPECT_THAT(span.state, testing::Ne(good));
  }
}

TEST(FingerCoachTest, AFingerIsGoodWeakOrTooBrightByItsPulse) {
  EXPECT_EQ(after(2.5, finger), std::nullopt);
  EXPECT_EQ(after(4, finger), good);
  const Scene fadedPulse = [](double x, double y, double time) {
    const double drift = 1 + 0.01 * std::sin(0.5 * time) + 0.003 * std::sin(31 * time * time);
    const double spot = 1.1 - 0.3 * x - 0.2 * y;
    return Rgb{200 * spot * drift, 40 * spot, 30 * spot};
  };
  EXPECT_EQ(after(6, fadedPulse), weak);
  const Scene cutOff = [](double x, double y, double time) {
    return Rgb{255, 3 * finger(x, y, time).green, 40};
  };
  EXPECT_EQ(after(1.5, cutOff), tooBright);
  const Scene greenAlone = [](double x, double y, double time) {
    const double pulse = 1 - 0.03 * std::pow(std::sin(pi * 1.2 * time), 2);
    return Rgb{40, 80 * pulse * (1.1 - 0.2 * x - 0.1 * y), 45};
  };
  EXPECT_EQ(after(4, greenAlone), good);
}

TEST(FingerCoachTest, AFingerThatIsLiftedIsToldWithItsSeconds) {
  const Scene table = [](double x, double y, double time) {
    const double light = 70 + 20 * x - 10 * y + 1.5 * std::sin(40 * time * time + 7 * x);
    return Rgb{light, light, 0.9 * light};
  };
  const Scene dark = [](double, double, double) { return Rgb{}; };
  for (const Scene& beneath : {table, dark}) {
    FingerCoach coach;
    watch(coach, finger, 0, 8);
    watch(coach, beneath, 8, 11);
    EXPECT_EQ(coach.state(), noFinger);
    watch(coach, finger, 11, 18);
    EXPECT_EQ(coach.state(), good);
    double from = 0;
    double to = 0;
    for (const auto& span : coach.spans()) {
      if (span.state != noFinger) continue;
      EXPECT_EQ(to, 0) << "told twice";
      from = static_cast<double>(span.from) / 15;
      to = static_cast<double>(span.to) / 15;
    }
    EXPECT_NEAR(from, 8, 0.5);
    EXPECT_NEAR(to, 11, 0.5);
  }
}

TEST(FingerCoachTest, ItsMindChangesAfterSevenTenthsOfASecond) {
  FingerCoach coach;
  watch(coach, finger, 0, 5);
  const Scene dark = [](double, double, double) { return Rgb{}; };
  watch(coach, dark, 5, 5 + 9.0 / 15);
  EXPECT_EQ(coach.state(), good);
  watch(coach, finger, 5 + 9.0 / 15, 9);
  EXPECT_EQ(coach.state(), good);
  watch(coach, dark, 9, 9 + 11.0 / 15);
  EXPECT_EQ(coach.state(), noFinger);

  coach.reset();
  EXPECT_EQ(coach.state(), std::nullopt);
  EXPECT_THAT(coach.spans(), ElementsAre());
}

TEST(FingerCoachTest, SpansFollowEachOtherAndMissedFramesTakeTime) {
  FingerCoach coach;
  watch(coach, finger, 0, 5);
  for (int i = 0; i < 15; ++i) coach.miss();
  watch(coach, finger, 6, 8);
  EXPECT_EQ(coach.frames(), 120U);
  ASSERT_EQ(coach.spans().size(), 1U);
  EXPECT_EQ(coach.spans()[0].from, 0U);
  EXPECT_EQ(coach.spans()[0].to, 120U);
}

}  // namespace
}  // namespace veyla
