#pragma once

#include <emscripten/val.h>

#include <map>
#include <string>
#include <utility>

#include "platform/web/video_track.h"

namespace veyla {

/// The video track of a page's `camera`, whose operations bear the same names.
class PageVideoTrack : public VideoTrack {
 public:
  explicit PageVideoTrack(emscripten::val page) : page_(std::move(page)) {}

  std::string authorization() const override { return page_.call<std::string>("authorization"); }
  void request(int pending) override { page_.call<void>("request", pending); }
  void open(int pending) override { page_.call<void>("open", pending); }
  void close() override { page_.call<void>("close"); }
  bool isOpen() const override { return page_.call<bool>("isOpen"); }
  bool hasNext() const override { return page_.call<bool>("hasNext"); }
  void useNext() override { page_.call<void>("useNext"); }
  bool hasTorch() const override { return page_.call<bool>("hasTorch"); }
  bool isTorchLit() const override { return page_.call<bool>("isTorchLit"); }
  void setTorch(bool lit) override { page_.call<void>("setTorch", lit); }
  bool supports(const std::string& name, const std::string& mode) const override {
    return page_.call<bool>("supports", name, mode);
  }
  std::string mode(const std::string& name) const override {
    return page_.call<std::string>("mode", name);
  }
  void setModes(const std::map<std::string, std::string>& modes) override {
    emscripten::val constraints = emscripten::val::object();
    for (const auto& [name, mode] : modes) constraints.set(name, mode);
    page_.call<void>("setModes", constraints);
  }
  double zoom() const override { return page_.call<double>("zoom"); }
  void play() override { page_.call<void>("play"); }
  void pause() override { page_.call<void>("pause"); }

 private:
  emscripten::val page_;
};

}  // namespace veyla
