#include "acquisition/raw_signal_upload.h"

#include <gmock/gmock.h>

#include <limits>

#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::ElementsAre;
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
