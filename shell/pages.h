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

/// A row of the options screen.
struct OptionsRow {
  std::string title;
  std::string subTitle;
  /// The page that the row leads to; empty where a tap does something else.
  std::string page;
  /// The row has the user's mail address, with a button to change it.
  bool isEmail = false;

  bool operator==(const OptionsRow&) const = default;
};

namespace Utils {

/// The page in the local resource `name` ("HealthHowTo", "Terms", "About"); nothing when it is
/// missing or no page. A section without heading or text is left out.
std::optional<Page> page(std::string_view name);

/// The rows of the options screen, by section, as the resource "Options" lays them out; the row of
/// the user's mail address tells the one that is stored.
std::vector<std::vector<OptionsRow>> optionsRows();

}  // namespace Utils

}  // namespace veyla
