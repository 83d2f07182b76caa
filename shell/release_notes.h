#pragma once

#include <string>
#include <vector>

namespace veyla {

/// What a version brought.
struct ReleaseNotes {
  std::string version;
  std::vector<std::string> notes;

  bool operator==(const ReleaseNotes&) const = default;
};

namespace Utils {

/// Those of the local resource "ReleaseNotes", in its order, newest first.
std::vector<ReleaseNotes> releaseNotes();

/// Shows what this version brought, and that it brought nothing worth telling otherwise.
void showReleaseNotesPopup();

}  // namespace Utils

}  // namespace veyla
