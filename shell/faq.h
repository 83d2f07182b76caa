#pragma once

#include <string>
#include <vector>

namespace veyla {

struct FaqEntry {
  std::string question;
  std::string answer;

  bool operator==(const FaqEntry&) const = default;
};

namespace Utils {

/// Loads the questions and answers of the local resource "Faq"; none when it is missing or broken.
void loadLocalFaqs();

/// What was loaded, in the resource's order.
const std::vector<FaqEntry>& faqs();

}  // namespace Utils

}  // namespace veyla
