#include "shell/pages.h"

#include "shell/json_resource.h"

namespace veyla::Utils {

std::optional<Page> page(std::string_view name) {
  const Value json = jsonResource(name);
  const auto* sections = json["sections"].array();
  if (!json["title"].text() || !sections) return std::nullopt;
  Page page{*json["title"].text(), {}};
  for (const Value& section : *sections) {
    const auto* heading = section["heading"].text();
    const auto* text = section["text"].text();
    if (heading && text) page.sections.push_back({*heading, *text});
  }
  return page;
}

}  // namespace veyla::Utils
