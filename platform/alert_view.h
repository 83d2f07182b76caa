#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/color.h"

namespace veyla {

enum class AlertKind { plain, warning, error, waiting, notice };

struct AlertButton {
  std::string title;
  std::function<void()> action;
};

/// A modal message box.
struct Alert {
  AlertKind kind = AlertKind::plain;
  std::string title;
  std::string subtitle;
  /// Buttons above the close button.
  std::vector<AlertButton> buttons;
  /// Without a title there is no close button.
  std::optional<std::string> closeButton;
  /// Seconds after which the alert goes away by itself.
  std::optional<double> duration;
  bool closesOnOutsideTap = false;
  Color color = accentRed;
  Color iconTint{1, 1, 1, 1};
  /// Called once, when the alert has gone away by whatever means; may be empty.
  std::function<void()> onDismiss;
};

/// Shows alerts. It only draws and forwards: the app answers taps by calling `Alerts`.
class AlertView {
 public:
  virtual ~AlertView() = default;

  /// `id` names this showing in later calls.
  virtual void show(int id, const Alert& alert) = 0;
  virtual void hide(int id) = 0;
};

}  // namespace veyla
