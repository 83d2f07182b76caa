#include <dlfcn.h>

#include <filesystem>

#include "platform/linux/cairo_pictures.h"
#include "platform/linux/ffmpeg_videos.h"
#include "platform/linux/mail_draft.h"

namespace veyla {

namespace {

/// A module's file: in the folder that it is built into, beside the program itself, whatever link
/// leads there, or where it is installed.
std::filesystem::path moduleFile(const std::string& name) {
  std::error_code unknown;
  const auto folder = std::filesystem::read_symlink("/proc/self/exe", unknown).parent_path();
  const auto built = folder / "modules" / name;
  return std::filesystem::exists(built, unknown) ? built : folder / VEYLA_MODULES / name;
}

/// What the module's function of that name gives; `cannot` is what the program cannot do without.
template <class Services>
const Services& open(const char* name, const char* function, const char* cannot) {
  // Never closed: what it made may outlive any moment to do so.
  void* const module = dlopen(moduleFile(name).c_str(), RTLD_NOW | RTLD_LOCAL);
  void* const found = module == nullptr ? nullptr : dlsym(module, function);
  if (found == nullptr) {
    throw InputError(std::string(cannot) + ": " + dlerror() + "; install veyla again");
  }
  return *reinterpret_cast<const Services* (*)()>(found)();
}

}  // namespace

const Videos& videos() {
  static const Videos& opened =
      open<Videos>("video.so", "veylaFfmpegVideos", "videos cannot be read or written");
  return opened;
}

const Pictures& pictures() {
  static const Pictures& opened =
      open<Pictures>("pictures.so", "veylaCairoPictures", "pictures cannot be drawn");
  return opened;
}

const Mails& mails() {
  static const Mails& opened = open<Mails>("mail.so", "veylaGmimeMails", "mails cannot be written");
  return opened;
}

}  // namespace veyla
