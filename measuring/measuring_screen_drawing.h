#pragma once

#include <string>

#include "measuring/main_view_controller.h"
#include "measuring/measuring_layout.h"
#include "platform/canvas.h"
#include "shell/screen_state.h"

namespace veyla {

/// What the panel in the middle shows: what the screen has it show, or the pulse curve as soon as
/// there is one. By the end of a measurement the screen has turned to the values of the one before,
/// which says nothing of this one.
enum class CenterPanel { asShown, pulse };

/// Draws the whole measuring screen as `views` shows it, the widgets as they stand now. `title` is
/// the text of the bar on top.
void drawMeasuringScreen(Canvas& canvas, const MeasuringLayout& layout,
                         const MainViewController& screen, const ScreenState& views,
                         const std::string& title, CenterPanel center = CenterPanel::asShown);

}  // namespace veyla
