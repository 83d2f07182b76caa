#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/life.h"
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

/// A row of the options screen as it is shown.
struct OptionsRow {
  std::string title;
  std::string subTitle;
  /// The page that the row leads to; empty where a tap does something else.
  std::string_view page;
  /// The row has the user's mail address, with a button to change it.
  bool isEmail = false;

  bool operator==(const OptionsRow&) const = default;
};

/// The options screen: feedback, release notes, introduction, FAQ, rating, invitations, and the
/// user's own mail address.
class TableViewController {
 public:
  /// `dismiss` closes the screen; it may be empty.
  TableViewController(OptionsView& view, std::function<void()> dismiss);

  void viewDidLoad();
  void viewWillAppear();
  void buttonCloseTap();

  /// The rows of the table by section; the one of the user's mail address tells what is stored.
  std::vector<std::vector<OptionsRow>> rows() const;
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
  bool checkEmail() const;
  void saveEmail();
  void showEmail(std::string_view title, std::string_view subTitle);

  OptionsView& view_;
  std::function<void()> dismiss_;
  std::string whichEmail_;
  /// The dialog that asks for the address.
  int dialog_ = 0;
  Life life_;
};

}  // namespace veyla
