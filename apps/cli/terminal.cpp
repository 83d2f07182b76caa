#include "apps/cli/terminal.h"

#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "platform/linux/text_columns.h"

namespace veyla {

namespace {

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

bool localeSpeaksUnicode() {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const std::string_view locale = environment(name);
    if (locale.empty()) continue;
    return locale.find("UTF-8") != std::string_view::npos ||
           locale.find("utf8") != std::string_view::npos;
  }
  return false;
}

constexpr std::string_view showCursor = "\x1b[?25h";
constexpr std::string_view hideCursor = "\x1b[?25l";
constexpr std::array interruptions{SIGINT, SIGQUIT, SIGTERM, SIGHUP};
/// What became of each of them before the cursor was hidden.
std::array<void (*)(int), interruptions.size()> formerHandlers{};

void restoreHandlers() {
  for (std::size_t i = 0; i < interruptions.size(); ++i) {
    ::signal(interruptions[i], formerHandlers[i]);
  }
}

void writeAll(std::string_view text) {
  // Nothing is to be done about a terminal that has gone.
  [[maybe_unused]] const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
}

/// Passes the signal on to what would have become of it without a hidden cursor.
extern "C" void restoreCursorAndPassOn(int signal) {
  writeAll(showCursor);
  writeAll("\n");
  restoreHandlers();
  ::raise(signal);
}

}  // namespace

Terminal terminalBehind(int fileDescriptor) {
  Terminal terminal;
  const std::string_view kind = environment("TERM");
  terminal.interactive = ::isatty(fileDescriptor) == 1 && kind != "dumb" && !kind.empty();
  terminal.color = terminal.interactive && environment("NO_COLOR").empty();
  terminal.unicode = localeSpeaksUnicode();
  winsize size{};
  const bool isSized =
      ::ioctl(fileDescriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 0;
  if (isSized) {
    terminal.columns = size.ws_col;
    terminal.rows = size.ws_row;
  }
  // A width that is left over from a larger window would break every line.
  constexpr std::size_t fewestColumns = 20;
  const std::size_t wanted = std::strtoul(environment("COLUMNS").data(), nullptr, 10);
  if (wanted >= fewestColumns && (!isSized || wanted < terminal.columns)) terminal.columns = wanted;
  return terminal;
}

std::string brokenAt(std::size_t columns, const std::string& text, std::size_t indent) {
  std::string result;
  std::size_t column = 0;
  for (std::size_t at = 0; at < text.size();) {
    // A word with the blanks before it, which stay behind where the line breaks.
    const std::size_t word = std::min(text.find_first_not_of(' ', at), text.size());
    const std::size_t end = std::min(text.find_first_of(" \n", word), text.size());
    const std::size_t width = columnsOf(text.substr(word, end - word));
    if (column > 0 && column + (word - at) + width > columns) {
      result += '\n' + std::string(indent, ' ');
      column = indent;
    } else {
      result.append(word - at, ' ');
      column += word - at;
    }
    result += text.substr(word, end - word);
    column += width;
    at = end;
    if (at < text.size() && text[at] == '\n') {
      result += '\n';
      column = 0;
      ++at;
    }
  }
  return result;
}

std::string wrapped(const std::string& text, const Terminal& terminal, std::size_t indent) {
  return terminal.interactive ? brokenAt(terminal.columns, text, indent) : text;
}

HiddenCursor::HiddenCursor() {
  for (std::size_t i = 0; i < interruptions.size(); ++i) {
    formerHandlers[i] = ::signal(interruptions[i], restoreCursorAndPassOn);
    if (formerHandlers[i] == SIG_IGN) ::signal(interruptions[i], SIG_IGN);
  }
  writeAll(hideCursor);
}

HiddenCursor::~HiddenCursor() {
  writeAll(showCursor);
  restoreHandlers();
}

}  // namespace veyla
