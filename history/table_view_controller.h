#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/options_view.h"
#include "platform/sharing.h"

namespace veyla {

/// The elements of the options screen.
namespace OptionsScreen {

/// The rows of the release notes and of the user's mail address, and the latter's texts.
inline constexpr Element cellNews{"cellNews"};
inline constexpr Element cellEmail{"cellEmail"};
inline constexpr Element labelEmailTitle{"labelEmailTitle"};
inline constexpr Element labelEmailSubTitle{"labelEmailSubTitle"};

}  // namespace OptionsScreen

/// The options screen: feedback, release notes, introduction, FAQ, rating, invitations, and the
/// user's own mail address.
class TableViewController {
 public:
  /// `dismiss` closes the screen; it may be empty.
  TableViewController(OptionsView& view, std::function<void()> dismiss);

  void viewDidLoad();
  void viewWillAppear();
  void buttonCloseTap();

  /// A tap on a row of the table; sections and rows count from 0.
  void didSelectRow(std::int32_t section, std::int32_t row);
  /// A tap on the edit button of the user's mail address.
  void accessoryButtonTapped();

  void setEmailAccesoryButton();
  /// Asks for the user's mail address, changes it or removes it.
  void getEmailFromUser();
  void feedback();
  void inviteFriends();
  void rateMyApp();
  void mailComposeController(MailResult didFinishWithResult, const std::string& error);

  /// The mail that the composer shows: "feedback" or "invite".
  const std::string& whichEmail() const { return whichEmail_; }
  void setWhichEmail(const std::string& whichEmail) { whichEmail_ = whichEmail; }

 private:
  void removeEmail();
  bool checkEmail();
  void saveEmail();
  void showEmail(const std::string& title, const std::string& subTitle);
  void compose(const Mail& mail);

  OptionsView& view_;
  std::function<void()> dismiss_;
  std::string whichEmail_;
  /// The dialog that asks for the address.
  int dialog_ = 0;
};

}  // namespace veyla
