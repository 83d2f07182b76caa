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

TEST_F(DataTest, ResetStartsNewSequencesAndLeavesHandedOutOnesAlone) {
  const auto values = [&] {
    std::vector<std::vector<float>> all;
    for (const auto& series : {data_.rawRedValues(), data_.rawGreenValues(), data_.rawBlueValues(),
                               data_.rawHRValues(), data_.spo2Values(), data_.heartrateValues()}) {
      all.push_back(*series);
    }
    return all;
  };
  // Nonsense where a size hint is expected harms nothing.
  withHeartrateSettings({{"neededValidHeartrate", -5}});
  withSpo2Settings({{"neededValidSpo2", 2'000'000'000}});
  data_.reset();
  data_.addRedValue(static_cast<float>(123.456));
  data_.addGreenValue(2);
  data_.addBlueValue(3);
  for (int i = 0; i < 2000; ++i) data_.addHRValue(4);
  data_.addSpo2Value(5);
  data_.addHeartrateValue(6);
  HeartrateResult result;
  result.index = 80;
  data_.addFourierValues(result);
  const auto red = data_.rawRedValues();
  data_.exitApp();
  EXPECT_THAT(values(), ElementsAre(ElementsAre(123.456F), ElementsAre(2), ElementsAre(3),
                                    std::vector<float>(2000, 4), ElementsAre(5), ElementsAre(6)));
  EXPECT_EQ(data_.fourierValues()->front().index, 80);

  data_.reset();
  EXPECT_THAT(*red, ElementsAre(123.456F));
  EXPECT_THAT(values(), testing::Each(IsEmpty()));
  EXPECT_THAT(*data_.fourierValues(), IsEmpty());
}

}  // namespace
}  // namespace veyla
