#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/file_problem.h"
#include "platform/log.h"
#include "platform/main_queue.h"

namespace veyla {

/// Appends lines to a file, or to standard error where the path is "-". Each begins with the main
/// clock's time in UTC, is one line whatever its text holds, and is handed to the system at once.
class FileLog : public Log {
 public:
  /// A file that cannot be opened shows in `failure`. `clock` must outlive the log.
  FileLog(const std::string& path, const Clock& clock);

  /// False once anything has failed.
  bool enabled() const override { return !failure_; }
  void line(std::string_view text) override;

  /// The first thing that went wrong, as one line.
  const std::optional<std::string>& failure() const { return failure_; }

 private:
  struct Close {
    void operator()(std::FILE* file) const;
  };

  std::string path_;
  FilePlace place_;
  const Clock& clock_;
  std::unique_ptr<std::FILE, Close> file_;
  std::optional<std::string> failure_;
};

}  // namespace veyla
