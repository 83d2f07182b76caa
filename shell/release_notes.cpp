#include "shell/release_notes.h"

#include <algorithm>
#include <utility>

#include "shell/alerts.h"
#include "shell/json_resource.h"

namespace veyla::Utils {

std::vector<ReleaseNotes> releaseNotes() {
  const Value json = jsonResource("ReleaseNotes");
  std::vector<ReleaseNotes> versions;
  const auto* results = json["results"].array();
  if (!results) return versions;
  for (const Value& entry : *results) {
    const std::string* version = entry["version"].text();
    const auto* notes = entry["notes"].array();
    if (!version || !notes) continue;
    versions.push_back({*version, {}});
    for (const Value& note : *notes) {
      if (note.text()) versions.back().notes.push_back(*note.text());
    }
  }
  return versions;
}

void showReleaseNotesPopup() {
  const std::string version = services().device.bundleVersion();
  const std::vector<ReleaseNotes> versions = releaseNotes();
  const auto found = std::find_if(versions.begin(), versions.end(), [&](const ReleaseNotes& notes) {
    return notes.version == version;
  });
  Alert popup;
  popup.kind = AlertKind::notice;
  popup.title = "What's new in " + version;
  if (found != versions.end()) {
    for (const std::string& note : found->notes) {
      if (!popup.subtitle.empty()) popup.subtitle += "\n";
      popup.subtitle += "\u2022 " + note;
    }
  }
  if (popup.subtitle.empty()) popup.subtitle = "Small improvements.";
  popup.closeButton = "Done";
  popup.closesOnOutsideTap = true;
  Alerts::instance().show(std::move(popup));
}

}  // namespace veyla::Utils
