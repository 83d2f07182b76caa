#include "platform/linux/temporary_folder.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace veyla {

TemporaryFolder::TemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "veyla.XXXXXX").string();
  if (!mkdtemp(name.data())) {
    throw std::filesystem::filesystem_error("mkdtemp", name,
                                            std::error_code(errno, std::generic_category()));
  }
  path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace veyla
