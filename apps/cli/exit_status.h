#pragma once

#include <exception>
#include <functional>
#include <stdexcept>
#include <system_error>

#include "apps/cli/complain.h"
#include "platform/linux/output_file.h"
#include "platform/linux/recording_source.h"
#include "platform/linux/store_error.h"

namespace veyla {

/// What the program tells its caller; the README lists the same.
enum class ExitStatus {
  done = 0,
  /// The measurement ended without every requested value.
  incomplete = 1,
  wrongUsage = 2,
  unreadableInput = 3,
  unwritableData = 4,
};

/// An option with a value that it cannot take, as one line.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Runs a command; tells on standard error, in one line, what stopped it.
inline ExitStatus exitStatusOf(const std::function<ExitStatus()>& command) {
  try {
    return command();
  } catch (const UsageError& error) {
    complain(error.what());
    return ExitStatus::wrongUsage;
  } catch (const InputError& error) {
    complain(error.what());
    return ExitStatus::unreadableInput;
  } catch (const StoreError& error) {
    complain(error.what());
  } catch (const OutputError& error) {
    complain(error.what());
  } catch (const std::system_error& error) {
    complain(std::string(error.what()) + "; check the folder and the machine's limits");
    return ExitStatus::unreadableInput;
  } catch (const std::bad_alloc&) {
    complain("out of memory; measure a shorter part of the recording");
    return ExitStatus::unreadableInput;
  }
  return ExitStatus::unwritableData;
}

}  // namespace veyla
