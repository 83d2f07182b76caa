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
  const auto action = found->second.buttons[button].action;
  dismiss(id);
  if (action) action();
}

void Alerts::tapClose(int id) {
  const auto found = showing_.find(id);
  if (found != showing_.end() && found->second.closeButton) dismiss(id);
}

void Alerts::tapOutside(int id) {
  const auto found = showing_.find(id);
  if (found != showing_.end() && found->second.closesOnOutsideTap) dismiss(id);
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
  Alert alert;
  alert.title = andTitle;
  alert.subtitle = text;
  alert.closeButton = "OK";
  Alerts::instance().show(std::move(alert));
}

}  // namespace veyla
