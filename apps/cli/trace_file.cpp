#include "apps/cli/trace_file.h"

#include "platform/format.h"

namespace veyla {

namespace {

const char* nameOf(EstimateVerdict verdict) {
  switch (verdict) {
    case EstimateVerdict::accepted:
      return "accepted";
    case EstimateVerdict::rejected:
      return "rejected";
    case EstimateVerdict::low:
      return "low";
    case EstimateVerdict::none:
      break;
  }
  return "none";
}

std::string figure(float value) { return formatText(",%.9g", static_cast<double>(value)); }

}  // namespace

std::string traceHeader() {
  return "seconds,frame,value,verdict,estimate,index,diffPercent,min,max,ACred,DCred,ACgreen,"
         "DCgreen,ACblue,DCblue,oldSpo2\n";
}

std::string traceRow(const MeasurementTally::Estimate& estimate) {
  std::string row = formatText("%.3f,%i,%s,%s", estimate.seconds, estimate.counter,
                               estimate.heartrate ? "heartrate" : "spo2", nameOf(estimate.verdict));
  if (const HeartrateResult* result = estimate.heartrate) {
    row += figure(result->heartrate);
    row += formatText(",%lld", static_cast<long long>(result->index));
    row += figure(result->diffPercent) + figure(result->min) + figure(result->max);
    return row + ",,,,,,,\n";
  }
  row += figure(estimate.spo2) + ",,,,";
  const Spo2Figures& figures = *estimate.spo2Figures;
  for (const ChannelPulsation& channel : {figures.red, figures.green, figures.blue}) {
    row += figure(channel.ac) + figure(channel.dc);
  }
  return row + figure(figures.oldSpo2) + "\n";
}

}  // namespace veyla
