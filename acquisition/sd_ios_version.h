#pragma once

#include <map>
#include <string>

/// The hardware's model number and name.
namespace veyla::SDiOSVersion {

/// The number of this machine's hardware model; 0 when it is not in the table.
int deviceVersion();

/// The number of a hardware model; 0 when it is not in the table.
int numberOf(const std::string& hardwareModel);

/// The hardware model string, or "Simulator" for "x86_64" and "i386".
std::string deviceName();

std::string iOSVersion();

/// Model numbers by hardware model string, built once.
const std::map<std::string, int>& deviceNamesByCode();

}  // namespace veyla::SDiOSVersion
