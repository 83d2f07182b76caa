#include "shell/launch_history.h"

#include <optional>
#include <string>
#include <string_view>

#include "platform/platform.h"

namespace veyla::Utils {

namespace {

constexpr std::string_view lastVersionKey = "last_launched_version";

struct Launch {
  bool isFirst = false;
  bool isUpdated = false;

  Launch() {
    KeyValueStore& store = services().store;
    const std::string version = services().device.bundleVersion();
    store.exclusively([&] {
      const auto recorded = store.value(lastVersionKey);
      isFirst = !recorded;
      isUpdated = recorded && *recorded != Value(version);
      store.setValue(lastVersionKey, version);
      store.synchronize();
    });
  }
};

const Launch& thisLaunch() { return Platform::current().shared<Launch>(); }

}  // namespace

bool isAppOnFirstLaunch() { return thisLaunch().isFirst; }
bool isAppVersionUpdated() { return thisLaunch().isUpdated; }

}  // namespace veyla::Utils
