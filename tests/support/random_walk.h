#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/support/measuring_rig.h"

namespace veyla {

/// Anything in any order, animations' ends too; after each event the screen must make sense.
class RandomWalk {
 public:
  /// Chooses one of so many.
  using Pick = std::function<std::size_t(std::size_t count)>;

  explicit RandomWalk(Pick pick);

  /// What happened, if that led to a screen that makes no sense; empty otherwise.
  std::string run(int events);

  const std::vector<MeasurementEnd>& ends() const { return somebody_.ends; }

 private:
  bool records() const { return camera_.session && camera_.session->isRunning(); }
  void step();
  /// Null where all is well.
  const char* faultSeen() const;

  Pick pick_;
  Somebody somebody_;
  RecorderDisplay& display_ = somebody_.rig.platform.display;
  ScriptedCamera& camera_ = somebody_.camera;
  std::string story_;
  /// What brings whoever is away back; empty for here.
  std::string back_;
  /// By what has brought START back, although the measurement goes on.
  bool isInterrupted_ = false;
};

}  // namespace veyla
