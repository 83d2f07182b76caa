#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace veyla {

/// The life of the object that has this as a member: what is called late asks it whether the object
/// is still there.
class Life {
 public:
  Life() = default;
  Life(const Life&) = delete;
  Life& operator=(const Life&) = delete;

  /// `work` as long as the object lives; afterwards it does nothing and answers what nothing is.
  template <class Work>
  auto bound(Work work) const {
    return [life = std::weak_ptr(token_), work = std::move(work)](auto&&... arguments) {
      using Answer = std::invoke_result_t<const Work&, decltype(arguments)...>;
      if (life.expired()) return Answer();
      return work(std::forward<decltype(arguments)>(arguments)...);
    };
  }

 private:
  std::shared_ptr<char> token_ = std::make_shared<char>();
};

}  // namespace veyla
