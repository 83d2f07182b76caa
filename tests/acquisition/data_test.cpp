#include "acquisition/data.h"

#include <gmock/gmock.h>

#include <limits>

#include "acquisition/raw_signal_upload.h"
#include "tests/support/builders.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::Pointee;
using testing::SizeIs;

TEST(DataTest, ResetStartsNewSequencesAndLeavesHandedOutOnesAlone) {
  const TestPlatform platform;
  // Nonsense where a size hint is expected harms nothing.
  withHeartrateSettings({{"neededValidHeartrate", -5}});
  withSpo2Settings({{"neededValidSpo2", 2'000'000'000}});
  Data& data = Data::instance();
  data.reset();
  data.addRedValue(1.5F);
  data.addGreenValue(2);
  data.addBlueValue(3);
  data.addHRValue(4);
  data.addSpo2Value(5);
  data.addHeartrateValue(6);
  data.addFourierValues({});
  const auto held = [&] {
    return std::vector{data.rawRedValues(), data.rawGreenValues(), data.rawBlueValues(),
                       data.rawHRValues(),  data.spo2Values(),     data.heartrateValues()};
  };
  const auto before = held();
  EXPECT_THAT(*data.fourierValues(), SizeIs(1));
  data.reset();
  EXPECT_THAT(before, ElementsAre(Pointee(ElementsAre(1.5F)), Pointee(ElementsAre(2)),
                                  Pointee(ElementsAre(3)), Pointee(ElementsAre(4)),
                                  Pointee(ElementsAre(5)), Pointee(ElementsAre(6))));
  EXPECT_THAT(held(), Each(Pointee(IsEmpty())));
  EXPECT_THAT(*data.fourierValues(), IsEmpty());
}

TEST(RawSignalUploadTest, TheRequestCarriesTheSeriesAndTheVersionsAndIsNotSent) {
  const TestPlatform platform;
  const HttpRequest request = Utils::rawSignalRequest({180.1F, 181}, {}, {30});
  EXPECT_THAT(request.url,
              testing::MatchesRegex("http://.*:8888/OrvaneServer/Slim/index.php/processdata"));
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
  const float notANumber = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(Utils::rawSignalRequest({notANumber}, {}, {}).body, "") << "what JSON cannot say";
}

}  // namespace
}  // namespace veyla
