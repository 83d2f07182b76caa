#include "platform/web/track_camera.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace veyla {
namespace {

/// A track that a test opens.
struct ScriptedTrack : VideoTrack {
  bool opened = false;
  bool playing = false;
  bool lit = false;
  /// Whether the torch does as it is told.
  bool obeys = true;
  std::vector<int> waiting;
  std::map<std::string, std::string> modes;

  std::string authorization() const override { return "granted"; }
  void request(int) override {}
  void open(int pending) override { waiting.push_back(pending); }
  void close() override { opened = lit = false; }
  bool isOpen() const override { return opened; }
  bool hasNext() const override { return false; }
  void useNext() override {}
  bool hasTorch() const override { return opened; }
  bool isTorchLit() const override { return lit; }
  void setTorch(bool on) override { lit = on && obeys; }
  bool supports(const std::string& name, const std::string& mode) const override {
    return name == "focusMode" && mode == "single-shot";
  }
  std::string mode(const std::string& name) const override {
    const auto found = modes.find(name);
    return found == modes.end() ? "" : found->second;
  }
  void setModes(const std::map<std::string, std::string>& all) override { modes = all; }
  double zoom() const override { return 1; }
  void play() override { playing = true; }
  void pause() override { playing = false; }
};

struct FrameCount : SampleBufferDelegate {
  int frames = 0;
  int drops = 0;

  void captureOutput(PixelBuffer&) override { ++frames; }
  void captureOutput(const FrameSample&) override {}
  void captureOutput(const AveragedFrame&) override {}
  void captureOutput(DroppedSample) override { ++drops; }
};

class TrackCameraTest : public testing::Test {
 protected:
  void openTrack() {
    track_.opened = true;
    for (const int pending : std::exchange(track_.waiting, {})) pending_.settle(pending, 0);
  }

  /// A running session on the open track.
  std::shared_ptr<CaptureSession> session() {
    auto made = camera_.makeSession();
    made->addInput(camera_.makeDeviceInput(camera_.defaultVideoDevice()));
    const auto output = std::make_shared<VideoDataOutput>();
    output->sampleBufferDelegate = &count_;
    made->addOutput(output);
    made->startRunning();
    return made;
  }

  /// A running session on the track, which opens for it.
  std::shared_ptr<CaptureSession> openedSession() {
    std::shared_ptr<CaptureSession> running;
    const auto wait = camera_.prepare([&] { running = session(); });
    openTrack();
    return running;
  }
  /// The frames that come of a second of the camera's.
  int framesOfASecond() {
    const int before = count_.frames;
    for (int i = 0; i < 30; ++i) {
      std::ranges::fill(camera_.frameBuffer(4, 4), std::uint8_t{});
      camera_.takeFrame(second_ + i / 30.0);
    }
    ++second_;
    return count_.frames - before;
  }

  ScriptedTrack track_;
  Pending pending_;
  TrackCamera camera_{track_, pending_};
  FrameCount count_;
  /// Of the camera's own time.
  int second_ = 0;
};

TEST_F(TrackCameraTest, APauseLeavesTheTrackAndItsLightAndFramesComeAgain) {
  const auto running = openedSession();
  camera_.defaultVideoDevice()->setTorchMode(LightMode::on);
  camera_.defaultVideoDevice()->unlockForConfiguration();
  const int whole = framesOfASecond();
  EXPECT_GE(whole, 13);

  running->stopRunning();
  EXPECT_FALSE(track_.playing);
  EXPECT_EQ(framesOfASecond(), 0);
  second_ += 5;
  running->startRunning();
  EXPECT_TRUE(track_.opened && track_.lit && track_.playing);
  EXPECT_EQ(framesOfASecond(), whole);
  EXPECT_EQ(count_.drops, 0);
  // The camera stalls for a second, of which the first 0.3 are filled.
  ++second_;
  EXPECT_EQ(framesOfASecond(), whole + 5);
  EXPECT_EQ(count_.drops, 10);

  // Somebody waits for the track, which stays open: still none comes to a session without it.
  auto other = camera_.prepare([] {});
  running->removeInput(running->inputs().front());
  EXPECT_EQ(framesOfASecond(), 0);
  EXPECT_TRUE(track_.opened);
  other.reset();
  EXPECT_FALSE(track_.opened);
}

TEST_F(TrackCameraTest, TheTrackIsOpenForThoseWhoWaitForItOrHaveIt) {
  int calls = 0;
  const auto call = [&] { ++calls; };
  // Of two who wait, one goes away; the other has it, and a third finds it open.
  std::shared_ptr<CaptureSession> running;
  auto first = camera_.prepare(call);
  std::shared_ptr<void> second;
  second = camera_.prepare([&] {
    second.reset();
    running = session();
  });
  first.reset();
  openTrack();
  camera_.prepare(call).reset();
  EXPECT_TRUE(track_.opened && running->isRunning());

  // Nor is it closed between two sessions of which the second takes the first one's place.
  const auto third = camera_.prepare([&] {
    running.reset();
    EXPECT_TRUE(track_.opened);
    running = session();
  });
  openTrack();
  EXPECT_TRUE(track_.opened && running->isRunning());
  running.reset();
  EXPECT_FALSE(track_.opened);

  // Whoever went away is not called, and the track is not left open.
  track_.opened = true;
  camera_.prepare(call).reset();
  EXPECT_FALSE(track_.opened);
  openTrack();
  EXPECT_EQ(calls, 0);
}

TEST_F(TrackCameraTest, ModesBearTheConstraintsNamesAndTheTorchTellsOfItself) {
  const auto running = openedSession();
  CaptureDevice& device = *camera_.defaultVideoDevice();
  device.setExposureMode(CaptureMode::continuous);
  device.setWhiteBalanceMode(CaptureMode::locked);
  device.setFocusMode(CaptureMode::automatic);
  EXPECT_TRUE(track_.modes.empty());
  device.unlockForConfiguration();
  EXPECT_EQ(track_.modes, (std::map<std::string, std::string>{{"exposureMode", "continuous"},
                                                              {"focusMode", "single-shot"},
                                                              {"whiteBalanceMode", "manual"}}));
  EXPECT_EQ(device.focusMode(), CaptureMode::automatic);
  EXPECT_TRUE(device.isFocusModeSupported(CaptureMode::automatic));
  EXPECT_FALSE(device.isFocusModeSupported(CaptureMode::continuous));
  for (const bool obeys : {false, true}) {
    track_.obeys = obeys;
    device.setTorchMode(LightMode::off);
    device.setTorchMode(LightMode::on);
    device.unlockForConfiguration();
    EXPECT_EQ(device.torchMode(), obeys ? LightMode::on : LightMode::off);
  }
}

}  // namespace
}  // namespace veyla
