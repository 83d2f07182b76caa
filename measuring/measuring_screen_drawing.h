#pragma once

#include <string>

#include "measuring/main_view_controller.h"
#include "measuring/measuring_layout.h"
#include "platform/canvas.h"
#include "shell/screen_state.h"

namespace veyla {

/// Draws the whole measuring screen as `views` shows it, the widgets as they stand now. `title` is
/// the text of the bar on top.
void drawMeasuringScreen(Canvas& canvas, const MeasuringLayout& layout,
                         const MainViewController& screen, const ScreenState& views,
                         const std::string& title);

}  // namespace veyla
