#include "apps/cli/screen_pictures.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string_view>

#include "measuring/measuring_layout.h"
#include "measuring/measuring_screen_drawing.h"
#include "platform/format.h"
#include "platform/linux/file_problem.h"
#include "platform/linux/pictures.h"

namespace veyla {

namespace {

constexpr Size phone{390, 844};
constexpr SafeArea phoneSafeArea{.top = 47, .bottom = 34};

constexpr double usualScale = 2;

/// Behind a picture's head: the text chunk by which its maker is known, with its checksum.
constexpr std::string_view mark(
    "\0\0\0\x0E"
    "tEXtSoftware\0veyla"
    "\x7A\xE5\x2E\x66",
    26);
constexpr std::size_t headSize = 33;

std::string pictureOf(const ScreenPictures::Screen& screen, std::optional<double> scale,
                      CenterPanel center) {
  const auto picture = pictures().make(phone, scale.value_or(usualScale));
  drawMeasuringScreen(*picture, MeasuringLayout(phone, phoneSafeArea), screen.controller,
                      screen.views, screen.title, center);
  return picture->png().insert(headSize, mark);
}

[[noreturn]] void refuseFolder(const std::string& path, int systemError) {
  throw OutputError(fileProblem(path, systemError, FilePlace::outputFile));
}

/// Whether it is a picture of a second that this program made, or what it left of one when it was
/// killed.
bool isOwnFrame(const std::filesystem::path& file) {
  static const std::regex name(R"(\d{4,}\.png(\.part\d+)?)");
  std::smatch part;
  const std::string named = file.filename();
  if (!std::regex_match(named, part, name) || !std::filesystem::is_regular_file(file)) return false;
  if (part.length(1) > 0) return true;
  std::string head(headSize + mark.size(), ' ');
  std::ifstream(file, std::ios::binary)
      .read(head.data(), static_cast<std::streamsize>(head.size()));
  return head.ends_with(mark);
}

/// The folder holds such pictures alone, which give way to the new ones.
void requireOwnFolder(const std::string& path) {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(path, error)) {
    if (isOwnFrame(entry.path())) continue;
    throw OutputError(path + ": holds " + entry.path().filename().string() +
                      ", which is no picture of a measurement; name a new or an empty folder");
  }
  if (error) refuseFolder(path, error.value());
  if (access(path.c_str(), W_OK | X_OK) != 0) refuseFolder(path, errno);
}

}  // namespace

ScreenPictures::ScreenPictures(const PictureOptions& options) : options_(options) {
  if (!options_.snapshotFile.empty()) {
    snapshot_ = std::make_unique<OutputFile>(options_.snapshotFile);
  }
  if (!options_.framesFolder.empty()) {
    folder_.emplace(options_.framesFolder);
    requireOwnFolder(options_.framesFolder);
  }
}

void ScreenPictures::addFrame(int second, const Screen& screen) {
  // After one that failed the others would only leave gaps.
  if (options_.framesFolder.empty() || failedFrame_) return;
  const std::filesystem::path folder(options_.framesFolder);
  try {
    // What is there was looked through; now that a measurement has begun it gives way.
    std::error_code error;
    if (second == 0) {
      for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        if (isOwnFrame(entry.path())) std::filesystem::remove(entry.path(), error);
      }
    }
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
