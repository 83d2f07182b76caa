#include "measuring/measuring_layout.h"

#include <gtest/gtest.h>

namespace veyla {
namespace {

bool isWithin(const Rect& inner, const Rect& outer) {
  constexpr double rounding = 1e-6;
  return inner.x >= outer.x - rounding && inner.y >= outer.y - rounding &&
         inner.x + inner.width <= outer.x + outer.width + rounding &&
         inner.y + inner.height <= outer.y + outer.height + rounding;
}

bool overlap(const Rect& a, const Rect& b) {
  return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height && b.y < a.y + a.height;
}

TEST(MeasuringLayoutTest, EverythingHasAPlaceOfItsOwnOnEveryPhone) {
  const std::pair<Size, SafeArea> phones[] = {{{320, 460}, {}},       {{320, 568}, {20, 0}},
                                              {{360, 640}, {24, 0}},  {{390, 844}, {47, 34}},
                                              {{430, 932}, {59, 34}}, {{1024, 1366}, {24, 20}}};
  for (const auto& [size, safeArea] : phones) {
    SCOPED_TRACE(size.height);
    const MeasuringLayout layout(size, safeArea);
    const Rect usable{0, safeArea.top, size.width, size.height - safeArea.top - safeArea.bottom};
    const Rect apart[] = {layout.title,        layout.heartrate.caption, layout.heartrate.gauge,
                          layout.spo2.caption, layout.spo2.gauge,        layout.center,
                          layout.status,       layout.instruction,       layout.button};
    for (const Rect& one : apart) {
      EXPECT_TRUE(isWithin(one, usable)) << one.y << " to " << one.y + one.height;
      for (const Rect& other : apart) {
        EXPECT_TRUE(&one == &other || !overlap(one, other)) << one.y << " and " << other.y;
      }
    }
    for (const auto& value : {layout.heartrate, layout.spo2}) {
      EXPECT_TRUE(isWithin(value.ring, value.gauge));
      EXPECT_TRUE(isWithin(value.lastValue, layout.center));
      EXPECT_GT(value.gauge.width, 90);
    }
    EXPECT_TRUE(isWithin(layout.chart, layout.center));
    // The curve keeps 10 points of its height free and must still be one.
    EXPECT_GT(layout.chart.height, 40);
  }
}

}  // namespace
}  // namespace veyla
