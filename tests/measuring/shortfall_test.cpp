#include "measuring/shortfall.h"

#include <gtest/gtest.h>

namespace veyla {
namespace {

using enum FingerState;

TEST(ShortfallTest, AMissingValueIsExplainedByTheFingerFirstThenByTheEstimates) {
  const std::vector<FingerSpan> well = {{good, 2, 30}};
  const std::vector<FingerSpan> restless = {{moving, 4, 9}, {weak, 12, 14}, {good, 14, 30}};
  const EstimateCounts some{.accepted = 9};
  const EstimateCounts unclear{.accepted = 2, .rejected = 3, .none = 4};
  const EstimateCounts low{.accepted = 2, .low = 3};
  const char* noOxygen = "No oxygen value: this camera's colours give hardly any of 93 % or more.";
  const std::vector<FingerSpan> twice = {
      {noFinger, 2, 7}, {good, 7, 9}, {noFinger, 9, 14.5}, {good, 14.5, 30}};
  const std::vector<FingerSpan> often = {
      {weak, 2, 4}, {weak, 9, 11}, {weak, 16, 18}, {weak, 23, 25}, {weak, 30, 32}};
  const std::pair<MeasurementEvidence, const char*> cases[] = {
      {{well, false, 28, some, some}, ""},
      {{well, false, 28, unclear, some},
       "The pulse was unclear in 7 of 9 heart-rate estimates: hold still, press lightly, warm the "
       "finger."},
      {{well, false, 28, some, low}, noOxygen},
      {{restless, false, 28, some, low, true}, noOxygen},
      {{restless, false, 28, some, some, true}, ""},
      {{restless, false, 28, some, some, true, false, true},
       "The pulse was unclear from 4 to 14 s: hold still."},
      {{restless, false, 28, unclear, low}, "The pulse was unclear from 4 to 14 s: hold still."},
      {{{{weak, 2, 9}, {good, 9, 13}, {weak, 13, 21.6}, {weak, 26, 27}}, false, 28, unclear},
       "The pulse was unclear from 2 to 9 s, from 13 to 22 s, from 26 to 27 s: press more "
       "lightly."},
      {{{{weak, 2, 9}, {moving, 9, 9.8}}, false, 28, unclear},
       "The pulse was unclear from 2 to 10 s: hold still and press more lightly."},
      {{{{moving, 2, 2.9}, {good, 8, 20}}, false, 28, {.accepted = 1, .none = 2}},
       "The pulse was unclear in 2 of 3 heart-rate estimates: hold still, press lightly, warm the "
       "finger."},
      // Nothing else helps before there is a finger.
      {{{{noFinger, 2, 17}, {moving, 17, 30}}, false, 28, some, low, true},
       "No finger from 2 to 17 s: cover lens and light."},
      {{{{noFinger, 2, 17}}, true, 28}, "No finger from 2 to 17 s: the picture is black."},
      {{{{tooBright, 3, 30}}, false, 28, some, low},
       "Too bright from 3 to 30 s: press more lightly."},
      // Nor is a camera to blame for a finger that lay badly.
      {{twice, false, 28, some, {.low = 3}, true},
       "No finger from 2 to 7 s, from 9 to 15 s: cover lens and light."},
      {{often, false, 40, unclear},
       "The pulse was unclear from 2 to 4 s, from 9 to 11 s, from 16 to 18 s and 2 times more: "
       "press more lightly."},
      {{{{noFinger, 2, 17}}, true, 28, some, some, true, true}, ""},
  };
  for (const auto& [evidence, text] : cases) {
    const auto why = shortfallOf(evidence);
    EXPECT_EQ(why ? why->text : "", text);
  }
}

}  // namespace
}  // namespace veyla
