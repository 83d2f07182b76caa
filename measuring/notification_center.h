#pragma once

#include <functional>
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
  /// No handler may register or remove anybody meanwhile.
  void post(std::string_view name);

 private:
  struct Registration {
    const void* observer;
    std::string name;
    std::function<void()> handler;
  };
  std::vector<Registration> registrations_;
};

}  // namespace veyla
