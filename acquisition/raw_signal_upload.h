#pragma once

#include <vector>

#include "platform/http_request.h"

/// A measurement's raw colour series for a collection server, as developers of the estimators need
/// them. Nothing is ever transmitted from here: the request is made ready and that is all.
namespace veyla::Utils {

/// The request that carries the series, the system's version and the application's as JSON. Its
/// body is empty when a value is not finite.
HttpRequest rawSignalRequest(const std::vector<float>& redValues,
                             const std::vector<float>& greenValues,
                             const std::vector<float>& blueValues);

/// Prepares that request and drops it. Always true.
bool sendDataToServerWithRedValues(const std::vector<float>& redValues,
                                   const std::vector<float>& greenValues,
                                   const std::vector<float>& blueValues);

}  // namespace veyla::Utils
