#include "shell/alerts.h"

#include <utility>

#include "platform/platform.h"

namespace veyla {

Alerts& Alerts::instance() { return Platform::current().shared<Alerts>(); }

int Alerts::show(Alert alert) {
  const int id = ++lastId_;
  const Alert& shown = showing_.emplace(id, std::move(alert)).first->second;
  services().alertView.show(id, shown);
  if (shown.duration) {
    services().mainQueue.after(*shown.duration, [this, id] { dismiss(id); });
  }
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
