#pragma once

#include <map>
#include <string>

#include "platform/resources.h"

namespace veyla {

/// Files as texts, and a parser that knows what each JSON text holds.
class ScriptedResources : public Resources, public JsonParser {
 public:
  /// By name and type, such as "Faq.json".
  std::map<std::string, std::string, std::less<>> files;

  /// Adds the file `name`.json, which parses to `json`.
  void give(const std::string& name, Value json) {
    files[name + ".json"] = "the JSON of " + name;
    parsed_["the JSON of " + name] = std::move(json);
  }

  std::optional<std::string> read(std::string_view name, std::string_view type) const override {
    const auto found = files.find(std::string(name) + '.' + std::string(type));
    return found == files.end() ? std::nullopt : std::optional(found->second);
  }
  std::optional<Value> parse(std::string_view text) const override {
    const auto found = parsed_.find(text);
    return found == parsed_.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  std::map<std::string, Value, std::less<>> parsed_;
};

}  // namespace veyla
