#include "platform/linux/log_file.h"

#include <fcntl.h>

#include <cerrno>
#include <cmath>
#include <ctime>

#include "platform/format.h"
#include "platform/linux/file_problem.h"
#include "platform/linux/output_file.h"

namespace veyla {

namespace {

std::string timeStamp(Date date) {
  const double seconds = std::floor(date.secondsSince1970);
  const auto time = static_cast<std::time_t>(seconds);
  std::tm utc{};
  gmtime_r(&time, &utc);
  char text[32];
  const std::size_t size = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
  return std::string(text, size) +
         formatText(".%03dZ", static_cast<int>((date.secondsSince1970 - seconds) * 1000));
}

}  // namespace

void FileLog::Close::operator()(std::FILE* file) const {
  if (file != stderr) std::fclose(file);
}

FileLog::FileLog(const std::string& path, const Clock& clock, const MainQueue& queue, double start)
    : path_(path == "-" ? "standard error" : path),
      place_(path == "-" ? FilePlace::stream : FilePlace::outputFile),
      clock_(clock),
      queue_(queue),
      start_(start),
      file_(path == "-" ? stderr : nullptr) {
  if (file_) return;
  const int opened = openInPlace(path, O_WRONLY | O_APPEND | O_CREAT);
  if (opened >= 0) file_.reset(fdopen(opened, "a"));
  if (!file_) failure_ = errno == ENXIO ? nobodyReads(path_) : fileProblem(path_, errno, place_);
}

void FileLog::line(std::string_view text) {
  if (!enabled()) return;
  std::string line = timeStamp(clock_.now()) + formatText(" %.3f ", start_ + queue_.elapsed());
  for (const char c : text) {
    if (c == '\n') {
      line += "\\n";
    } else {
      line += c;
    }
  }
  line += '\n';
  if (std::fwrite(line.data(), 1, line.size(), file_.get()) != line.size() ||
      std::fflush(file_.get()) != 0) {
    failure_ = fileProblem(path_, errno, place_);
  }
}

}  // namespace veyla
