#include "acquisition/data.h"

#include <gmock/gmock.h>

#include "tests/support/builders.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DataTest : public testing::Test {
 protected:
  TestPlatform platform_;
  Data& data_ = Data::instance();
};

TEST_F(DataTest, KeepsEveryValueOfAMeasurementInSinglePrecision) {
  withHeartrateSettings({{"neededValidHeartrate", 0}});
  data_.reset();
  for (int i = 0; i < 2000; ++i) data_.addHRValue(static_cast<float>(i));
  data_.addRedValue(static_cast<float>(123.456));
  HeartrateResult result;
  result.index = 80;
  data_.addFourierValues(result);

  EXPECT_EQ(data_.rawHRValues()->size(), 2000U);
  EXPECT_THAT(*data_.rawRedValues(), ElementsAre(123.456F));
  EXPECT_EQ(data_.fourierValues()->front().index, 80);
}

TEST_F(DataTest, ResetStartsNewSequencesAndLeavesHandedOutOnesAlone) {
  data_.addRedValue(1);
  data_.addGreenValue(2);
  data_.addBlueValue(3);
  data_.addHRValue(4);
  data_.addSpo2Value(5);
  data_.addHeartrateValue(6);
  data_.addFourierValues({});
  const auto red = data_.rawRedValues();
  data_.exitApp();
  EXPECT_THAT(*data_.rawRedValues(), ElementsAre(1));

  // Nonsense where a size hint is expected harms nothing.
  withHeartrateSettings({{"neededValidHeartrate", -5}});
  withSpo2Settings({{"neededValidSpo2", 2'000'000'000}});
  data_.reset();

  EXPECT_THAT(*red, ElementsAre(1));
  EXPECT_THAT(*data_.rawRedValues(), IsEmpty());
  EXPECT_THAT(*data_.rawGreenValues(), IsEmpty());
  EXPECT_THAT(*data_.rawBlueValues(), IsEmpty());
  EXPECT_THAT(*data_.rawHRValues(), IsEmpty());
  EXPECT_THAT(*data_.spo2Values(), IsEmpty());
  EXPECT_THAT(*data_.heartrateValues(), IsEmpty());
  EXPECT_THAT(*data_.fourierValues(), IsEmpty());
}

}  // namespace
}  // namespace veyla
