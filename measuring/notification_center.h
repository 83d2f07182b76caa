#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace veyla {

/// Delivers named notifications, synchronously, to whoever registered for the name.
class NotificationCenter {
 public:
  /// The default centre of the platform in force.
  static NotificationCenter& instance();

  /// `observer` names the registration for `remove`.
  void add(const void* observer, std::string_view name, std::function<void()> handler);
  void remove(const void* observer);
  /// A handler may register and remove anybody, itself included: who is removed before its turn is
  /// not told any more, and who comes in is told from the next time on.
  void post(std::string_view name);

 private:
  struct Registration {
    const void* observer;
    std::string name;
    std::function<void()> handler;
  };
  /// Shared with a post under way, which outlives a removal.
  std::vector<std::shared_ptr<const Registration>> registrations_;
};

}  // namespace veyla
