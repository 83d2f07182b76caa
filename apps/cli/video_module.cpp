#include <dlfcn.h>

#include <filesystem>

#include "platform/linux/ffmpeg_videos.h"

namespace veyla {

namespace {

/// The module's file: in the folder that it is built into, beside the program itself, whatever link
/// leads there, or where it is installed.
std::filesystem::path moduleFile() {
  std::error_code unknown;
  const auto folder = std::filesystem::read_symlink("/proc/self/exe", unknown).parent_path();
  const auto built = folder / "modules" / "video.so";
  return std::filesystem::exists(built, unknown) ? built : folder / VEYLA_MODULES / "video.so";
}

const Videos& openModule() {
  // Never closed: recordings and videos that it made may outlive any moment to do so.
  void* const module = dlopen(moduleFile().c_str(), RTLD_NOW | RTLD_LOCAL);
  void* const found = module == nullptr ? nullptr : dlsym(module, "veylaFfmpegVideos");
  if (found == nullptr) {
    throw InputError("videos cannot be read or written: " + std::string(dlerror()) +
                     "; install veyla again");
  }
  return *reinterpret_cast<decltype(veylaFfmpegVideos)*>(found)();
}

}  // namespace

const Videos& videos() {
  static const Videos& opened = openModule();
  return opened;
}

}  // namespace veyla
