#include "measuring/camera_permission.h"

#include "platform/platform.h"

namespace veyla::Utils {

bool isCameraAllowed() {
  switch (services().camera.authorizationStatus()) {
    case CameraAuthorization::authorized:
      return true;
    case CameraAuthorization::notDetermined:
      logLine("Camera access not determined. Ask for permission.");
      return false;
    case CameraAuthorization::restricted:
      logLine(
          "You've been restricted from using the camera on this device. Without camera access "
          "this app won't work. Please contact the device owner so they can give you access.");
      return false;
    case CameraAuthorization::denied:
    case CameraAuthorization::unknown:
      break;
  }
  logLine("No camera....");
  return false;
}

}  // namespace veyla::Utils
