#pragma once

#include "platform/display.h"

/// The elements of the measuring screen.
namespace veyla::MeasuringScreen {

/// The big live values, and the captions above them that shimmer while a value is being measured.
inline constexpr Element labelHeartrate{"labelHeartrate"};
inline constexpr Element labelSpo2{"labelSpo2"};
inline constexpr Element labelMeasuringHeartrate{"labelMeasuringHeartrate"};
inline constexpr Element labelMeasuringSpo2{"labelMeasuringSpo2"};

/// The instruction line and the status line.
inline constexpr Element labelGrey{"labelGrey"};
inline constexpr Element labelRed{"labelRed"};

inline constexpr Element gaugeHR{"gaugeHR"};
inline constexpr Element gaugeSpo2{"gaugeSpo2"};
inline constexpr Element viewGaugeHeartrate{"viewGaugeHeartrate"};
inline constexpr Element viewGaugeSpo2{"viewGaugeSpo2"};
inline constexpr Element circleprogressHeartrate{"circleprogressHeartrate"};
inline constexpr Element circleprogressSpo2{"circleprogressSpo2"};

inline constexpr Element beginButton{"beginButton"};
inline constexpr Element stopButton{"stopButton"};
inline constexpr Element buttonCheckboxHeartrate{"buttonCheckboxHeartrate"};
inline constexpr Element buttonCheckboxSpo2{"buttonCheckboxSpo2"};

/// The centre panel shows either the previous measurement's values or the pulse curve.
inline constexpr Element viewCenter{"viewCenter"};
inline constexpr Element viewLastMeasurements{"viewLastMeasurements"};
inline constexpr Element labelLastHeartrate{"labelLastHeartrate"};
inline constexpr Element labelLastSpo2{"labelLastSpo2"};
inline constexpr Element chartFourierView{"chartFourierView"};

/// Beside the flow: what is wrong with the finger, and why a final value may not be relied on.
/// Empty texts for nothing to say.
inline constexpr Element labelFinger{"labelFinger"};
/// Offered while no light reaches the camera's lens and there is another camera.
inline constexpr Element buttonNextCamera{"buttonNextCamera"};
inline constexpr Element labelDoubtHeartrate{"labelDoubtHeartrate"};
inline constexpr Element labelDoubtSpo2{"labelDoubtSpo2"};

inline constexpr Element navBar{"navBar"};
/// Takes the SpO2 estimator's diagnostic line.
inline constexpr Element testLabel{"testLabel"};

/// What stands there whatever is measured.
struct Captions {
  std::string_view heartrate = "Heart rate";
  std::string_view heartrateUnit = "BPM";
  std::string_view spo2 = "SpO₂";
  std::string_view spo2Unit = "%";
  std::string_view lastMeasurement = "Last measurement";
  std::string_view pulse = "Pulse";
  std::string_view start = "START";
  std::string_view stop = "STOP";
  std::string_view nextCamera = "Next camera";
};
inline constexpr Captions captions;

}  // namespace veyla::MeasuringScreen
