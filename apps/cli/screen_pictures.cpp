#include "apps/cli/screen_pictures.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "measuring/measuring_layout.h"
#include "measuring/measuring_screen_drawing.h"
#include "platform/format.h"
#include "platform/linux/cairo_canvas.h"
#include "platform/linux/file_problem.h"

namespace veyla {

namespace {

constexpr Size phone{390, 844};
constexpr SafeArea phoneSafeArea{.top = 47, .bottom = 34};

constexpr double usualScale = 2;

std::string pictureOf(const ScreenPictures::Screen& screen, std::optional<double> scale,
                      CenterPanel center) {
  CairoCanvas canvas(phone, scale.value_or(usualScale));
  drawMeasuringScreen(canvas, MeasuringLayout(phone, phoneSafeArea), screen.controller,
                      screen.views, screen.title, center);
  return canvas.png();
}

[[noreturn]] void refuseFolder(const std::string& path, int systemError) {
  throw OutputError(fileProblem(path, systemError, FilePlace::outputFile));
}

void requireEmptyFolder(const std::string& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) {
    if (!std::filesystem::create_directory(path, error)) refuseFolder(path, error.value());
    return;
  }
  if (error) refuseFolder(path, error.value());
  if (!std::filesystem::is_directory(status)) refuseFolder(path, ENOTDIR);
  const bool isEmpty = std::filesystem::is_empty(path, error);
  if (error) refuseFolder(path, error.value());
  if (!isEmpty) throw OutputError(path + ": not empty; name a new or an empty folder");
  if (access(path.c_str(), W_OK | X_OK) != 0) refuseFolder(path, errno);
}

}  // namespace

ScreenPictures::ScreenPictures(const PictureOptions& options) : options_(options) {
  if (!options_.snapshotFile.empty()) {
    snapshot_ = std::make_unique<OutputFile>(options_.snapshotFile);
  }
  if (!options_.framesFolder.empty()) requireEmptyFolder(options_.framesFolder);
}

void ScreenPictures::addFrame(int second, const Screen& screen) {
  // After one that failed the others would only leave gaps.
  if (options_.framesFolder.empty() || failedFrame_) return;
  const std::filesystem::path folder(options_.framesFolder);
  try {
    OutputFile file(folder / formatText("%04d.png", second));
    file.write(pictureOf(screen, options_.scale, CenterPanel::asShown));
    file.commit();
  } catch (const OutputError& error) {
    failedFrame_ = error;
  }
}

void ScreenPictures::keepSnapshot(const Screen& screen) {
  if (snapshot_) snapshotPicture_ = pictureOf(screen, options_.scale, CenterPanel::pulse);
}

void ScreenPictures::writeSnapshot() {
  if (!snapshot_) return;
  snapshot_->write(snapshotPicture_);
  snapshot_->commit();
}

void ScreenPictures::requireFrames() const {
  if (failedFrame_) throw OutputError(*failedFrame_);
}

}  // namespace veyla
