#include "analysis/heartrate_processing.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/builders.h"
#include "tests/support/test_platform.h"

/// Whatever the colours are, numbers or not, an estimate is in range or no number.
void veyla::fuzz(std::string_view input) {
  static TestPlatform machine;
  machine.log.lines.clear();
  Data::instance().reset();
  Choices choices(input);
  const auto upTo = [&](int most) {
    return Value(static_cast<int>(choices.next<std::uint16_t>() % (most + 1)));
  };
  withHeartrateSettings({{"rawDataSize", upTo(1024)},
                         {"minimumBpm", upTo(225)},
                         {"TTValidPercent", upTo(99)},
                         {"TTMaxDistance", upTo(511)}});
  withSpo2Settings({{"rawDataSize", upTo(1024)},
                    {"useNewAlgorithm", choices.pick(2) == 1},
                    {"useTrend", choices.pick(2) == 1}});
  const bool anyNumber = choices.pick(2) == 1;
  const auto colour = [&] {
    return anyNumber ? choices.next<float>() : static_cast<float>(choices.next<std::uint8_t>());
  };
  Data& data = Data::instance();
  while (choices.left() > 0) {
    data.addRedValue(colour());
    data.addGreenValue(colour());
    data.addBlueValue(colour());
    data.addHRValue(colour());
  }
  const HeartrateResult result = HeartrateProcessing::instance().calculateHeartrate();
  must(result.heartrate >= 0 && result.heartrate < 450, "a heart rate within the spectrum");
  must(result.heartrate == HeartrateProcessing::calcBPM(result.index), "of its strongest bin");
  must(!(result.diffPercent > 100) && !(result.diffPercent < 0), "a rival is no stronger");
  must(!(Spo2Processing::instance().calculateSpo2({}) > 100), "no saturation above 100 per cent");
}
