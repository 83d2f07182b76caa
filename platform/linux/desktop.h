#pragma once

#include <string>

namespace veyla {

/// Opens a file that holds a mail in the desktop's own mail program, by the freedesktop.org tools.
/// False where there is no desktop, no mail program, or it cannot be started.
///
/// The file is opened as such, and not by its parts, since only so its HTML body and its
/// attachments reach every program.
bool openMailInDesktop(const std::string& file);

/// Opens an address in whatever the desktop opens it with; false where there is nothing.
bool openAddressInDesktop(const std::string& address);

/// Whether there is a desktop with a mail program.
bool desktopHasMailProgram();

}  // namespace veyla
