#include "history/date_value_formatter.h"

#include "platform/platform.h"

namespace veyla {

std::string DateValueFormatter::stringForValue(double value, const ChartAxis& /*axis*/) const {
  return services().dates.formatted(Date{value}, "dd MMM");
}

}  // namespace veyla
