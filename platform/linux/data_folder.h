#pragma once

#include <chrono>
#include <filesystem>
#include <string>

namespace veyla {

/// How long to wait for other programs that write there: among many, or beside much that is written
/// to the disk, a turn takes its time, and what was measured is worth waiting for.
inline constexpr std::chrono::milliseconds patienceWithWriters{30000};

/// `$XDG_DATA_HOME/veyla` when that variable holds an absolute path, else `~/.local/share/veyla`.
/// Throws `StoreError` when there is no home folder either.
std::filesystem::path defaultDataFolder();

/// Makes the folder and the folders above it where they are missing, for the user's eyes only (mode
/// 700); leaves what is there as it is. Throws `StoreError` when that is not possible or nothing
/// can be written in it.
void makeDataFolder(const std::filesystem::path& folder);

/// Whether something is at `path`; also true where that cannot be told, so that opening it tells
/// why.
bool mayExist(const std::filesystem::path& path);

/// `fileProblem` for a file or folder in the data folder.
std::string dataProblem(const std::filesystem::path& path, int error);

}  // namespace veyla
