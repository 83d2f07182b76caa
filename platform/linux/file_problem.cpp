#include "platform/linux/file_problem.h"

#include <cerrno>
#include <system_error>

namespace veyla {

namespace {

struct Problem {
  std::string reason;
  std::string wayOut;
};

Problem problemOf(int error, FilePlace place) {
  const bool isRead = place == FilePlace::dataToRead;
  const bool isData = place == FilePlace::dataFolder || isRead;
  const std::string elsewhere = isData                       ? "choose another data folder"
                                : place == FilePlace::stream ? "lead it elsewhere"
                                                             : "choose another folder";
  const std::string inSystemsWords = std::generic_category().message(error);
  switch (error) {
    case ENOENT:
      return {"its folder does not exist", "make it first"};
    case EEXIST:
      if (!isData) return {inSystemsWords, elsewhere};
      [[fallthrough]];
    case ENOTDIR:
      return {"a file stands where a folder must be", "move it away or " + elsewhere};
    case EISDIR:
      if (isData) return {"a folder stands where a file must be", "move it away"};
      return {"a folder", "name a file in it"};
    case EACCES:
    case EPERM:
      if (isRead) return {"no permission to read it", "allow this user to read it or " + elsewhere};
      return {"no permission to write there", "allow this user to write there or " + elsewhere};
    case EROFS:
      return {inSystemsWords, isData ? "choose a data folder on a disk that can be written"
                                     : "choose a folder on a disk that can be written"};
    case ENOSPC:
    case EDQUOT:
      return {"the disk is full",
              isData ? "free some space and try again" : "make room or " + elsewhere};
    case EFBIG:
      return {"larger than the system allows",
              isData ? "raise the limit on a file's size or " + elsewhere
                     : elsewhere + " or a shorter recording"};
    case EBADF:
      return {"closed", "let it lead to a terminal, a file or a pipe"};
    case EPIPE:
      return {"nobody reads the pipe any more", "keep its reader running"};
    default:
      return {inSystemsWords, isData ? "check the disk or " + elsewhere : elsewhere};
  }
}

}  // namespace

std::string notRegular(const std::string& path) {
  return path + ": not a regular file; move it away or choose another data folder";
}

std::string fileProblem(const std::string& path, int error, FilePlace place) {
  const Problem problem = problemOf(error, place);
  return path + ": " + problem.reason + "; " + problem.wayOut;
}

}  // namespace veyla
