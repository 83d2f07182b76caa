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

TEST(DataTest, ResetStartsNewSequencesAndLeavesHandedOutOnesAlone) {
  const TestPlatform platform;
  Data& data = Data::instance();
  const auto values = [&] {
    std::vector<std::vector<float>> all;
    for (const auto& series : {data.rawRedValues(), data.rawGreenValues(), data.rawBlueValues(),
                               data.rawHRValues(), data.spo2Values(), data.heartrateValues()}) {
      all.push_back(*series);
    }
    return all;
  };
  // Nonsense where a size hint is expected harms nothing.
  withHeartrateSettings({{"neededValidHeartrate", -5}});
  withSpo2Settings({{"neededValidSpo2", 2'000'000'000}});
  data.reset();
  data.addRedValue(static_cast<float>(123.456));
  data.addGreenValue(2);
  data.addBlueValue(3);
  for (int i = 0; i < 2000; ++i) data.addHRValue(4);
  data.addSpo2Value(5);
  data.addHeartrateValue(6);
  HeartrateResult result;
  result.index = 80;
  data.addFourierValues(result);
  const auto red = data.rawRedValues();
  EXPECT_THAT(values(), ElementsAre(ElementsAre(123.456F), ElementsAre(2), ElementsAre(3),
                                    std::vector<float>(2000, 4), ElementsAre(5), ElementsAre(6)));
  EXPECT_EQ(data.fourierValues()->front().index, 80);

  data.reset();
  EXPECT_THAT(*red, ElementsAre(123.456F));
  EXPECT_THAT(values(), testing::Each(IsEmpty()));
  EXPECT_THAT(*data.fourierValues(), IsEmpty());
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
