#include "platform/web/pending.h"

#include <gmock/gmock.h>

#include <vector>

namespace veyla {
namespace {

TEST(PendingTest, AnAnswerIsListenedToOnce) {
  Pending pending;
  std::vector<int> answers;
  int second = 0;
  // It asks the next question while it is being answered.
  const int first = pending.keep([&](int answer) {
    answers.push_back(answer);
    second = pending.keep([&](int next) { answers.push_back(next); });
  });
  pending.settle(first, 1);
  pending.settle(first, 2);
  pending.settle(second, 3);
  const int forgotten = pending.keep([&](int answer) { answers.push_back(answer); });
  pending.forget(forgotten);
  pending.settle(forgotten, 4);
  pending.settle(pending.keep({}), 5);
  EXPECT_THAT(answers, testing::ElementsAre(1, 3));
}

}  // namespace
}  // namespace veyla
