#pragma once

#include <string>
#include <utility>
#include <vector>

namespace veyla {

/// A request as it would be sent. The cache policy is the protocol's default.
struct HttpRequest {
  std::string url;
  std::string method = "GET";
  /// In the order in which they were added; a name may come more than once.
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
  /// In seconds; 0 for the system's own.
  double timeout = 0;

  bool operator==(const HttpRequest&) const = default;
};

}  // namespace veyla
