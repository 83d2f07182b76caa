#pragma once

#include "apps/cli/exit_status.h"
#include "apps/cli/history_command.h"

namespace veyla {

/// Writes entries, counters and address into `options.output` as `Backup` has them. Exit status: 0
/// done, 3 an entry that is damaged and left out (the others are written all the same), 4 data that
/// cannot be read or written.
ExitStatus runHistoryBackup(const HistoryOptions& options);

/// Adds what is missing of the backup `options.input`, into a new history where there is none. Exit
/// status: 0 done, 3 a file that is no backup, 4 data that cannot be stored.
ExitStatus runHistoryRestore(const HistoryOptions& options);

}  // namespace veyla
