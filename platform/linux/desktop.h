#pragma once

#include <string>

namespace veyla {

/// Whether there is a desktop with a mail program.
bool desktopHasMailProgram();

/// Opens a file that holds a mail in the desktop's own mail program, by the freedesktop.org tools.
/// False where it cannot be started. To be called where `desktopHasMailProgram`: without a program
/// for mails the file would be opened in a browser or an editor.
///
/// The file is opened as such, and not by its parts, since only so its HTML body and its
/// attachments reach every program.
bool openMailInDesktop(const std::string& file);

/// Opens an address in whatever the desktop opens it with; false where there is nothing.
bool openAddressInDesktop(const std::string& address);

}  // namespace veyla
