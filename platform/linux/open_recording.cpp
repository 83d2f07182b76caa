#include <array>
#include <cctype>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/ffmpeg_source.h"
#include "platform/linux/input_file.h"
#include "platform/linux/names.h"
#include "platform/linux/recording_source.h"
#include "platform/linux/series_source.h"

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

}  // namespace

std::unique_ptr<RecordingSource> openRecording(const std::string& path, double from) {
  requireInputFile(path);
  if (startsLikeSeries(path)) return std::make_unique<SeriesSource>(path);
  return std::make_unique<FfmpegSource>(path, from);
}

}  // namespace veyla
