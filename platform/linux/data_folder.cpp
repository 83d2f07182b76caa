#include "platform/linux/data_folder.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "platform/linux/file_problem.h"
#include "platform/linux/store_error.h"

namespace veyla {

namespace {

std::filesystem::path absolutePathIn(const char* variable) {
  const char* value = std::getenv(variable);
  if (!value) return {};
  const std::filesystem::path path(value);
  return path.is_absolute() ? path : std::filesystem::path();
}

/// The names in it are on the disk, as far as the system lets folders be synchronized.
void synchronizeFolder(const std::filesystem::path& folder) {
  const int opened = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (opened < 0) return;
  fsync(opened);
  close(opened);
}

}  // namespace

std::filesystem::path defaultDataFolder() {
  const auto data = absolutePathIn("XDG_DATA_HOME");
  if (!data.empty()) return data / "veyla";
  auto home = absolutePathIn("HOME");
  if (home.empty()) {
    const passwd* user = getpwuid(getuid());
    if (user && user->pw_dir) home = user->pw_dir;
  }
  if (home.empty()) {
    throw StoreError("the data folder is not known: set HOME or XDG_DATA_HOME, or name a folder");
  }
  return home / ".local" / "share" / "veyla";
}

void makeDataFolder(const std::filesystem::path& folder) {
  std::filesystem::path made;
  for (const auto& part : folder) {
    made /= part;
    if (mkdir(made.c_str(), S_IRWXU) == 0) {
      synchronizeFolder(made.has_parent_path() ? made.parent_path() : ".");
      continue;
    }
    const int error = errno;
    struct stat found {};
    if (stat(made.c_str(), &found) != 0) throw StoreError(dataProblem(made, error));
    if (!S_ISDIR(found.st_mode)) throw StoreError(dataProblem(made, ENOTDIR));
  }
  if (faccessat(AT_FDCWD, folder.c_str(), R_OK | W_OK | X_OK, AT_EACCESS) != 0) {
    throw StoreError(dataProblem(folder, errno));
  }
}

bool mayExist(const std::filesystem::path& path) {
  std::error_code unknown;
  return std::filesystem::exists(path, unknown) || unknown;
}

std::string dataProblem(const std::filesystem::path& path, int error) {
  return fileProblem(path.string(), error, FilePlace::dataFolder);
}

}  // namespace veyla
