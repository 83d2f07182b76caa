#pragma once

#include <algorithm>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace veyla {

/// How many threads so many jobs take: 0 for one per processor.
inline unsigned threadsOf(int jobs) {
  return jobs > 0 ? static_cast<unsigned>(jobs) : std::max(1U, std::thread::hardware_concurrency());
}

/// Calls `work` with each number below `count`, on `jobs` threads (0 for one per processor), and
/// throws what one of the calls throws.
inline void inParallel(std::size_t count, int jobs, const std::function<void(std::size_t)>& work) {
  const unsigned threadCount = threadsOf(jobs);
  std::mutex mutex;
  std::size_t next = 0;
  std::exception_ptr failure;
  const auto take = [&]() -> std::optional<std::size_t> {
    const std::lock_guard lock(mutex);
    if (failure || next == count) return std::nullopt;
    return next++;
  };
  const auto run = [&] {
    try {
      while (const auto number = take()) work(*number);
    } catch (...) {
      const std::lock_guard lock(mutex);
      failure = std::current_exception();
    }
  };
  std::vector<std::thread> threads;
  for (unsigned i = 1; i < threadCount; ++i) threads.emplace_back(run);
  run();
  for (std::thread& thread : threads) thread.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace veyla
