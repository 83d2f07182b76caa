#pragma once

#include <unistd.h>

#include <cstddef>
#include <cstdio>
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
    const std::size_t filled = width * done / all;
    if (shown_ && filled == filled_ && done != all) return;
    filled_ = filled;
    shown_ = true;
    std::string bar;
    for (std::size_t i = 0; i < width; ++i) {
      bar += i < filled ? (terminal_.unicode ? "█" : "#") : (terminal_.unicode ? "░" : ".");
    }
    std::fprintf(stderr, "\r%s %s %zu of %zu", caption_.c_str(), bar.c_str(), done, all);
  }

  /// Leaves the line as it was.
  void clear() {
    if (shown_) std::fputs("\r\x1b[2K", stderr);
    shown_ = false;
  }

 private:
  static constexpr std::size_t width = 40;

  std::string caption_;
  Terminal terminal_ = terminalBehind(STDERR_FILENO);
  std::size_t filled_ = 0;
  bool shown_ = false;
};

}  // namespace veyla
