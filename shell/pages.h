#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace veyla {

struct PageSection {
  std::string heading;
  std::string text;

  bool operator==(const PageSection&) const = default;
};

/// A page to read.
struct Page {
  std::string title;
  std::vector<PageSection> sections;

  bool operator==(const Page&) const = default;
};

namespace Utils {

/// The page in the local resource `name` ("HealthHowTo", "Terms", "About"); nothing when it is
/// missing or no page. A section without heading or text is left out.
std::optional<Page> page(std::string_view name);

}  // namespace Utils

}  // namespace veyla
