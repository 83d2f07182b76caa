#pragma once

#include "measuring/measuring_screen.h"
#include "platform/canvas.h"

namespace veyla {

/// What a device covers of its screen: a status bar or a notch above, a bar of its own below.
struct SafeArea {
  double top = 0;
  double bottom = 0;
};

/// Where the elements of the measuring screen sit on a screen held upright, in points from its
/// upper left corner. Whatever does not fit below the least height of about 460 is cut off.
class MeasuringLayout {
 public:
  /// For the half of a value: its dial with the ring and the big value in it, its caption, its
  /// checkbox, and its last value.
  struct ValueFrames {
    Rect gauge;
    Rect ring;
    Rect value;
    Rect caption;
    Rect checkbox;
    Rect lastValue;
  };

  explicit MeasuringLayout(Size screen, SafeArea safeArea = {});

  Size screen;
  Rect navBar;
  /// The part of `navBar` that nothing covers.
  Rect title;
  ValueFrames heartrate;
  ValueFrames spo2;
  /// The panel in the centre, its heading, and the curve in it.
  Rect center;
  Rect centerHeading;
  Rect chart;
  Rect status;
  Rect instruction;
  /// START and STOP share their place.
  Rect button;
};

}  // namespace veyla
