#include "platform/linux/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "platform/linux/recording_source.h"

namespace veyla {

void requireInputFile(const std::string& path) {
  const auto refuse = [&](const std::string& reason) { throw InputError(path + ": " + reason); };
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) refuse("no such file; check the name");
    if (errno == EACCES) refuse("no permission to look into its folder; change its permissions");
    refuse(std::string(std::strerror(errno)) + "; check the name");
  }
  if (S_ISDIR(status.st_mode)) refuse("a folder; name a file in it");
  if (!S_ISREG(status.st_mode)) refuse("not a regular file; save it to one first");
  if (status.st_size == 0) refuse("an empty file; record or copy it again");

  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) refuse(readProblem(errno));
  close(file);
}

std::string readInputFile(const std::string& path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"),
                                                             std::fclose);
  std::string contents;
  if (!file && errno == ENOENT) return contents;
  if (!file) throw InputError(path + ": " + readProblem(errno));
  char block[4096];
  for (std::size_t count = 0; (count = std::fread(block, 1, sizeof block, file.get())) > 0;) {
    contents.append(block, count);
  }
  if (std::ferror(file.get()) != 0) throw InputError(path + ": " + readProblem(errno));
  return contents;
}

std::string readProblem(int error) {
  const std::string inSystemsWords = std::strerror(error);
  switch (error) {
    case EACCES:
    case EPERM:
      return "no permission to read it; change its permissions";
    case EMFILE:
    case ENFILE:
      return inSystemsWords + "; close other programs or raise the limit on open files";
    default:
      return inSystemsWords + "; copy it to this machine again";
  }
}

}  // namespace veyla
