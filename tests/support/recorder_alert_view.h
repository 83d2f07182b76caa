#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/alert_view.h"
#include "tests/support/journal.h"

namespace veyla {

/// Keeps every alert that was shown; "alert show …" and "alert hide …" with the title in the
/// journal.
class RecorderAlertView : public AlertView {
 public:
  explicit RecorderAlertView(Journal& journal) : journal_(journal) {}

  std::vector<Alert> shown;
  /// The titles of those in front, by their numbers.
  std::map<int, std::string> inFront;
  /// The number of the last one.
  int lastId = 0;
  /// What a view does that answers at once; may be empty.
  std::function<void(int id)> answer;
  /// What became of text fields: "text 1 contents", "focus 1".
  std::vector<std::string> fields;

  void show(int id, const Alert& alert) override {
    shown.push_back(alert);
    lastId = id;
    inFront[id] = alert.title;
    journal_.add("alert show " + alert.title);
    if (answer) answer(id);
  }
  void setFieldText(int id, const std::string& text) override {
    fields.push_back("text " + std::to_string(id) + ' ' + text);
  }
  void focusField(int id) override { fields.push_back("focus " + std::to_string(id)); }
  void hide(int id) override {
    inFront.erase(id);
    journal_.add("alert hide " + std::to_string(id));
  }

 private:
  Journal& journal_;
};

}  // namespace veyla
