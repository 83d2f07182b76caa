#include "acquisition/data.h"

#include <algorithm>
#include <cstddef>

#include "acquisition/settings.h"
#include "platform/platform.h"

namespace veyla {

namespace {

// A needed count is a size hint and may come from an unchecked resource: no more than this is
// reserved on its word.
constexpr int largestCapacityHint = 1024;

template <class Element>
Data::Sequence<Element> emptySequence(int capacityHint = 0) {
  auto sequence = std::make_shared<std::vector<Element>>();
  sequence->reserve(static_cast<std::size_t>(std::clamp(capacityHint, 0, largestCapacityHint)));
  return sequence;
}

}  // namespace

Data& Data::instance() { return Platform::current().shared<Data>(); }

Data::Data() { reset(); }

void Data::reset() {
  rawRedValues_ = emptySequence<float>();
  rawGreenValues_ = emptySequence<float>();
  rawBlueValues_ = emptySequence<float>();
  rawHRValues_ = emptySequence<float>();

  const int neededValidHeartrate = Utils::getHeartrateSettings("neededValidHeartrate").intValue();
  fourierValues_ = emptySequence<HeartrateResult>(neededValidHeartrate);
  heartrateValues_ = emptySequence<float>(neededValidHeartrate);

  // The record is the same on every phone; if one should ever need another, it parts here.
  static_cast<void>(Utils::isIphone6or6plus());

  const int neededValidSpo2 = Utils::getSpo2Settings("neededValidSpo2").intValue();
  spo2Values_ = emptySequence<float>(neededValidSpo2);
}

}  // namespace veyla
