#include "shell/faq.h"

#include "shell/json_resource.h"

namespace veyla::Utils {

namespace {

struct LoadedFaqs {
  std::vector<FaqEntry> entries;
};

LoadedFaqs& loaded() { return Platform::current().shared<LoadedFaqs>(); }

}  // namespace

void loadLocalFaqs() {
  auto& entries = loaded().entries;
  entries.clear();
  const Value json = jsonResource("Faq");
  const auto* results = json["results"].array();
  if (!results) return;
  for (const Value& entry : *results) {
    const auto* question = entry["question"].text();
    const auto* answer = entry["answer"].text();
    if (question && answer) entries.push_back({*question, *answer});
  }
}

const std::vector<FaqEntry>& faqs() { return loaded().entries; }

}  // namespace veyla::Utils
