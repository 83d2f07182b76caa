#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/color.h"

namespace veyla {

enum class AlertKind { plain, warning, error, waiting, notice, edit };

struct AlertButton {
  std::string title;
  std::function<void()> action;
  /// Asked first: on false the alert stays and nothing else happens. Empty for always.
  std::function<bool()> validation = {};
};

enum class Keyboard { standard, email };

/// A line that the user types in an alert.
struct AlertTextField {
  std::string placeholder;
  std::string text;
  Keyboard keyboard = Keyboard::standard;
  bool autocapitalizes = true;
  bool autocorrects = true;

  bool operator==(const AlertTextField&) const = default;
};

/// How an alert comes or goes: on the spot, or moving.
enum class AlertMotion { pop, downward, upward };

/// What becomes of everything behind an alert.
enum class AlertBackground { shadow, blur };

struct AlertStyle {
  AlertMotion show = AlertMotion::pop;
  AlertMotion hide = AlertMotion::pop;
  AlertBackground background = AlertBackground::shadow;

  bool operator==(const AlertStyle&) const = default;
};

/// A modal message box.
struct Alert {
  AlertKind kind = AlertKind::plain;
  std::string title;
  std::string subtitle;
  std::optional<AlertTextField> textField;
  /// Buttons above the close button.
  std::vector<AlertButton> buttons;
  /// Without a title there is no close button.
  std::optional<std::string> closeButton;
  /// Seconds after which the alert goes away by itself.
  std::optional<double> duration;
  bool closesOnOutsideTap = false;
  Color color = accentRed;
  Color iconTint = white;
  AlertStyle style;
  /// Called once, when the alert has gone away by whatever means but `Alerts::withdraw`; may be
  /// empty.
  std::function<void()> onDismiss;
};

/// Shows alerts. It only draws and forwards: the app answers taps by calling `Alerts`.
class AlertView {
 public:
  virtual ~AlertView() = default;

  /// `id` names this showing in later calls.
  virtual void show(int id, const Alert& alert) = 0;
  virtual void hide(int id) = 0;

  /// Of an alert with a text field.
  virtual void setFieldText(int /*id*/, const std::string& /*text*/) {}
  virtual void focusField(int /*id*/) {}
};

}  // namespace veyla
