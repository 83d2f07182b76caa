#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace veyla {

/// What the system asked of the scripted services, in one order for all of them. A line begins with
/// the service's name: "store set email", "device torch 1".
class Journal {
 public:
  void add(std::string line) { lines_.push_back(std::move(line)); }

  const std::vector<std::string>& lines() const { return lines_; }

  /// The lines of one service, without its name.
  std::vector<std::string> of(std::string_view service) const {
    std::vector<std::string> found;
    for (const std::string& line : lines_) {
      if (line.starts_with(service) && line[service.size()] == ' ') {
        found.push_back(line.substr(service.size() + 1));
      }
    }
    return found;
  }

  void clear() { lines_.clear(); }

 private:
  std::vector<std::string> lines_;
};

}  // namespace veyla
