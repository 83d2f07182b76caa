#pragma once

#include <functional>
#include <map>

namespace veyla {

/// What the core waits for while the page works or asks the user: a function under a number, which
/// the page hands back with its answer.
class Pending {
 public:
  /// 0 for no or nothing, else what the question's asker defines.
  using Answered = std::function<void(int answer)>;

  int keep(Answered answered);
  /// Calls the function and forgets it; nothing for a number that has been answered.
  void settle(int number, int answer);
  /// No answer will be listened to.
  void forget(int number) { waiting_.erase(number); }

 private:
  int last_ = 0;
  std::map<int, Answered> waiting_;
};

}  // namespace veyla
