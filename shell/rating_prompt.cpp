#include "shell/rating_prompt.h"

#include <cstdint>

#include "platform/platform.h"

namespace veyla {

namespace {

constexpr const char* firstUseKey = "rating_first_use";
constexpr const char* usesKey = "rating_uses";
constexpr const char* significantEventsKey = "rating_significant_events";
constexpr const char* askedKey = "rating_asked";

std::int64_t countUnder(const char* key) {
  return services().store.value(key).value_or(Value()).int64Value();
}

}  // namespace

RatingPrompt& RatingPrompt::instance() { return Platform::current().shared<RatingPrompt>(); }

void RatingPrompt::configure(double days, int significantEvents, int uses) {
  days_ = days;
  significantEvents_ = significantEvents;
  uses_ = uses;
}

void RatingPrompt::logUse() { countAndMaybeAsk(usesKey); }
void RatingPrompt::logSignificantEvent() { countAndMaybeAsk(significantEventsKey); }

void RatingPrompt::countAndMaybeAsk(const char* counterKey) {
  KeyValueStore& store = services().store;
  bool asks = false;
  store.exclusively([&] {
    const Date now = services().clock.now();
    if (!store.value(firstUseKey)) store.setValue(firstUseKey, now);
    store.setValue(counterKey, countUnder(counterKey) + 1);

    const auto firstUse = store.value(firstUseKey);
    const Date* since = firstUse ? firstUse->date() : nullptr;
    const bool longEnough =
        since && now.secondsSince1970 - since->secondsSince1970 >= days_ * secondsPerDay;
    asks = longEnough && countUnder(usesKey) >= uses_ &&
           countUnder(significantEventsKey) >= significantEvents_ && !store.value(askedKey);
    if (asks) store.setValue(askedKey, true);
    store.synchronize();
  });
  if (asks) services().screens.showRatingPrompt();
}

}  // namespace veyla
