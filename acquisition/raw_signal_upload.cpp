#include "acquisition/raw_signal_upload.h"

#include <string_view>

#include "acquisition/settings.h"
#include "platform/platform.h"

namespace veyla::Utils {

namespace {

/// The name that stands for one's own machine in documents.
constexpr std::string_view collectionServer = "collection.example";
constexpr std::string_view path = "/OrvaneServer/Slim/index.php/processdata";
/// Names the sending tester.
constexpr const char* tester = "veyla tester";

Value::Array numbers(const std::vector<float>& values) {
  return Value::Array(values.begin(), values.end());
}

}  // namespace

HttpRequest rawSignalRequest(const std::vector<float>& redValues,
                             const std::vector<float>& greenValues,
                             const std::vector<float>& blueValues) {
  const Value record = Value::Dictionary{
      {"R", numbers(redValues)}, {"G", numbers(greenValues)}, {"B", numbers(blueValues)},
      {"iosver", iOSVersion()},  {"appver", appVersion()},    {"name", tester},
  };
  HttpRequest request;
  request.url = "http://" + std::string(collectionServer) + ":8888" + std::string(path);
  request.timeout = 60;
  request.body = services().jsonWriter.prettyPrinted(record).value_or("");
  request.method = "POST";
  request.headers.emplace_back("Content-Type", "application/json");
  return request;
}

bool sendDataToServerWithRedValues(const std::vector<float>& redValues,
                                   const std::vector<float>& greenValues,
                                   const std::vector<float>& blueValues) {
  static_cast<void>(rawSignalRequest(redValues, greenValues, blueValues));
  return true;
}

}  // namespace veyla::Utils
