#pragma once

#include <map>
#include <string>

namespace veyla {

/// The phone's rear camera as the page has it: a video track that is opened and closed. Without an
/// open one there is no torch, no mode is supported or known, and what is asked for is lost.
///
/// Names and modes are those of the browsers' constraints.
class VideoTrack {
 public:
  virtual ~VideoTrack() = default;

  /// "prompt", "granted", "denied" or "unknown".
  virtual std::string authorization() const = 0;
  /// Asks the user; `pending` is answered with 1 when granted.
  virtual void request(int pending) = 0;

  /// Opens the track unless it is open; `pending` is answered when it is, or cannot be.
  virtual void open(int pending) = 0;
  /// Closes it, or gives up opening it: no frame comes of it, and its light is out. A browser that
  /// would ask the user again may hold it for the next opening.
  virtual void close() = 0;
  virtual bool isOpen() const = 0;
  /// Whether the phone has told of another camera that does not look at the user; false until one
  /// was opened.
  virtual bool hasNext() const = 0;
  /// What is opened from now on is the next of them with a torch, after the last one the first.
  virtual void useNext() = 0;

  virtual bool hasTorch() const = 0;
  /// What the track itself says of it.
  virtual bool isTorchLit() const = 0;
  virtual void setTorch(bool lit) = 0;

  virtual bool supports(const std::string& name, const std::string& mode) const = 0;
  /// The one in force; empty where unknown.
  virtual std::string mode(const std::string& name) const = 0;
  /// All that are to hold.
  virtual void setModes(const std::map<std::string, std::string>& modes) = 0;
  /// 1 where unknown.
  virtual double zoom() const = 0;

  /// Frames are wanted from now on.
  virtual void play() = 0;
  /// No frames are wanted; the track stays as it is.
  virtual void pause() = 0;
};

}  // namespace veyla
