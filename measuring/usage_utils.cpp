#include "measuring/usage_utils.h"

#include "platform/platform.h"

namespace veyla {

namespace {

constexpr std::string_view emailPattern = R"(^[A-Z0-9._%+-]+@[A-Z0-9.-]+\.[A-Z]{2,4}$)";

}  // namespace

std::int64_t UsageUtils::counter(std::string_view key) {
  return services().store.value(key).value_or(Value()).int64Value();
}

void UsageUtils::setCounter(std::string_view key, std::int64_t value) {
  KeyValueStore& store = services().store;
  store.exclusively([&] {
    store.setValue(key, value);
    store.synchronize();
  });
}

std::int64_t UsageUtils::total_finished() { return counter(totalFinished); }
void UsageUtils::setTotal_finished(std::int64_t value) { setCounter(totalFinished, value); }
std::int64_t UsageUtils::total_finished_percent() { return counter(totalFinishedPercent); }
void UsageUtils::setTotal_finished_percent(std::int64_t value) {
  setCounter(totalFinishedPercent, value);
}
std::int64_t UsageUtils::total_hr_low() { return counter(totalHrLow); }
void UsageUtils::setTotal_hr_low(std::int64_t value) { setCounter(totalHrLow, value); }
std::int64_t UsageUtils::total_hr_low_percent() { return counter(totalHrLowPercent); }
void UsageUtils::setTotal_hr_low_percent(std::int64_t value) {
  setCounter(totalHrLowPercent, value);
}
std::int64_t UsageUtils::total_lowsig() { return counter(totalLowsig); }
void UsageUtils::setTotal_lowsig(std::int64_t value) { setCounter(totalLowsig, value); }
std::int64_t UsageUtils::total_lowsig_percent() { return counter(totalLowsigPercent); }
void UsageUtils::setTotal_lowsig_percent(std::int64_t value) {
  setCounter(totalLowsigPercent, value);
}

bool UsageUtils::isEmailWithEmail(const std::string& email) const {
  return services().regularExpressions.findsIgnoringCase(emailPattern, email,
                                                         services().characters.count(email));
}

}  // namespace veyla
