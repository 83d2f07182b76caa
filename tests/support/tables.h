#pragma once

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace veyla {

inline std::string replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at; (at = text.find(what)) != std::string::npos;) {
    text.replace(at, what.size(), by);
  }
  return text;
}

/// The rows of a table of "what happens -> what follows", in which `names` stand for texts.
inline std::vector<std::pair<std::string, std::string>> rowsOf(
    std::string table, const std::vector<std::pair<const char*, const char*>>& names = {}) {
  for (const auto& [name, text] : names) table = replaced(std::move(table), name, text);
  std::vector<std::pair<std::string, std::string>> rows;
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t arrow = line.find("->");
    if (arrow == std::string::npos) continue;
    rows.emplace_back(line.substr(0, arrow), line.substr(std::min(arrow + 3, line.size())));
  }
  return rows;
}

inline std::string joined(const std::vector<std::string>& parts) {
  std::string all;
  for (const std::string& part : parts) all += (all.empty() ? "" : " | ") + part;
  return all;
}

}  // namespace veyla
