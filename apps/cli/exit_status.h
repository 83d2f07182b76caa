#pragma once

#include <cstdio>
#include <exception>
#include <functional>
#include <stdexcept>

#include "platform/linux/output_file.h"
#include "platform/linux/recording_source.h"

namespace veyla {

/// What the commands return, as the README lists it.
enum ExitStatus : int { done = 0, wrongUsage = 2, unreadableInput = 3, unwritableOutput = 4 };

/// An option with a value that it cannot take, as one line.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Runs a command; tells on standard error, in one line, what stopped it.
inline int exitStatusOf(const std::function<void()>& command) {
  const auto tell = [](const std::exception& error) {
    std::fprintf(stderr, "veyla: %s\n", error.what());
  };
  try {
    command();
    return done;
  } catch (const UsageError& error) {
    tell(error);
    return wrongUsage;
  } catch (const InputError& error) {
    tell(error);
    return unreadableInput;
  } catch (const OutputError& error) {
    tell(error);
    return unwritableOutput;
  }
}

}  // namespace veyla
