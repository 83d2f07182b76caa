#include "platform/linux/sqlite_lists.h"

#include <algorithm>
#include <array>

#include "platform/portable/json.h"

namespace veyla {

namespace {

/// Bytes of a row's text: with a short key and its number it just fits a page of 4,096.
constexpr std::size_t fullPart = 4040;
/// Between a row's number and the next: room for rows that come between them later.
constexpr std::int64_t numberStep = 1024;
constexpr std::int64_t largestNumber = std::int64_t{1} << 40;

constexpr std::string_view separator = jsonElementSeparator;

// Of numbers that come from the file, where anything may stand.
bool isNumber(std::int64_t number) { return number > 0 && number < largestNumber; }

/// Whether a row can stand behind the one of number `last`, or behind none of 0.
bool isRowBehind(std::int64_t last, std::int64_t number, std::string_view value) {
  return isNumber(number) && number > last && !value.empty();
}

template <class Parts>
bool areRows(const Parts& parts) {
  std::int64_t last = 0;
  return std::all_of(parts.begin(), parts.end(), [&](const auto& part) {
    return isRowBehind(std::exchange(last, part.number), part.number, part.value);
  });
}

constexpr const char* rowsInOrder =
    "SELECT number, value FROM parts WHERE key = ?1 ORDER BY number";

/// The lines between the brackets.
std::string_view linesOf(std::string_view json) { return json.substr(1, json.size() - 2); }

/// Cuts lines behind elements.
std::vector<std::string_view> cut(std::string_view lines) {
  std::vector<std::string_view> parts;
  while (!lines.empty()) {
    std::size_t end = lines.size();
    if (end > fullPart) {
      end = lines.rfind(separator, fullPart);
      // One element that is longer.
      if (end == std::string_view::npos || end == 0) {
        end = std::min(lines.find(separator, 1), lines.size());
      }
    }
    parts.push_back(lines.substr(0, end));
    lines.remove_prefix(std::min(end + separator.size(), lines.size()));
  }
  return parts;
}

/// Takes the row away from the lines' start, or their end, where it stands there.
bool takesFirst(std::string_view& lines, std::string_view part) {
  if (!lines.starts_with(part)) return false;
  const std::string_view rest = lines.substr(part.size());
  if (!rest.empty() && !rest.starts_with(separator)) return false;
  lines = rest.substr(std::min(separator.size(), rest.size()));
  return true;
}
bool takesLast(std::string_view& lines, std::string_view part) {
  if (!lines.ends_with(part)) return false;
  const std::string_view rest = lines.substr(0, lines.size() - part.size());
  if (!rest.empty() && !rest.ends_with(separator)) return false;
  lines = rest.substr(0, rest.size() - std::min(separator.size(), rest.size()));
  return true;
}

}  // namespace

bool SqliteLists::has(std::string_view key) const {
  SqliteStatement look(file_, "SELECT 1 FROM parts WHERE key = ?1 LIMIT 1");
  return look.bind(1, key).step();
}

std::string SqliteLists::read(std::string_view key) const {
  // Joined as they come: of a long list each copy takes as long as reading it.
  SqliteStatement count(file_, "SELECT count(*) FROM parts WHERE key = ?1");
  count.bind(1, key).step();
  SqliteStatement look(file_, rowsInOrder);
  look.bind(1, key);
  std::string json;
  json.reserve((fullPart + separator.size()) * static_cast<std::size_t>(count.number(0) + 1));
  for (std::int64_t last = 0; look.step();) {
    const std::string_view value = look.text(1);
    if (!isRowBehind(std::exchange(last, look.number(0)), look.number(0), value))
      throw foreignRows(key);
    json.append(json.empty() ? "[" : separator).append(value);
  }
  if (json.empty()) return "[]";
  json += ']';
  return json;
}

void SqliteLists::write(std::string_view key, std::string_view json) {
  std::vector<Part> old = partsOf(key);
  if (!areRows(old)) {
    remove(key);
    old.clear();
  }
  std::string_view lines = linesOf(json);
  auto first = old.begin();
  while (first != old.end() && takesFirst(lines, first->value)) ++first;
  const std::string_view linesToTheEnd = lines;
  auto last = old.end();
  while (last != first && takesLast(lines, (last - 1)->value)) --last;

  auto pieces = cut(lines);
  const std::int64_t low = first == old.begin() ? 0 : (first - 1)->number;
  std::int64_t room = 0;
  if (last != old.end()) room = last->number - low;
  if (room <= static_cast<std::int64_t>(pieces.size())) {
    last = old.end();
    pieces = cut(linesToTheEnd);
    room = numberStep * static_cast<std::int64_t>(pieces.size() + 1);
  }

  std::vector<Part> fresh;
  const auto shares = static_cast<std::int64_t>(pieces.size() + 1);
  for (const std::string_view piece : pieces) {
    const auto share = static_cast<std::int64_t>(fresh.size() + 1);
    fresh.push_back({low + room * share / shares, std::string(piece)});
  }
  const auto isBefore = [](const Part& one, const Part& other) {
    return one.number < other.number;
  };
  std::for_each(first, last, [&](const Part& part) {
    const bool stays = std::binary_search(fresh.begin(), fresh.end(), part, isBefore);
    if (!stays) removePart(key, part.number);
  });
  for (const Part& part : fresh) writePart(key, part);
}

void SqliteLists::append(std::string_view key, std::string_view json) {
  Part part{numberStep, std::string(linesOf(json))};
  SqliteStatement look(
      file_, "SELECT number, value FROM parts WHERE key = ?1 ORDER BY number DESC LIMIT 1");
  if (look.bind(1, key).step()) {
    const std::int64_t last = look.number(0);
    if (!areRows(std::array{Part{last, std::string(look.text(1))}})) throw foreignRows(key);
    const std::string lines = std::string(look.text(1)).append(separator).append(part.value);
    const bool fits = lines.size() <= fullPart;
    part = fits ? Part{last, lines} : Part{last + numberStep, part.value};
  }
  writePart(key, part);
}

void SqliteLists::remove(std::string_view key) {
  for (const Part& part : partsOf(key)) written_[{std::string(key), part.number}] = std::nullopt;
  SqliteStatement(file_, "DELETE FROM parts WHERE key = ?1").bind(1, key).step();
}

bool SqliteLists::areAsWritten() const {
  SqliteStatement look(file_, "SELECT value FROM parts WHERE key = ?1 AND number = ?2");
  return std::all_of(written_.begin(), written_.end(), [&](const auto& row) {
    look.reset();
    const bool isThere = look.bind(1, row.first.first).bind(2, row.first.second).step();
    return isThere == row.second.has_value() && (!isThere || look.text(0) == *row.second);
  });
}

std::vector<SqliteLists::Part> SqliteLists::partsOf(std::string_view key) const {
  SqliteStatement look(file_, rowsInOrder);
  look.bind(1, key);
  std::vector<Part> parts;
  while (look.step()) parts.push_back({look.number(0), std::string(look.text(1))});
  return parts;
}

StoreError SqliteLists::foreignRows(std::string_view key) const {
  return file_.damaged("the rows of \"" + std::string(key) +
                       "\" are empty or not numbered in order");
}

void SqliteLists::writePart(std::string_view key, const Part& part) {
  SqliteStatement write(file_,
                        "INSERT INTO parts (key, number, value) VALUES (?1, ?2, ?3) "
                        "ON CONFLICT (key, number) DO UPDATE SET value = excluded.value");
  write.bind(1, key).bind(2, part.number).bind(3, part.value).step();
  written_[{std::string(key), part.number}] = part.value;
}

void SqliteLists::removePart(std::string_view key, std::int64_t number) {
  SqliteStatement remove(file_, "DELETE FROM parts WHERE key = ?1 AND number = ?2");
  remove.bind(1, key).bind(2, number).step();
  written_[{std::string(key), number}] = std::nullopt;
}

}  // namespace veyla
