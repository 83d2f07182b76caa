#pragma once

#include <map>
#include <string>

#include "platform/alert_view.h"

namespace veyla {

/// The modal message boxes in front, and what becomes of them: the view draws, this decides.
class Alerts {
 public:
  /// The alerts of the platform in force.
  static Alerts& instance();

  /// Shows an alert and returns its number. One with a duration goes away by itself.
  int show(Alert alert);

  // What the user does to an alert; an alert that is gone already is left alone.

  void tapButton(int id, std::size_t button);
  void tapClose(int id);
  void tapOutside(int id);

  /// Tells what stands in the text field now.
  void typeInField(int id, const std::string& text);

  // The text field of an alert that has one; empty for any other.

  std::string fieldText(int id) const;
  void setFieldText(int id, const std::string& text);
  void focusField(int id);

  /// Takes an alert back that means nothing any more, without its `onDismiss`.
  void withdraw(int id);

  bool isShowing(int id) const { return showing_.contains(id); }

 private:
  void dismiss(int id);

  std::map<int, Alert> showing_;
  int lastId_ = 0;
};

namespace Utils {

/// A plain message with a close button "OK".
void showOkAlert(const std::string& text, const std::string& andTitle);

/// The same in the looks of the type.
void showAlertWithTitle(const std::string& title, const std::string& andText, AlertKind andType);

}  // namespace Utils

}  // namespace veyla
