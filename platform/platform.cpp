#include "platform/platform.h"

#include <cstdarg>

#include "platform/format.h"

namespace veyla {

namespace {

thread_local Platform* inForce = nullptr;

}  // namespace

Platform::Platform(const Services& services) : services_(services), previous_(inForce) {
  inForce = this;
}

Platform::~Platform() {
  // Shared instances may use the services while they go.
  instances_.clear();
  inForce = previous_;
}

Platform& Platform::current() { return *inForce; }

void logLine(const char* format, ...) {
  Log& log = services().log;
  if (!log.enabled()) return;
  std::va_list arguments;
  va_start(arguments, format);
  log.line(formatArguments(format, arguments));
  va_end(arguments);
}

}  // namespace veyla
