#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/file_problem.h"
#include "platform/log.h"
#include "platform/main_queue.h"

namespace veyla {

/// Appends lines to a file, or to standard error where the path is "-". Each begins with the
/// clock's time in UTC and the second of the recording, is one line whatever its text holds, and is
/// handed to the system at once.
class FileLog : public Log {
 public:
  /// The queue begins at second `start` of the recording. A file that cannot be opened shows in
  /// `failure`. `clock` and `queue` must outlive the log.
  FileLog(const std::string& path, const Clock& clock, const MainQueue& queue, double start = 0);

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
  const MainQueue& queue_;
  double start_;
  std::unique_ptr<std::FILE, Close> file_;
  std::optional<std::string> failure_;
};

}  // namespace veyla
