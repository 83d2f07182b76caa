#pragma once

#include <string>
#include <string_view>

#include "platform/color.h"
#include "platform/display.h"

namespace veyla {

/// A button at the end of a table's row.
struct AccessoryButton {
  std::string_view backgroundImage;
  std::string_view title;
  Color titleColor;
  Font font;
  Color background;

  bool operator==(const AccessoryButton&) const = default;
};

/// The views of the options screen. This class itself is a screen with no views attached.
class OptionsView {
 public:
  virtual ~OptionsView() = default;

  virtual void setText(Element /*element*/, const std::string& /*text*/) {}
  virtual void setAccessoryButton(Element /*cell*/, const AccessoryButton& /*button*/) {}
};

}  // namespace veyla
