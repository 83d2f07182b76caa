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
  // Shared instances may use the services and each other while they go: each leaves the map before
  // it is destroyed, and one that is asked for after that is made anew and goes in its turn.
  while (!instances_.empty()) instances_.extract(instances_.begin());
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
