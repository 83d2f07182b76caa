#include "platform/linux/ffmpeg_support.h"

#include <array>

namespace veyla::ffmpeg {

void silenceLog() {
  av_log_set_callback([](void*, int, const char*, va_list) {});
}

std::string errorText(int error) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  av_strerror(error, text.data(), text.size());
  return text.data();
}

}  // namespace veyla::ffmpeg
