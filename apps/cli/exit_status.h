#pragma once

#include <array>
#include <exception>
#include <functional>
#include <stdexcept>
#include <system_error>

#include "apps/cli/complain.h"
#include "platform/linux/output_file.h"
#include "platform/linux/recording_source.h"
#include "platform/linux/store_error.h"

namespace veyla {

/// What the program tells its caller. Every command returns one; what a status means stands below.
enum class ExitStatus {
  done = 0,
  incomplete = 1,
  wrongUsage = 2,
  unreadableInput = 3,
  unwritableData = 4,
};

struct ExitStatusMeaning {
  ExitStatus status;
  const char* meaning;
};

/// For the manual page and the reference of commands.
inline constexpr std::array<ExitStatusMeaning, 5> exitStatusMeanings{
    {{ExitStatus::done, "finished"},
     {ExitStatus::incomplete, "the measurement ended without every requested value"},
     {ExitStatus::wrongUsage, "wrong usage, or an entry that the history does not have"},
     {ExitStatus::unreadableInput,
      "an input cannot be read: a recording, a reference, a settings file, a backup, or, while the "
      "rest was used, one of several recordings, a damaged entry or health record"},
     {ExitStatus::unwritableData,
      "the data cannot be stored: history, health records, an output file; or the store is "
      "damaged"}}};

/// An option with a value that it cannot take, as one line.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Whether `work` could write what it had to; tells on standard error what it could not, so that
/// the other outputs are written all the same. `allTheSame`: what is done in any case.
inline bool writes(const std::function<void()>& work, const std::string& allTheSame = {}) {
  try {
    work();
    return true;
  } catch (const OutputError& error) {
    complain(allTheSame + error.what());
    return false;
  }
}

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
  } catch (const std::exception& error) {
    complain(std::string(error.what()) + "; report this to the developers");
    return ExitStatus::unreadableInput;
  }
  return ExitStatus::unwritableData;
}

}  // namespace veyla
