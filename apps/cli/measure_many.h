#pragma once

#include <memory>
#include <string>

#include "apps/cli/measure_command.h"
#include "platform/linux/recording_source.h"

namespace veyla {

/// The recording of this name, or, for an empty one, the built-in fingertip; from `from` seconds
/// on, by `threads` threads, as of `openRecording`. Throws `InputError`.
std::unique_ptr<RecordingSource> openMeasured(const std::string& input, double from,
                                              int threads = 0);

/// Measures several recordings and those of folders, each once or from every so many seconds on: a
/// line each, in the order of the inputs. Returns the worst status of all that is told. A recording
/// that cannot be read or kept costs no other. Throws `UsageError` for what one measurement alone
/// can do.
ExitStatus measureMany(const MeasureOptions& options);

}  // namespace veyla
