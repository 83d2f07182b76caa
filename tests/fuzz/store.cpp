#include "platform/linux/sqlite_key_value_store.h"
#include "tests/fuzz/fuzz.h"

namespace veyla {
namespace {

constexpr const char* key = "values";

Value elementOf(Choices& choices) {
  // Many go into a row; some are longer than one.
  const std::size_t length =
      choices.pick(8) == 0 ? choices.next<std::uint16_t>() % 9000U : choices.pick(256);
  return std::string(length, static_cast<char>('a' + choices.pick(26)));
}

/// As measuring, labelling, deleting and restoring change a history.
void change(SqliteKeyValueStore& store, Value::Array& list, Choices& choices) {
  const std::size_t what = choices.pick(5);
  const auto at = [&] {
    return list.begin() + static_cast<std::ptrdiff_t>(choices.pick(list.size() + 1));
  };
  if (what < 2) {
    list.push_back(elementOf(choices));
    must(store.exclusively([&] { store.append(key, list.back()); }), "it is appended");
    return;
  }
  const auto from = at();
  if (what == 2 && from != list.end()) {
    *from = elementOf(choices);
  } else if (what == 3) {
    list.erase(from, std::max(from, at()));
  } else {
    list.insert(from, choices.pick(4), elementOf(choices));
  }
  store.setValue(key, list);
  store.synchronize();
}

/// By row: number and text.
using Rows = std::vector<std::pair<std::int64_t, std::string>>;

Rows rowsOf(SqliteFile& file) {
  Rows rows;
  SqliteStatement look(file, "SELECT number, value FROM parts ORDER BY number");
  while (look.step()) rows.emplace_back(look.number(0), look.text(1));
  return rows;
}

/// A row has another number or text, or is missing.
void damage(SqliteFile& file, Choices& choices) {
  Rows rows = rowsOf(file);
  if (rows.empty()) return;
  const auto number = rows[choices.pick(rows.size())].first;
  const std::size_t what = choices.pick(3);
  const char* sql = what == 0   ? "UPDATE parts SET number = ?2 WHERE number = ?1"
                    : what == 1 ? "UPDATE parts SET value = substr(value, ?2) WHERE number = ?1"
                                : "DELETE FROM parts WHERE number = ?1";
  SqliteStatement statement(file, sql);
  statement.bind(1, number);
  if (what == 0) statement.bind(2, choices.next<std::int64_t>());
  if (what == 1) statement.bind(2, choices.next<std::int16_t>());
  statement.step();
}

}  // namespace
}  // namespace veyla

/// However a list is changed, it reads back the same; whatever its rows have become, it can be read
/// and changed, or is told and stays as it is but for what is added.
void veyla::fuzz(std::string_view input) {
  // A change takes some bytes and a millisecond or so.
  Choices choices(input.substr(0, 300));
  static const ScratchFolder folder;
  const std::string file = folder.file(std::string(SqliteKeyValueStore::fileName));
  std::filesystem::remove(file);
  Value::Array list;
  for (bool isOver = false; !isOver;) {
    SqliteKeyValueStore store(folder.path());
    const std::size_t changes = choices.pick(16);
    for (std::size_t i = 0; i < changes; ++i) change(store, list, choices);
    must(!store.failure(), store.failure().value_or(""));
    must(store.value(key).value_or(Value::Array{}) == Value(list), "it reads back the same");
    isOver = choices.left() < 64;
  }

  SqliteFile rows(file, SqliteFile::Use::readAndWrite, std::chrono::seconds{1});
  try {
    damage(rows, choices);
  } catch (const StoreError&) {
    return;  // Two rows cannot have one number.
  }
  const Rows before = rowsOf(rows);
  SqliteKeyValueStore store(folder.path());
  if (auto kept = store.value(key); kept && kept->array()) {
    list = *kept->array();
    change(store, list, choices);
    must(store.value(key) == Value(list), "what can be read can be changed");
    return;
  }
  must(store.failure().has_value() || before.empty(), "what cannot be read is told");
  store.exclusively([&] { store.append(key, "added"); });
  const Rows after = rowsOf(rows);
  for (const auto& old : before) {
    const bool stays = std::any_of(after.begin(), after.end(), [&old](const auto& row) {
      return row.first == old.first && row.second.starts_with(old.second);
    });
    must(stays, "what cannot be read stays");
  }
}
