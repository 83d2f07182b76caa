#pragma once

#include <filesystem>

namespace veyla {

/// A folder for this program's eyes alone, gone with the object.
class TemporaryFolder {
 public:
  /// Throws `std::filesystem::filesystem_error`.
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace veyla
