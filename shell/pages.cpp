#include "shell/pages.h"

#include "history/history_store.h"
#include "shell/json_resource.h"

namespace veyla::Utils {

namespace {

OptionsRow rowOf(const Value& entry) {
  const bool isEmail = entry["isEmail"].boolValue();
  if (isEmail && hasEmail()) {
    return {textOf(entry["storedTitle"]), getEmail().value_or(""), {}, isEmail};
  }
  return {textOf(entry["title"]), textOf(entry["subTitle"]), textOf(entry["page"]), isEmail};
}

}  // namespace

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

std::vector<std::vector<OptionsRow>> optionsRows() {
  const Value json = jsonResource("Options");
  std::vector<std::vector<OptionsRow>> sections;
  const auto* listed = json["sections"].array();
  if (!listed) return sections;
  for (const Value& section : *listed) {
    sections.emplace_back();
    const auto* rows = section.array();
    if (!rows) continue;
    for (const Value& row : *rows) sections.back().push_back(rowOf(row));
  }
  return sections;
}

}  // namespace veyla::Utils
