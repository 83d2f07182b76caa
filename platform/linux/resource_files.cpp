#include "platform/linux/resource_files.h"

#include <fstream>
#include <utility>

namespace veyla {

namespace {

bool isSettings(std::string_view name) {
  return name == "Spo2Settings" || name == "HeartrateSettings" || name == "CameraSettings";
}

}  // namespace

FolderResources::FolderResources(std::filesystem::path folder) : folder_(std::move(folder)) {}

std::optional<std::string> FolderResources::read(std::string_view name,
                                                 std::string_view type) const {
  if (!isSettings(name)) return embedded_.read(name, type);
  const auto path = folder_ / std::string(name).append(".").append(type);
  // A pipe would be waited for.
  std::error_code unknown;
  if (!std::filesystem::is_regular_file(path, unknown)) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
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
