#include "tests/fuzz/fuzz.h"

/// Tries what lies in a folder.
int main(int, char** arguments) {
  for (const auto& file : std::filesystem::directory_iterator(arguments[1])) {
    std::fprintf(stderr, "%s\n", file.path().filename().c_str());
    veyla::fuzz(veyla::contentsOf(file.path()));
  }
}
