#include "history/table_view_controller.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

#include "acquisition/sd_ios_version.h"
#include "history/history_store.h"
#include "measuring/usage_utils.h"
#include "platform/platform.h"
#include "shell/alerts.h"
#include "shell/mail.h"
#include "shell/product.h"

namespace veyla {

namespace {

using namespace OptionsScreen;

constexpr AccessoryButton editButton{
    "emaileditbutton.png", "EDIT", white, {"HelveticaNeue-Regular", 14}, transparent};

constexpr std::string_view emailTitle = "Please provide us your email";
constexpr std::string_view emailSubTitle = "For better support";
constexpr std::string_view storedEmailTitle = "Change your email";

/// What a row says, the page that it leads to, and what a tap on it does.
struct Row {
  std::string_view title;
  std::string_view subTitle;
  std::string_view page = {};
  void (*tapped)(TableViewController& screen) = nullptr;
};

constexpr std::array firstSection{
    Row{.title = "Send feedback",
        .subTitle = "Tell us what works and what does not",
        .tapped =
            [](TableViewController& screen) {
              screen.setWhichEmail("feedback");
              screen.feedback();
            }},
    Row{.title = "Release notes",
        .subTitle = "What each version brought",
        .tapped = [](TableViewController&) { services().screens.showRemoteReleaseNotes(); }}};

constexpr std::array secondSection{
    Row{.title = "Introduction",
        .subTitle = "How to hold your finger",
        .tapped = [](TableViewController&) { services().screens.showIntro(); }},
    Row{.title = "Health records",
        .subTitle = "Keep your values with your other health data",
        .page = "HealthHowTo"},
    Row{.title = "Terms", .subTitle = "Not for medical use", .page = "Terms"},
    Row{.title = "Rate Veyla",
        .subTitle = "In the store",
        .tapped = [](TableViewController& screen) { screen.rateMyApp(); }},
    Row{.title = "Invite friends",
        .subTitle = "By mail",
        .tapped =
            [](TableViewController& screen) {
              screen.setWhichEmail("invite");
              screen.inviteFriends();
            }},
    Row{.title = "Questions and answers",
        .subTitle = "When a measurement fails, and why",
        .tapped = [](TableViewController&) { services().screens.showFaq(); }},
    Row{.title = "Follow us",
        .subTitle = "Opens in the browser",
        .tapped = [](TableViewController&) {
          services().sharing.open(Utils::product().socialMediaPage);
        }}};

/// The user's mail address is changed by its row's button.
constexpr std::size_t emailRow = 0;
constexpr std::array thirdSection{
    Row{.title = emailTitle, .subTitle = emailSubTitle},
    Row{.title = "About", .subTitle = "Licence and libraries", .page = "About"}};

constexpr std::array<std::span<const Row>, 3> sections{firstSection, secondSection, thirdSection};

/// What people call the model of each number; numbers 1 and 2 are no models.
constexpr std::array<std::string_view, 32> modelNames{"Simulator",
                                                      "",
                                                      "",
                                                      "iPhone 4",
                                                      "iPhone 4S",
                                                      "iPhone 5",
                                                      "iPhone 5C",
                                                      "iPhone 5S",
                                                      "iPhone 6",
                                                      "iPhone 6 Plus",
                                                      "iPhone 6S",
                                                      "iPhone 6S Plus",
                                                      "iPhone SE",
                                                      "iPad 1",
                                                      "iPad 2",
                                                      "iPad Mini",
                                                      "iPad 3",
                                                      "iPad 4",
                                                      "iPad Air",
                                                      "iPad Mini 2",
                                                      "iPad Air 2",
                                                      "iPad Mini 3",
                                                      "iPad Mini 4",
                                                      "iPad Pro",
                                                      "iPod Touch 1st Gen",
                                                      "iPod Touch 2nd Gen",
                                                      "iPod Touch 3rd Gen",
                                                      "iPod Touch 4th Gen",
                                                      "iPod Touch 5th Gen",
                                                      "iPod Touch 6th Gen",
                                                      "iPhone 7",
                                                      "iPhone 7 Plus"};

std::string modelName() {
  const auto number = static_cast<std::size_t>(SDiOSVersion::deviceVersion());
  return std::string(modelNames[number]);
}

/// Of Unicode, in UTF-8.
constexpr std::array<std::string_view, 25> whiteSpace{
    "\t",     "\n",     "\v",     "\f",     "\r",     " ",      "\u0085", "\u00a0", "\u1680",
    "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
    "\u2009", "\u200a", "\u2028", "\u2029", "\u202f", "\u205f", "\u3000"};

std::string trimmed(std::string_view text) {
  const auto removeOne = [&](const auto& stands, const auto& remove) {
    const auto found = std::find_if(whiteSpace.begin(), whiteSpace.end(), stands);
    if (found != whiteSpace.end()) remove(found->size());
    return found != whiteSpace.end();
  };
  while (removeOne([&](std::string_view space) { return text.starts_with(space); },
                   [&](std::size_t size) { text.remove_prefix(size); })) {
  }
  while (removeOne([&](std::string_view space) { return text.ends_with(space); },
                   [&](std::size_t size) { text.remove_suffix(size); })) {
  }
  return std::string(text);
}

std::string feedbackBody() {
  const DeviceInfo& device = services().device;
  const std::array<std::string, 8> lines{
      "\n\n",
      "## Please type your feedback above this line ##",
      "",
      "You will receive an email from us to confirm that we have received your feedback",
      "",
      "App: " + device.bundleName() + " " + device.bundleShortVersion() + " (" +
          device.bundleVersion() + ")",
      "System Version: " + device.systemVersion(),
      "Model: " + modelName()};
  std::string body = lines.front();
  for (std::size_t i = 1; i < lines.size(); ++i) body += "\n" + lines[i];
  return body;
}

}  // namespace

TableViewController::TableViewController(OptionsView& view, std::function<void()> dismiss)
    : view_(view), dismiss_(std::move(dismiss)) {}

void TableViewController::viewDidLoad() {
  logLine("viewDidLoad: Options");
  setEmailAccesoryButton();
}

void TableViewController::viewWillAppear() {
  logLine("Options: viewWillAppear");
  services().screens.setNavigationBarTint(white);
}

void TableViewController::buttonCloseTap() {
  if (dismiss_) dismiss_();
}

std::vector<std::vector<OptionsRow>> TableViewController::rows() const {
  std::vector<std::vector<OptionsRow>> shown;
  for (const auto& section : sections) {
    auto& rows = shown.emplace_back();
    for (const Row& row : section) {
      rows.push_back({std::string(row.title), std::string(row.subTitle), row.page});
    }
  }
  OptionsRow& email = shown.back()[emailRow];
  email.isEmail = true;
  if (Utils::hasEmail()) {
    email.title = storedEmailTitle;
    email.subTitle = Utils::getEmail().value_or("");
  }
  return shown;
}

void TableViewController::didSelectRow(std::int32_t section, std::int32_t row) {
  // A negative number is beyond the end.
  const auto sectionIndex = static_cast<std::size_t>(section);
  const auto rowIndex = static_cast<std::size_t>(row);
  if (sectionIndex >= sections.size() || rowIndex >= sections[sectionIndex].size()) return;
  const Row& tapped = sections[sectionIndex][rowIndex];
  if (tapped.tapped) tapped.tapped(*this);
}

void TableViewController::accessoryButtonTapped() { getEmailFromUser(); }

void TableViewController::setEmailAccesoryButton() {
  view_.setAccessoryButton(cellEmail, editButton);
}

// The user's mail address.

void TableViewController::getEmailFromUser() {
  Alert dialog;
  dialog.title = "Email";
  dialog.subtitle =
      "By supplying us with your email address, we will be better equipped to provide you with "
      "proper support";
  dialog.style = {.show = AlertMotion::upward,
                  .hide = AlertMotion::downward,
                  .background = AlertBackground::blur};
  dialog.closesOnOutsideTap = true;
  dialog.closeButton = "Cancel";
  dialog.kind = AlertKind::edit;
  dialog.textField = {.placeholder = "Enter your email",
                      .text = "",
                      .keyboard = Keyboard::email,
                      .autocapitalizes = false,
                      .autocorrects = false};
  if (Utils::hasEmail()) {
    dialog.textField->text = Utils::getEmail().value_or("");
    dialog.buttons.push_back({"Remove", life_.bound([this] { removeEmail(); })});
  }
  dialog.buttons.push_back(
      {"Save", life_.bound([this] { saveEmail(); }), life_.bound([this] { return checkEmail(); })});
  dialog_ = Alerts::instance().show(std::move(dialog));
}

void TableViewController::removeEmail() {
  Utils::removeEmail();
  Alerts::instance().setFieldText(dialog_, "");
  showEmail(emailTitle, emailSubTitle);
  Utils::showOkAlert("Your email has been removed from our system", "Removed!");
}

bool TableViewController::checkEmail() const {
  const std::string typed = Alerts::instance().fieldText(dialog_);
  if (UsageUtils().isEmailWithEmail(trimmed(services().characters.lowerCased(typed)))) return true;
  Utils::showOkAlert("You entered a nonvalid email", "Whoops!");
  Alerts::instance().focusField(dialog_);
  return false;
}

void TableViewController::saveEmail() {
  const std::string email = trimmed(Alerts::instance().fieldText(dialog_));
  Utils::setEmail(email);
  showEmail(storedEmailTitle, email);
}

void TableViewController::showEmail(std::string_view title, std::string_view subTitle) {
  view_.setText(labelEmailTitle, std::string(title));
  view_.setText(labelEmailSubTitle, std::string(subTitle));
}

// Mails and the rating.

void TableViewController::feedback() {
  if (!Utils::isEmailConfiguredOnDevice()) {
    Utils::showAlertWithTitle("", "Your email is not configured on the device", AlertKind::error);
    return;
  }
  Mail mail;
  mail.recipients = {Utils::product().supportAddress};
  mail.subject = "Veyla Support";
  mail.body = feedbackBody();
  mail.tint = black;
  mail.titleColor = black;
  services().sharing.composeMail(mail, Utils::finishMail);
}

void TableViewController::inviteFriends() {
  // Composed also where no mail can be sent: the system then says so itself.
  Mail mail;
  mail.subject = "Check out Orvane Veyla app";
  mail.body =
      "<p>Veyla turns your phone into a blood-oxygen and pulse meter, using the built-in "
      "camera.</p><p>Try " +
      services().device.bundleName() + " yourself.</p><p>" +
      Utils::htmlLink(Utils::product().storePage, "iTunes link") + "</p>";
  mail.isHtml = true;
  mail.tint = black;
  services().sharing.composeMail(mail, Utils::finishMail);
}

void TableViewController::rateMyApp() {
  const Product product = Utils::product();
  services().sharing.open(
      "itms-apps://" + product.storeHost +
      "/WebObjects/MZStore.woa/wa/viewContentsUserReviews?id=" + product.storeId +
      "&onlyLatestVersion=true&pageNumber=0&sortOrdering=1&type=Purple+Software");
}

void TableViewController::mailComposeController(MailResult didFinishWithResult,
                                                const std::string& error) {
  Utils::finishMail(didFinishWithResult, error);
}

}  // namespace veyla
