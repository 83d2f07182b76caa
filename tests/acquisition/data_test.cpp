#include "acquisition/data.h"

#include <gmock/gmock.h>

#include "acquisition/raw_signal_upload.h"
#include "tests/support/builders.h"
#include "tests/support/tables.h"
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

TEST(RawSignalUploadTest, TheRequestCarriesTheSeriesAndTheVersions) {
  const TestPlatform platform;
  const HttpRequest request = Utils::rawSignalRequest({180.1F}, {}, {30});
  EXPECT_THAT(request.url, MatchesRegex("http://.*:8888/OrvaneServer/Slim/index.php/processdata"));
  EXPECT_EQ(request.method, "POST");
  EXPECT_THAT(request.headers, ElementsAre(Pair("Content-Type", "application/json")));
  EXPECT_EQ(request.timeout, 60);
  EXPECT_EQ(replaced(replaced(request.body, "\n", ""), "  ", ""),
            R"({"R": [180.1],"G": [],"B": [30.0],)"
            R"("iosver": "10.3.1","appver": "1.0.0","name": "veyla tester"})");
}

}  // namespace
}  // namespace veyla
