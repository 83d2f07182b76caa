#pragma once

#include "measuring/circle_progress_bar.h"
#include "measuring/wm_gauge_view.h"

/// How the measuring screen's widgets and the application's standard controls look.
namespace veyla::Utils {

/// Configures a dial for values from `minValue` to `maxValue` with that many major divisions; the
/// measuring screen says which.
void gaugeSettings(WMGaugeView& gauge, float minValue, float maxValue, float divisions);

void circleProgressBarSettings(CircleProgressBar& ring);

/// Sets the colours of all standard controls.
void setAppearance();

}  // namespace veyla::Utils
