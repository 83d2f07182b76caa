#pragma once

#include <memory>
#include <optional>
#include <string>

#include "measuring/main_view_controller.h"
#include "platform/linux/output_file.h"
#include "shell/screen_state.h"

namespace veyla {

struct PictureOptions {
  /// A PNG of the screen as it ended; empty for none.
  std::string snapshotFile;
  /// A folder of PNGs, one for each second since START; empty for none.
  std::string framesFolder;
  /// Pixels per point; 2 unless one is given.
  std::optional<double> scale;

  bool isEmpty() const { return snapshotFile.empty() && framesFolder.empty(); }
};

/// Pictures of the measuring screen of a phone, in files. None costs the measurement: what cannot
/// be written is told when all is over.
class ScreenPictures {
 public:
  /// What a picture shows.
  struct Screen {
    const MainViewController& controller;
    const ScreenState& views;
    const std::string& title;
  };

  /// The folder is made where there is none, and must hold nothing but such pictures, which the
  /// first new one replaces. Throws `OutputError`.
  explicit ScreenPictures(const PictureOptions& options);

  /// Writes the picture of a second as "0007.png".
  void addFrame(int second, const Screen& screen);
  /// Whether all that were added are there.
  bool hasFrames() const { return folder_ && !failedFrame_; }
  /// Draws the screen as it ended, with the pulse curve in its middle.
  void keepSnapshot(const Screen& screen);
  /// Writes the snapshot in place of a file of its name. Throws `OutputError`.
  void writeSnapshot();
  /// Throws the `OutputError` of the first frame that could not be written; none was after it.
  void requireFrames() const;

 private:
  PictureOptions options_;
  std::optional<PendingFolder> folder_;
  std::unique_ptr<OutputFile> snapshot_;
  std::string snapshotPicture_;
  std::optional<OutputError> failedFrame_;
};

}  // namespace veyla
