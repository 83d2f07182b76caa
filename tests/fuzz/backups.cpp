#include "history/backup.h"
#include "history/history_store.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/test_platform.h"

/// What is restored is there once, however often, and is backed up as the same.
void veyla::fuzz(std::string_view input) {
  static TestPlatform platform;
  platform.store.values.clear();
  platform.journal.clear();
  std::string fault;
  const auto backup = readBackup(input, fault);
  if (!backup) return must(!fault.empty() && fault.find('\n') == fault.npos, "one line of reason");
  const auto first = restore(*backup);
  must(first && first->added == backup->entries.size(), "an empty machine gets all of it");
  const auto again = restore(*backup);
  must(again && again->added == 0, "nothing is doubled");
  const auto there = currentBackup();
  const auto text = textOf(there);
  must(there.damaged == 0 && text.has_value(), "what was restored can be backed up");
  const auto read = readBackup(*text, fault);
  must(read && read->entries == there.entries && read->email == there.email, "it reads back");
}
