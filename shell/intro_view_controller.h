#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/color.h"
#include "platform/display.h"

namespace veyla {

/// The elements of the introduction.
namespace IntroScreen {

inline constexpr Element labelTitle{"labelTitle"};
inline constexpr Element image{"image"};
inline constexpr Element labelSubTitle{"labelSubTitle"};

}  // namespace IntroScreen

/// The introduction: four pages that teach the measuring gesture. Its end, the first time, shows
/// the intended use, records that it was seen and asks for the permission to write health records.
class IntroViewController {
 public:
  static constexpr std::int32_t pages = 4;

  /// `display` shows the pages; `dismiss` closes the introduction and then calls what it is given.
  IntroViewController(Display& display, std::function<void(std::function<void()> then)> dismiss);

  void viewDidLoad();
  /// To the next page; nothing on the last one.
  void swipeleft();
  /// To the previous page; nothing on the first one.
  void swiperight();
  void buttonSkipTapped();

  const std::array<std::string, pages>& titles() const { return titles_; }
  const std::array<std::string, pages>& subTitles() const { return subTitles_; }
  const std::array<std::string, pages>& images() const { return images_; }
  std::int32_t currentPage() const { return currentPage_; }
  /// The page whose dot is the current one; one below 0 stands for the first dot.
  std::int32_t indicatedPage() const { return indicatedPage_; }
  Color currentDotColor() const { return accentRed; }

 private:
  void showPage(std::int32_t page, std::string_view exit, std::string_view entry);

  Display& display_;
  std::function<void(std::function<void()> then)> dismiss_;
  std::array<std::string, pages> titles_;
  std::array<std::string, pages> subTitles_;
  std::array<std::string, pages> images_;
  std::int32_t currentPage_ = 0;
  std::int32_t indicatedPage_ = 0;
};

}  // namespace veyla
