#include "acquisition/sd_ios_version.h"

#include "platform/platform.h"

namespace veyla::SDiOSVersion {

int deviceVersion() { return numberOf(services().device.hardwareModel()); }

int numberOf(const std::string& hardwareModel) {
  const auto& numbers = deviceNamesByCode();
  const auto found = numbers.find(hardwareModel);
  return found == numbers.end() ? 0 : found->second;
}

std::string deviceName() {
  const std::string model = services().device.hardwareModel();
  return model == "x86_64" || model == "i386" ? "Simulator" : model;
}

std::string iOSVersion() { return services().device.systemVersion(); }

const std::map<std::string, int>& deviceNamesByCode() {
  static const std::map<std::string, int> numbers{
      {"iPhone3,1", 3},  {"iPhone3,2", 3},  {"iPhone3,3", 3},  {"iPhone4,1", 4},  {"iPhone4,2", 4},
      {"iPhone4,3", 4},  {"iPhone5,1", 5},  {"iPhone5,2", 5},  {"iPhone5,3", 6},  {"iPhone5,4", 6},
      {"iPhone6,1", 7},  {"iPhone6,2", 7},  {"iPhone7,2", 8},  {"iPhone7,1", 9},  {"iPhone8,1", 10},
      {"iPhone8,2", 11}, {"iPhone9,1", 30}, {"iPhone9,3", 30}, {"iPhone9,2", 31}, {"iPhone9,4", 31},
      {"i386", 0},       {"x86_64", 0},     {"iPad1,1", 13},   {"iPad2,1", 14},   {"iPad2,2", 14},
      {"iPad2,3", 14},   {"iPad2,4", 14},   {"iPad2,5", 15},   {"iPad2,6", 15},   {"iPad2,7", 15},
      {"iPad3,1", 16},   {"iPad3,2", 16},   {"iPad3,3", 16},   {"iPad3,4", 17},   {"iPad3,5", 17},
      {"iPad3,6", 17},   {"iPad4,1", 18},   {"iPad4,2", 18},   {"iPad4,3", 18},   {"iPad4,4", 19},
      {"iPad4,5", 19},   {"iPad4,6", 19},   {"iPad4,7", 21},   {"iPad4,8", 21},   {"iPad4,9", 21},
      {"iPad5,1", 22},   {"iPad5,2", 22},   {"iPad5,3", 20},   {"iPad5,4", 20},   {"iPad6,7", 23},
      {"iPad6,8", 23},   {"iPod1,1", 24},   {"iPod2,1", 25},   {"iPod3,1", 26},   {"iPod4,1", 27},
      {"iPod5,1", 28},   {"iPod7,1", 29},
  };
  return numbers;
}

}  // namespace veyla::SDiOSVersion
