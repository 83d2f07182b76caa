#include "shell/alerts.h"

#include <utility>

#include "platform/platform.h"

namespace veyla {

Alerts& Alerts::instance() { return Platform::current().shared<Alerts>(); }

int Alerts::show(Alert alert) {
  const int id = ++lastId_;
  // Read first: a view that answers at once has dismissed the alert when it returns.
  const auto duration = alert.duration;
  services().alertView.show(id, showing_.emplace(id, std::move(alert)).first->second);
  if (duration) services().mainQueue.after(*duration, [this, id] { dismiss(id); });
  return id;
}

void Alerts::tapButton(int id, std::size_t button) {
  const auto found = showing_.find(id);
  if (found == showing_.end() || button >= found->second.buttons.size()) return;
  // A copy: what it does may end the alert that holds it.
  const AlertButton tapped = found->second.buttons[button];
  // What was typed is there for the action only as long as the alert is.
  const bool takesText = found->second.textField.has_value();
  if (tapped.validation && !tapped.validation()) return;
  if (takesText && tapped.action) tapped.action();
  dismiss(id);
  if (!takesText && tapped.action) tapped.action();
}

void Alerts::tapClose(int id) {
  const auto found = showing_.find(id);
  if (found != showing_.end() && found->second.closeButton) dismiss(id);
}

void Alerts::tapOutside(int id) {
  const auto found = showing_.find(id);
  if (found != showing_.end() && found->second.closesOnOutsideTap) dismiss(id);
}

void Alerts::typeInField(int id, const std::string& text) {
  const auto found = showing_.find(id);
  if (found != showing_.end() && found->second.textField) found->second.textField->text = text;
}

std::string Alerts::fieldText(int id) const {
  const auto found = showing_.find(id);
  if (found == showing_.end() || !found->second.textField) return {};
  return found->second.textField->text;
}

void Alerts::setFieldText(int id, const std::string& text) {
  if (!isShowing(id)) return;
  typeInField(id, text);
  services().alertView.setFieldText(id, text);
}

void Alerts::focusField(int id) {
  if (isShowing(id)) services().alertView.focusField(id);
}

void Alerts::withdraw(int id) {
  if (showing_.erase(id) > 0) services().alertView.hide(id);
}

void Alerts::dismiss(int id) {
  const auto found = showing_.find(id);
  if (found == showing_.end()) return;
  const auto onDismiss = std::move(found->second.onDismiss);
  showing_.erase(found);
  services().alertView.hide(id);
  if (onDismiss) onDismiss();
}

void Utils::showOkAlert(const std::string& text, const std::string& andTitle) {
  showAlertWithTitle(andTitle, text, AlertKind::plain);
}

void Utils::showAlertWithTitle(const std::string& title, const std::string& andText,
                               AlertKind andType) {
  Alert alert;
  alert.kind = andType;
  alert.title = title;
  alert.subtitle = andText;
  alert.closeButton = "OK";
  Alerts::instance().show(std::move(alert));
}

}  // namespace veyla
