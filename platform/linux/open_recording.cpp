#include <unistd.h>

#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "platform/linux/input_file.h"
#include "platform/linux/names.h"
#include "platform/linux/recording_source.h"
#include "platform/linux/series_source.h"
#include "platform/linux/videos.h"

namespace veyla {

namespace {

/// Whether the file opens with a line of text in which one column is named `time`.
bool startsLikeSeries(const std::string& path) {
  constexpr std::size_t longestFirstLine = 4096;
  std::array<char, longestFirstLine> start;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"),
                                                             std::fclose);
  if (!file) return false;
  const std::string_view text(start.data(), std::fread(start.data(), 1, start.size(), file.get()));
  std::string line(text.substr(0, text.find('\n')));
  if (line.find('\0') != std::string::npos) return false;

  // What may stand around a name: blanks, a carriage return, the byte-order mark.
  std::erase_if(line,
                [](char c) { return c != ',' && !std::isgraph(static_cast<unsigned char>(c)); });
  return ("," + lowerCase(line) + ",").find(",time,") != std::string::npos;
}

std::unique_ptr<RecordingSource> openFile(const std::string& path, double from, int threads) {
  requireInputFile(path);
  if (startsLikeSeries(path)) return std::make_unique<SeriesSource>(path);
  return videos().open(path, from, threads);
}

std::FILE* makeUnnamedFile() {
  std::error_code unknown;
  std::string name = std::filesystem::temp_directory_path(unknown) / "veyla.XXXXXX";
  const int file = mkstemp(name.data());
  if (file < 0) return nullptr;
  unlink(name.c_str());
  return fdopen(file, "w+b");
}

/// What comes on standard input, in a file without a name: recordings are read twice, and videos
/// from their ends.
class PipedFile {
 public:
  PipedFile() : file_(makeUnnamedFile(), std::fclose) {
    if (isatty(STDIN_FILENO) == 1) refuse("a terminal; pipe a recording into it");
    std::array<char, 1 << 16> block;
    for (ssize_t count = 0; (count = read(STDIN_FILENO, block.data(), block.size())) != 0;) {
      if (count < 0) refuse(readProblem(errno));
      const auto size = static_cast<std::size_t>(count);
      if (!file_ || std::fwrite(block.data(), 1, size, file_.get()) != size) refuseToKeep();
    }
    if (!file_ || std::fflush(file_.get()) != 0) refuseToKeep();
  }

  std::string path() const { return "/proc/self/fd/" + std::to_string(fileno(file_.get())); }

  /// A line about the file, about standard input.
  std::string named(std::string line) const {
    const std::string name = path();
    if (const auto at = line.find(name); at != line.npos) line.replace(at, name.size(), input);
    return line;
  }

  template <class Work>
  auto reading(const Work& work) const {
    try {
      return work();
    } catch (const InputError& error) {
      throw InputError(named(error.what()));
    }
  }

 private:
  static constexpr const char* input = "standard input";

  [[noreturn]] static void refuse(const std::string& reason) {
    throw InputError(std::string(input) + ": " + reason);
  }
  [[noreturn]] static void refuseToKeep() {
    refuse("cannot be kept while it is read: " + std::string(std::strerror(errno)) +
           "; make room in the temporary folder or save it to a file first");
  }

  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
};

class PipedSource final : public RecordingSource {
 public:
  PipedSource(double from, int threads)
      : source_(file_.reading([&] { return openFile(file_.path(), from, threads); })) {}

  bool advance() override {
    return file_.reading([this] { return source_->advance(); });
  }
  std::optional<double> nextTime() const override { return source_->nextTime(); }
  double time() const override { return source_->time(); }
  void deliver(SampleBufferDelegate& delegate) override { source_->deliver(delegate); }
  std::string remark() const override { return file_.named(source_->remark()); }

 private:
  PipedFile file_;
  std::unique_ptr<RecordingSource> source_;
};

}  // namespace

std::unique_ptr<RecordingSource> openRecording(const std::string& path, double from, int threads) {
  if (path == "-") return std::make_unique<PipedSource>(from, threads);
  return openFile(path, from, threads);
}

bool looksLikeRecording(const std::filesystem::path& file) {
  static const std::set<std::string> videoEndings{
      ".3gp", ".asf", ".avi",  ".flv", ".h264", ".hevc", ".m2ts", ".m4v",  ".mjpeg", ".mkv",
      ".mov", ".mp4", ".mpeg", ".mpg", ".mts",  ".ogv",  ".ts",   ".webm", ".wmv",   ".y4m"};
  std::error_code unknown;
  if (std::filesystem::is_directory(file, unknown)) return false;
  const std::string ending = endingOf(file);
  if (ending != ".csv") return videoEndings.contains(ending);
  try {
    SeriesReader(file.string());
  } catch (const InputError&) {
    return access(file.c_str(), R_OK) != 0;
  }
  return true;
}

}  // namespace veyla
