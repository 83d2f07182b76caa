#include "platform/web/pending.h"

#include <gtest/gtest.h>

namespace veyla {
namespace {

TEST(PendingTest, AnAnswerIsListenedToOnce) {
  Pending pending;
  std::vector<int> answers;
  const auto note = [&](int answer) { answers.push_back(answer); };
  int second = 0;
  // It asks the next question while it is being answered.
  const int first = pending.keep([&](int answer) {
    note(answer);
    second = pending.keep(note);
  });
  for (const int answer : {1, 2}) pending.settle(first, answer);
  pending.settle(second, 3);
  const int forgotten = pending.keep(note);
  pending.forget(forgotten);
  pending.settle(forgotten, 4);
  pending.settle(pending.keep({}), 5);
  EXPECT_EQ(answers, (std::vector{1, 3}));
}

}  // namespace
}  // namespace veyla
