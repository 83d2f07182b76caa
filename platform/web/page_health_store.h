#pragma once

#include <emscripten/val.h>

#include <functional>
#include <vector>

#include "platform/portable/health_records.h"
#include "platform/web/pending.h"

namespace veyla {

/// The health store as lines that the page keeps and offers as a file.
class PageHealthStore : public HealthRecords {
 public:
  /// `page` answers `ask(names, pending)`, whose answer has a bit for each type allowed, in their
  /// order, and is negative when there was none; and `append(line, pending)`, whose answer is
  /// whether the line is kept.
  PageHealthStore(emscripten::val page, Pending& pending, KeyValueStore& permissions,
                  UuidGenerator& uuids);

  void requestAuthorization(const std::vector<HealthSampleType>& types,
                            std::function<void(bool success)> completion) override;

 private:
  void keep(const std::string& line, Completion completion) override;

  emscripten::val page_;
  Pending& pending_;
};

}  // namespace veyla
