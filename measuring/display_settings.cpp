#include "measuring/display_settings.h"

#include "platform/platform.h"

namespace veyla::Utils {

namespace {

constexpr Color lightGrey{2.0 / 3, 2.0 / 3, 2.0 / 3, 1};

}  // namespace

void gaugeSettings(WMGaugeView& gauge, float minValue, float maxValue, float divisions) {
  gauge.minValue = minValue;
  gauge.maxValue = maxValue;
  gauge.scaleDivisions = divisions;
  gauge.scaleSubdivisions = 1.0F;
  gauge.scaleStartAngle = 70.0F;
  gauge.scaleEndAngle = 290.0F;
  gauge.innerBackgroundStyle = 1;
  gauge.showScaleShadow = false;
  gauge.scaleFont = {"HelveticaNeue-Light", 0.055F};
  gauge.scalesubdivisionsAligment = 1;
  gauge.scaleSubdivisionsWidth = 0.001F;
  gauge.scaleSubdivisionsLength = 0.02F;
  gauge.scaleDivisionsWidth = 0.005F;
  gauge.scaleDivisionsLength = 0.05F;
  gauge.unitOfMeasurementFont = {"HelveticaNeue-Light", 0.07F};
  gauge.unitOfMeasurementColor = black;
  gauge.needleStyle = 1;
  gauge.needleWidth = 0.02F;
  gauge.needleHeight = 0.5F;
  gauge.needleScrewStyle = 1;
  gauge.needleScrewRadius = 0.03F;
  gauge.showUnitOfMeasurement = false;
  gauge.showScale = true;
  gauge.showInnerBackground = false;
}

void circleProgressBarSettings(CircleProgressBar& ring) {
  ring.progressBarWidth = 5.0F;
  ring.startAngle = 270.0F;
  ring.progressBarTrackColor = {0, 0, 0, 0.2};
  ring.progressBarProgressColor = accentRed;
  ring.hintViewBackgroundColor = accentRed;
  ring.hintViewSpacing = 1.0F;
  ring.hintTextGenerationBlock = [](float) { return std::string(); };
}

void setAppearance() {
  services().screens.setAppearance({.tableCellTint = pureRed,
                                    .navigationBarTint = white,
                                    .navigationBarTitle = white,
                                    .navigationBarImage = "topbar.png",
                                    .pageIndicatorDot = lightGrey,
                                    .pageIndicatorCurrentDot = black,
                                    .pageIndicatorBackground = white,
                                    .segmentedControlTint = pureRed});
}

}  // namespace veyla::Utils
