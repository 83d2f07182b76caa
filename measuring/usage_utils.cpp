#include "measuring/usage_utils.h"

#include <string_view>

#include "platform/platform.h"

namespace veyla {

namespace {

constexpr std::string_view totalFinishedKey = "total_finished";
constexpr std::string_view totalFinishedPercentKey = "total_finished_percent";
constexpr std::string_view totalHrLowKey = "total_hr_low";
constexpr std::string_view totalHrLowPercentKey = "total_hr_low_percent";
constexpr std::string_view totalLowsigKey = "total_lowsig";
constexpr std::string_view totalLowsigPercentKey = "total_lowsig_percent";

constexpr std::string_view emailPattern = R"(^[A-Z0-9._%+-]+@[A-Z0-9.-]+\.[A-Z]{2,4}$)";

std::int64_t counter(std::string_view key) {
  return services().store.value(key).value_or(Value()).int64Value();
}

void setCounter(std::string_view key, std::int64_t value) {
  KeyValueStore& store = services().store;
  store.exclusively([&] {
    store.setValue(key, value);
    store.synchronize();
  });
}

}  // namespace

std::int64_t UsageUtils::total_finished() { return counter(totalFinishedKey); }
void UsageUtils::setTotal_finished(std::int64_t value) { setCounter(totalFinishedKey, value); }
std::int64_t UsageUtils::total_finished_percent() { return counter(totalFinishedPercentKey); }
void UsageUtils::setTotal_finished_percent(std::int64_t value) {
  setCounter(totalFinishedPercentKey, value);
}
std::int64_t UsageUtils::total_hr_low() { return counter(totalHrLowKey); }
void UsageUtils::setTotal_hr_low(std::int64_t value) { setCounter(totalHrLowKey, value); }
std::int64_t UsageUtils::total_hr_low_percent() { return counter(totalHrLowPercentKey); }
void UsageUtils::setTotal_hr_low_percent(std::int64_t value) {
  setCounter(totalHrLowPercentKey, value);
}
std::int64_t UsageUtils::total_lowsig() { return counter(totalLowsigKey); }
void UsageUtils::setTotal_lowsig(std::int64_t value) { setCounter(totalLowsigKey, value); }
std::int64_t UsageUtils::total_lowsig_percent() { return counter(totalLowsigPercentKey); }
void UsageUtils::setTotal_lowsig_percent(std::int64_t value) {
  setCounter(totalLowsigPercentKey, value);
}

bool UsageUtils::isEmailWithEmail(const std::string& email) const {
  return services().regularExpressions.findsIgnoringCase(emailPattern, email,
                                                         services().characters.count(email));
}

}  // namespace veyla
