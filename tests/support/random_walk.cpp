#include "tests/support/random_walk.h"

#include <algorithm>
#include <utility>

#include "measuring/measuring_screen.h"

namespace veyla {

RandomWalk::RandomWalk(Pick pick) : pick_(std::move(pick)) {
  display_.holdsAnimations = true;
  somebody_.rig.heartrateSetting("neededValidHeartrate", pick_(2) == 0 ? 3 : 1000);
}

std::string RandomWalk::run(int events) {
  const char* fault = nullptr;
  for (int i = 0; i < events && !fault; ++i) {
    step();
    fault = faultSeen();
  }
  while (!fault && display_.animations() > 0) {
    display_.finishAnimation(0);
    fault = faultSeen();
  }
  return fault ? story_ + "-> " + fault : "";
}

void RandomWalk::step() {
  static constexpr const char* byItself[] = {"0.01", "0.1",  "0.5",  "2",      "2",
                                             "good", "good", "none", "low*20", "curve"};
  static constexpr const char* byHand[] = {"START", "START", "START",      "STOP",
                                           "lost",  "leave", "background", "interruption"};
  if (display_.animations() > 0 && pick_(3) == 0) {
    story_ += "(an animation's end) ";
    return display_.finishAnimation(pick_(display_.animations()));
  }
  std::string word = byItself[pick_(std::size(byItself))];
  // Whoever is away can only come back, and taps are on what is seen.
  if (pick_(records() ? 8 : 2) == 0) {
    word = back_.empty() ? byHand[pick_(std::size(byHand))] : std::exchange(back_, "");
  }
  if (word == "START" && !display_.isSeen(MeasuringScreen::beginButton)) return;
  if (word == "leave") back_ = "appear";
  if (word == "background") back_ = "return";
  if (word == "interruption") isInterrupted_ = records();
  if (word == "START") isInterrupted_ = false;
  camera_.device->torch = pick_(12) != 0;
  camera_.authorization =
      pick_(12) == 0 ? CameraAuthorization::denied : CameraAuthorization::authorized;
  story_ += word + ' ';
  somebody_.live(word);
}

const char* RandomWalk::faultSeen() const {
  using namespace MeasuringScreen;
  const bool measures = somebody_.screen.canBegin();
  const bool start = display_.isSeen(beginButton);
  const bool stop = display_.isSeen(stopButton);
  const bool buttonsRest =
      display_.playing(beginButton).empty() && display_.playing(stopButton).empty();
  const bool isHere = back_.empty() && buttonsRest;
  const bool centerRests = display_.playing(viewCenter).empty();
  const auto ended = [&](MeasurementEnd how) {
    return static_cast<std::size_t>(std::count(ends().begin(), ends().end(), how));
  };
  // STOP is left from a camera that did not start.
  const bool stopMayStay = !ends().empty() && (ends().back() == MeasurementEnd::failed ||
                                               ends().back() == MeasurementEnd::refused);
  const auto& alerts = somebody_.rig.platform.alerts.inFront;
  const bool isStarting = std::any_of(alerts.begin(), alerts.end(), [](const auto& alert) {
    return alert.second == "Starting ...";
  });
  const std::pair<bool, const char*> faults[] = {
      {records() && !somebody_.screen.isRunning(), "the camera runs on"},
      {measures && !records(), "it measures without a camera"},
      {!measures && camera_.device->torchMode() != LightMode::off, "the torch is on for nothing"},
      {isStarting != (records() && !measures), "the countdown's alert is wrong"},
      {somebody_.entries() != ended(MeasurementEnd::finished), "the entries are wrong"},
      {buttonsRest && start == stop, "not one of START and STOP"},
      {isHere && start && records() && !isInterrupted_, "START in place of STOP"},
      {isHere && stop && !records() && !stopMayStay, "STOP in place of START"},
      {centerRests && !display_.isSeen(viewCenter), "the centre is gone"},
      {centerRests && display_.isSeen(MeasuringScreen::chartFourierView) ==
                          display_.isSeen(viewLastMeasurements),
       "the centre shows both or neither"}};
  for (const auto& [isThere, fault] : faults) {
    if (isThere) return fault;
  }
  return nullptr;
}

}  // namespace veyla
