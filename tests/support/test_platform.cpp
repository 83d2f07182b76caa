#include "tests/support/test_platform.h"

namespace veyla {

TestPlatform::TestPlatform() = default;
TestPlatform::~TestPlatform() = default;

TestPlatform::TestPlatform(const std::string& hardwareModel) : TestPlatform() {
  device.model = hardwareModel;
}

void TestPlatform::moveTo(Date moment) {
  time.after(moment.secondsSince1970 - date.now().secondsSince1970, [] {});
  time.run();
}

}  // namespace veyla
