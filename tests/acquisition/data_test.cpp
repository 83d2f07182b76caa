#include "acquisition/data.h"

#include <gmock/gmock.h>

#include <limits>

#include "acquisition/raw_signal_upload.h"
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

using testing::EndsWith;
using testing::Pair;
using testing::StartsWith;

TEST(RawSignalUploadTest, TheRequestCarriesTheSeriesAndTheVersionsAndIsNotSent) {
  const TestPlatform platform;
  const HttpRequest request = Utils::rawSignalRequest({180.1F, 181}, {}, {30});
  EXPECT_THAT(request.url, StartsWith("http://"));
  EXPECT_THAT(request.url, EndsWith(":8888/OrvaneServer/Slim/index.php/processdata"));
  EXPECT_EQ(request.method, "POST");
  EXPECT_THAT(request.headers, ElementsAre(Pair("Content-Type", "application/json")));
  EXPECT_EQ(request.timeout, 60);
  EXPECT_EQ(request.body, R"({
  "R": [
    180.1,
    181.0
  ],
  "G": [],
  "B": [
    30.0
  ],
  "iosver": "10.3.1",
  "appver": "1.0.0",
  "name": "veyla tester"
})");
  EXPECT_TRUE(Utils::sendDataToServerWithRedValues({}, {}, {}));
}

TEST(RawSignalUploadTest, WhatJsonCannotSayLeavesTheBodyEmptyAndIsNoFailure) {
  const TestPlatform platform;
  const std::vector<float> values{1, std::numeric_limits<float>::quiet_NaN()};
  EXPECT_EQ(Utils::rawSignalRequest(values, {}, {}).body, "");
  EXPECT_TRUE(Utils::sendDataToServerWithRedValues(values, {}, {}));
}

}  // namespace
}  // namespace veyla
