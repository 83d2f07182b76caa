#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "apps/cli/exit_status.h"

namespace veyla {

/// What the commands on the history take. They use the results screen as the phone does, newest
/// entry first; entries are numbered from 1.
struct HistoryOptions {
  /// Folder of the history; empty for the user's own.
  std::string dataFolder;
  bool json = false;
  /// The entry to label.
  std::size_t number = 0;
  /// The entries to delete or share; for sharing, none stands for all.
  std::vector<std::size_t> numbers;
  /// A label's name, or "none", in any case.
  std::string label;
  /// Takes the label off instead.
  bool off = false;
  /// The backup to restore.
  std::string input;
  /// A file, or "-" for standard output; empty for the mail program.
  std::string output;
  /// Mails the lines in the body instead of as an attachment.
  bool text = false;
};

/// Each returns the exit status: 0 done, 2 a number or label that there is not, or nothing to mail,
/// 3 an entry that is damaged (what is not damaged is listed and shared all the same), 4 data that
/// cannot be stored.
ExitStatus runHistoryList(const HistoryOptions& options);
ExitStatus runHistoryLabel(const HistoryOptions& options);
ExitStatus runHistoryDelete(const HistoryOptions& options);
ExitStatus runHistoryExport(const HistoryOptions& options);
ExitStatus runHistoryMail(const HistoryOptions& options);

}  // namespace veyla
