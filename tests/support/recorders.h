#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/alert_view.h"
#include "platform/format.h"
#include "platform/log.h"
#include "platform/no_services.h"
#include "platform/screens.h"

namespace veyla {

/// What the system asked of the scripted services, in one order for all of them. A line begins with
/// the service's name: "store set email", "device torch 1".
class Journal {
 public:
  void add(std::string line) { lines_.push_back(std::move(line)); }

  const std::vector<std::string>& lines() const { return lines_; }

  /// The lines of one service, without its name.
  std::vector<std::string> of(std::string_view service) const {
    std::vector<std::string> found;
    for (const std::string& line : lines_) {
      if (line.starts_with(service) && line[service.size()] == ' ') {
        found.push_back(line.substr(service.size() + 1));
      }
    }
    return found;
  }

  void clear() { lines_.clear(); }

 private:
  std::vector<std::string> lines_;
};

/// Keeps the diagnostic lines.
class RecorderLog : public Log {
 public:
  std::vector<std::string> lines;

  bool enabled() const override { return true; }
  void line(std::string_view text) override { lines.emplace_back(text); }
};

/// An alert in words, such as "error | Title | text [Button] [Close button] [outside] 2 s", in
/// which the last three are what closes it.
inline std::string inWords(const Alert& alert) {
  static constexpr const char* kinds[] = {"plain", "warning", "error", "waiting", "notice", "edit"};
  std::string words = kinds[static_cast<int>(alert.kind)];
  words += " | " + alert.title + " | " + alert.subtitle;
  for (const AlertButton& button : alert.buttons) words += " [" + button.title + "]";
  if (alert.closeButton) words += " [" + *alert.closeButton + "]";
  if (alert.closesOnOutsideTap) words += " [outside]";
  if (alert.duration) words += formatText(" %g s", *alert.duration);
  return words;
}

/// Keeps every alert that was shown; what becomes of one stands in the journal as "alert …", with
/// its title or number.
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

  void show(int id, const Alert& alert) override {
    shown.push_back(alert);
    lastId = id;
    inFront[id] = alert.title;
    journal_.add("alert show " + alert.title);
    if (answer) answer(id);
  }
  void setFieldText(int /*id*/, const std::string& text) override {
    journal_.add("alert text " + text);
  }
  void focusField(int /*id*/) override { journal_.add("alert focus"); }
  void hide(int id) override {
    inFront.erase(id);
    journal_.add("alert hide " + std::to_string(id));
  }

 private:
  Journal& journal_;
};

/// Every call stands in the journal as "screens …".
class RecorderScreens : public Screens {
 public:
  explicit RecorderScreens(Journal& journal) : journal_(journal) {}

  std::optional<Appearance> appearance;
  std::optional<Color> navigationBarTint;

  void performTransition(std::string_view name) override { record(name); }
  void showIntro() override { record("intro"); }
  void showFaq() override { record("faq"); }
  void showRemoteReleaseNotes() override { record("release notes"); }
  void showRatingPrompt() override { record("rating prompt"); }
  void setTitle(std::string_view title) override { record("title " + std::string(title)); }
  void setBackSwipeEnabled(bool enabled) override {
    record(enabled ? "back swipe on" : "back swipe off");
  }
  void setIdleTimerDisabled(bool disabled) override {
    record(disabled ? "idle timer off" : "idle timer on");
  }
  void setAppearance(const Appearance& of) override {
    appearance = of;
    record("appearance");
  }
  void setNavigationBarTint(std::optional<Color> tint) override {
    navigationBarTint = tint;
    record(tint ? "tint set" : "tint default");
  }

 private:
  void record(std::string_view what) { journal_.add("screens " + std::string(what)); }

  Journal& journal_;
};

/// Keeps mails and their completions, for the test to call; every call stands in the journal as
/// "sharing …".
class RecorderSharing : public NoSharing {
 public:
  explicit RecorderSharing(Journal& journal) : journal_(journal) {}

  bool sendsMail = true;
  std::vector<Mail> mails;
  MailFinished mailFinished;

  bool canSendMail() const override { return sendsMail; }
  void composeMail(const Mail& mail, MailFinished finished) override {
    mails.push_back(mail);
    mailFinished = std::move(finished);
    journal_.add("sharing mail " + mail.subject);
  }
  void dismissMail() override { journal_.add("sharing dismiss mail"); }
  void open(const std::string& address) override { journal_.add("sharing open " + address); }

 private:
  Journal& journal_;
};

}  // namespace veyla
