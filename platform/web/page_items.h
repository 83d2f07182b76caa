#pragma once

#include <emscripten/val.h>

#include <utility>

#include "platform/web/local_store.h"
#include "platform/web/page_types.h"

namespace veyla {

/// As a pair.
template <>
struct PageType<LocalItems::Change> {
  using Carried = emscripten::val;
  static Carried to(const LocalItems::Change& change) {
    Carried pair = Carried::array();
    pair.call<void>("push", change.first);
    pair.call<void>("push", change.second);
    return pair;
  }
};

/// The items of `page`, which answers `read(key)`, a text or null, and `write(changes)`.
class PageItems : public LocalItems {
 public:
  explicit PageItems(emscripten::val page) : page_(std::move(page)) {}

  std::optional<std::string> read(const std::string& key) const override {
    return page_.call<std::optional<std::string>>("read", key);
  }
  std::string write(const std::vector<Change>& changes) override {
    return page_.call<std::string>("write", changes);
  }

 private:
  emscripten::val page_;
};

}  // namespace veyla
