#include "platform/linux/resource_files.h"

#include <fstream>
#include <utility>

#include "platform/linux/embedded_resources.h"

namespace veyla {

namespace {

std::string fileName(std::string_view name, std::string_view type) {
  return std::string(name).append(".").append(type);
}

bool isSettings(std::string_view name) {
  return name == "Spo2Settings" || name == "HeartrateSettings" || name == "CameraSettings";
}

}  // namespace

std::optional<std::string> EmbeddedResources::read(std::string_view name,
                                                   std::string_view type) const {
  const auto found = embeddedResources().find(fileName(name, type));
  if (found == embeddedResources().end()) return std::nullopt;
  return std::string(found->second);
}

FolderResources::FolderResources(std::filesystem::path folder) : folder_(std::move(folder)) {}

std::optional<std::string> FolderResources::read(std::string_view name,
                                                 std::string_view type) const {
  if (!isSettings(name)) return embedded_.read(name, type);
  std::ifstream file(folder_ / fileName(name, type), std::ios::binary);
  if (!file) return std::nullopt;
  std::string text;
  char block[4096];
  while (file.read(block, sizeof block) || file.gcount() > 0) {
    text.append(block, static_cast<std::size_t>(file.gcount()));
  }
  // A folder opens like a file, and only reading it fails.
  if (file.bad()) return std::nullopt;
  return text;
}

}  // namespace veyla
