#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>

#include "apps/cli/terminal.h"

namespace veyla {

/// A bar on standard error, if somebody is there to see it.
class ProgressBar {
 public:
  explicit ProgressBar(std::string caption) : caption_(std::move(caption)) {}
  ~ProgressBar() { clear(); }
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  void show(std::size_t done, std::size_t all) {
    if (!terminal_.interactive) return;
    const std::string count = std::to_string(done) + " of " + std::to_string(all);
    // On one line in any case, with the cursor behind it.
    const std::size_t others = caption_.size() + 2 * std::to_string(all).size() + 7;
    const std::size_t width =
        std::min<std::size_t>(40, std::max(terminal_.columns, others) - others);
    const std::size_t filled = width * done / all;
    if (shown_ && filled == filled_ && done != all) return;
    filled_ = filled;
    shown_ = true;
    std::string bar;
    for (std::size_t i = 0; i < width; ++i) {
      bar += i < filled ? (terminal_.unicode ? "█" : "#") : (terminal_.unicode ? "░" : ".");
    }
    std::fprintf(stderr, "\r%s %s %s", caption_.c_str(), bar.c_str(), count.c_str());
  }

  /// While nobody knows how much there is: whole seconds of a recording that were read.
  void showRead(double seconds) {
    const auto whole = static_cast<std::size_t>(seconds);
    if (!terminal_.interactive || (shown_ && read_ == whole)) return;
    read_ = whole;
    filled_.reset();
    shown_ = true;
    std::fprintf(stderr, "\rRead %zu s", whole);
  }

  /// Leaves the line as it was.
  void clear() {
    if (shown_) std::fputs("\r\x1b[2K", stderr);
    shown_ = false;
  }

 private:
  std::string caption_;
  Terminal terminal_ = terminalBehind(STDERR_FILENO);
  /// Of the bar, where that is what stands there.
  std::optional<std::size_t> filled_;
  std::size_t read_ = 0;
  bool shown_ = false;
};

}  // namespace veyla
