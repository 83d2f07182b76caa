#include "platform/web/pending.h"

#include <utility>

namespace veyla {

int Pending::keep(Answered answered) {
  waiting_.emplace(++last_, std::move(answered));
  return last_;
}

void Pending::settle(int number, int answer) {
  auto found = waiting_.extract(number);
  if (found && found.mapped()) found.mapped()(answer);
}

}  // namespace veyla
