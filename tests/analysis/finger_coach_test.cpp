#include "analysis/finger_coach.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
#include <numbers>
#include <sstream>

#include "acquisition/frame_averaging.h"
#include "measuring/measurement_judge.h"
#include "platform/format.h"
#include "tests/support/tables.h"

namespace veyla {
namespace {

using enum FingerState;

constexpr double pi = std::numbers::pi;

using Rgb = std::array<double, 3>;

/// What stands at a place of the picture, both in 0 to 1, at a moment in seconds.
using Scene = std::function<Rgb(double x, double y, double time)>;

/// As a camera's cells show it: whole steps of 8 bits, each cell at a point of its own.
FrameColours frameOf(const Scene& scene, double time) {
  std::array<std::array<double, FrameCells::count>, 3> cells{};
  std::array<double, 3> means{};
  for (std::size_t cell = 0; cell < FrameCells::count; ++cell) {
    const Rgb rgb = scene((static_cast<double>(cell % 4) + 0.5) / 4,
                          (static_cast<double>(cell / 4) + 0.5) / 4, time);
    for (std::size_t i = 0; i < 3; ++i) {
      cells[i][cell] = std::floor(std::clamp(rgb[i], 0.0, 255.0));
      means[i] += cells[i][cell] / FrameCells::count;
    }
  }
  return {static_cast<float>(means[0]), static_cast<float>(means[1]), static_cast<float>(means[2]),
          cellsOf(cells[0], cells[1], cells[2])};
}

Scene plain(Rgb colour) {
  return [=](double, double, double) { return colour; };
}

/// A lit fingertip with a hot spot, whose red falls by a hundredth with each beat; or what differs
/// from it as this says.
struct Look {
  /// Times the finger's own light, and green.
  double level = 1;
  double green = 1;
  /// By what part of it all light swings, and that of one side against the other.
  double shake = 0;
  double tilt = 0;
  /// How strong the threads are that glide by.
  double glide = 0;
  double pulse = 1;
};

Scene like(Look look) {
  return [=](double x, double y, double time) {
    const double spot = 1.1 - 0.3 * x - 0.2 * y;
    const double beat = 1 - 0.01 * look.pulse * std::pow(std::sin(pi * 1.2 * time), 2);
    const double light = look.level * spot * beat * (1 + look.shake * std::sin(9 * time)) *
                         (1 + look.tilt * std::sin(3 * time) * (x - 0.5)) *
                         (1 + look.glide * std::sin(210 * (x + 0.03 * time) + 3 * y));
    return Rgb{200 * light, 40 * look.green * light, 30 * light};
  };
}

const Scene finger = like({});

/// The same, so near to the light that the red is cut off.
Rgb cutOffFinger(double x, double y, double time) { return {255, 3 * finger(x, y, time)[1], 40}; }

/// A picture of many shapes and like colours, seen from `across` picture widths to the right.
Rgb photograph(double x, double y, double across) {
  const double u = x + across;
  const double light =
      120 + 50 * std::sin(9 * u + 3 * y) + 40 * std::sin(5 * y - 4 * u + 1) + 20 * std::sin(23 * u);
  return {light, 0.8 * light, 0.6 * light};
}

// What is no finger, or moves, in the means alone; each pair lies on both sides of a border.
TEST(FingerCoachTest, TheBordersOfWhatAFingerMayLookLike) {
  const auto spread = [](float by) { return FrameCells{{}, by}; };
  const std::optional<FingerState> undecided;
  // With the steps by which green and red swing from frame to frame.
  const std::tuple<FrameColours, float, float, std::optional<FingerState>> cases[] = {
      {{16, 8, 4, {}}, 0.4F, 0, undecided},  // dark
      {{15, 8, 4, {}}, 0.4F, 0, noFinger},
      {{200, 150, 129, {}}, 0.4F, 0, undecided},  // pale
      {{200, 150, 131, {}}, 0.4F, 0, noFinger},
      {{100, 95, 89, {}}, 0.4F, 0, undecided},  // grey
      {{100, 95, 91, {}}, 0.4F, 0, noFinger},
      {{100, 40, 69, {}}, 0.4F, 0, undecided},  // violet
      {{100, 40, 71, {}}, 0.4F, 0, noFinger},
      {{253, 40, 30, {}}, 0.4F, 0, undecided},  // cut off
      {{254, 40, 30, {}}, 0.4F, 0, tooBright},
      {{100, 40, 30, {}}, 0.26F, 0, undecided},  // lifeless
      {{100, 40, 30, {}}, 0.24F, 0, noFinger},
      {{100, 40, 30, {}}, 0, 14.5F, undecided},  // moving
      {{100, 40, 30, {}}, 0, 15.5F, moving},
      {{100, 40, 30, spread(0.19F)}, 0.4F, 0, undecided},  // of many colours
      {{100, 40, 30, spread(0.21F)}, 0.4F, 0, noFinger}};
  for (const auto& [colours, greenSwing, redSwing, state] : cases) {
    FingerCoach coach;
    for (int i = 0; i < 40; ++i) {
      FrameColours frame = colours;
      if (i % 2 == 1) frame.green += greenSwing;
      if (i % 2 == 1) frame.red += redSwing;
      coach.look(frame);
    }
    EXPECT_EQ(coach.state(), state) << colours.red << ' ' << colours.green << ' ' << colours.blue;
    EXPECT_EQ(coach.isBlack(), colours.red == 15);
  }
}

/// A finger with one part of its look changed, such as "level=0.6", or another picture by its name.
Scene named(const std::string& name) {
  static const std::map<std::string, Scene> scenes{
      {"finger", finger},
      {"black", plain({})},
      {"red", plain({255, 0, 0})},
      {"photograph", [](double x, double y, double) { return photograph(x, y, 0.3); }},
      {"pan", [](double x, double y, double time) { return photograph(x, y, 0.1 * time); }},
      {"table",
       [](double x, double y, double time) {
         const double light = 70 + 20 * x - 10 * y + 1.5 * std::sin(40 * time * time + 7 * x);
         return Rgb{light, light, 0.9 * light};
       }},
      {"greenAlone",
       [](double x, double y, double time) {
         const double pulse = 1 - 0.03 * std::pow(std::sin(pi * 1.2 * time), 2);
         return Rgb{40, 80 * pulse * (1.1 - 0.2 * x - 0.1 * y), 45};
       }},
      {"cutOff", cutOffFinger},
      {"nearlyCutOff", [](double x, double y, double time) {
         return Rgb{253, cutOffFinger(x, y, time)[1], 40};
       }}};
  static const std::map<std::string, double Look::*> parts{
      {"level", &Look::level}, {"green", &Look::green}, {"shake", &Look::shake},
      {"tilt", &Look::tilt},   {"glide", &Look::glide}, {"pulse", &Look::pulse}};
  const std::size_t equals = name.find('=');
  if (equals == std::string::npos) return scenes.at(name);
  Look look;
  look.*parts.at(name.substr(0, equals)) = std::stod(name.substr(equals + 1));
  return like(look);
}

TEST(FingerCoachTest, SpansTellWhatWasSeenFromTheFrameAtWhichItBegan) {
  // So many frames of each. What is no finger is never called good; the last ones lie on both sides
  // of many a border.
  for (const auto& [stretches, expected] : rowsOf(R"(
375 red -> tooBright 0-9 noFinger 9-375
375 photograph -> noFinger 0-375
375 pan -> moving 0-375
120 finger 45 table 105 finger -> good 0-120 noFinger 120-165 moving 165-176 good 176-270
120 finger 45 black 105 finger -> good 0-120 noFinger 120-165 good 165-270 unlit 164-165
120 finger 30 shake=0.2 75 finger -> good 0-122 moving 122-157 good 157-225
120 finger 8 shake=0.2 75 finger -> good 0-122 good 122-203
120 finger 20 shake=0.2 20 black 20 shake=0.2 75 finger -> good 0-122 noFinger 122-160 moving 160-185 good 185-255
75 finger 9 black 51 finger 10 black -> good 0-145
75 finger 9 black 51 finger 11 black -> good 0-135 noFinger 135-146
75 finger 15 missing 30 finger -> good 0-120
42 finger 30 black 75 finger -> noFinger 42-72 good 72-147
30 nearlyCutOff 30 cutOff -> tooBright 30-60
60 greenAlone -> good 0-60
23 cutOff -> tooBright 0-23
38 finger ->
7 black ->
16 finger 20 photograph -> moving 0-36
8 black 60 finger -> noFinger 0-8
44 level=1.05 12 glide=0.04 44 tilt=0.05 49 level=0.6 -> weak 0-57 moving 57-100 noFinger 100-149
72 pulse=0.4 66 tilt=0.05 35 finger 40 shake=0.16 -> good 0-82 moving 82-150 moving 175-213
52 green=2.25 62 level=1.2 60 tilt=0.35 36 shake=0.12 -> good 0-52 noFinger 52-103 good 103-125 moving 125-210
17 finger 16 tilt=0.25 52 glide=0.04 70 pulse=0 -> moving 17-32 moving 52-107 noFinger 107-155
73 finger 13 level=0.45 48 level=0.65 38 green=1.25 -> good 0-172 switched 80-86 switched 93-130 switched 141
120 finger 90 level=0.5 -> good 0-210 switched 127-164
120 finger 7 level=0.5 30 shake=0.2 -> good 0-120 moving 120-157
85 finger 30 shake=0.06 70 green=0.5 -> good 0-115 noFinger 115-138 good 138-153 weak 153-185
)")) {
    FingerCoach coach;
    // And what of the lens from which frame on, up to one at which it was over.
    std::optional<LensFault> lens;
    std::string lenses;
    int frame = 0;
    int count = 0;
    std::istringstream words(stretches);
    for (std::string name; words >> count >> name;) {
      for (const int end = frame + count; frame < end; ++frame) {
        if (name == "missing") {
          coach.miss();
        } else {
          coach.look(frameOf(named(name), frame / 15.0));
        }
        const auto seen = coach.lens();
        if (seen && seen != lens)
          lenses += " " + std::string(nameOf(*seen)) + formatText(" %d", frame);
        if (!seen && lens) lenses += formatText("-%d", frame);
        lens = seen;
      }
    }
    std::string told;
    for (const auto& [state, from, to] : coach.spans()) {
      if (!told.empty()) told += ' ';
      told += std::string(nameOf(state)) + formatText(" %zu-%zu", from, to);
    }
    EXPECT_EQ(told + lenses, expected) << stretches;
    coach.reset();
    EXPECT_EQ(coach.state(), std::nullopt);
    EXPECT_TRUE(coach.spans().empty());
  }
}

}  // namespace
}  // namespace veyla
