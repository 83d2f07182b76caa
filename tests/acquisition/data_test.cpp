#include "acquisition/data.h"

#include <gmock/gmock.h>

#include "tests/support/builders.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using namespace testing;

TEST(DataTest, ResetStartsNewSequencesAndLeavesHandedOutOnesAlone) {
  const TestPlatform platform;
  // Nonsense where a size hint is expected harms nothing.
  withHeartrateSettings({{"neededValidHeartrate", -5}});
  withSpo2Settings({{"neededValidSpo2", 2'000'000'000}});
  Data& data = Data::instance();
  data.reset();
  for (const auto add : {&Data::addRedValue, &Data::addGreenValue, &Data::addBlueValue,
                         &Data::addHRValue, &Data::addSpo2Value, &Data::addHeartrateValue}) {
    (data.*add)(1.5F);
  }
  data.addFourierValues({});
  const auto held = [&] {
    return std::vector{data.rawRedValues(), data.rawGreenValues(), data.rawBlueValues(),
                       data.rawHRValues(),  data.spo2Values(),     data.heartrateValues()};
  };
  const auto before = held();
  const auto spectra = data.fourierValues();
  data.reset();
  EXPECT_THAT(before, Each(Pointee(ElementsAre(1.5F))));
  EXPECT_THAT(*spectra, SizeIs(1));
  EXPECT_THAT(held(), Each(Pointee(IsEmpty())));
  EXPECT_THAT(*data.fourierValues(), IsEmpty());
}

}  // namespace
}  // namespace veyla
