#pragma once

#include <string>

#include "platform/portable/json.h"

namespace veyla {

/// The SQL that makes a store as the first version made it, with a history and nothing else.
inline std::string firstVersionOf(const Value::Array& history) {
  return "PRAGMA synchronous = EXTRA; CREATE TABLE entries (key TEXT PRIMARY KEY NOT NULL, type "
         "TEXT NOT NULL, value TEXT NOT "
         "NULL); PRAGMA application_id = 0x56594C41; PRAGMA user_version = 1; "
         "INSERT INTO entries VALUES ('values', 'array', '" +
         writeJson(history).value_or("") + "')";
}

}  // namespace veyla
