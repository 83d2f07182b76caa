#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/resources.h"
#include "platform/value.h"

namespace veyla {

/// Arrays and dictionaries nest at most this deep, in what is read and in what is written: a
/// hostile text cannot exhaust the stack.
inline constexpr std::size_t deepestJson = 128;

/// What `writeJson` puts between the elements of an outermost array, and nowhere else.
inline constexpr std::string_view jsonElementSeparator = ",\n";

/// Reads any JSON text in UTF-8. Of equal keys the last one wins; an integer beyond 64 bits becomes
/// a double. A number beyond the range of a double is no JSON.
class NlohmannJsonParser : public JsonParser {
 public:
  std::optional<Value> parse(std::string_view text) const override;
};

/// Indents by two blanks a level. A number is the shortest text that reads back as the same, in the
/// precision that it has.
class NlohmannJsonWriter : public JsonWriter {
 public:
  std::optional<std::string> prettyPrinted(const Value& value) const override;
};

/// Writes a value as JSON from which `readJson` makes the same value, bit for bit. What JSON cannot
/// tell apart is an object with one key that begins with "$":
///
///     {"$float": 97.1}                   a single-precision number; a double is always 97.0 or 9e1
///     {"$date": 1709640427.25}           seconds since 1970-01-01 00:00 UTC
///     {"$double": "inf"}                 also "-inf" and "nan:" with its bits, in all three
///     {"$dictionary": {"$float": 1}}     a dictionary that only looks like one of these
///
/// Anything else is plain JSON. The elements of an outermost array stand on a line each. Nothing
/// when the value nests too deep or holds a text that is not UTF-8.
std::optional<std::string> writeJson(const Value& value);

/// Reads what `writeJson` wrote. Where something else has meddled with it, as much as possible is
/// kept: what only looks like one of the tags is the dictionary that it is, and of an array with a
/// line that is no JSON that element is the line's text. Nothing when it cannot be read at all.
std::optional<Value> readJson(std::string_view text);

/// A number as `writeJson` writes it between the tags, and back. What is no such text reads as
/// nothing.
std::string numberText(double value);
std::string numberText(float value);
std::optional<double> doubleFromText(std::string_view text);
std::optional<float> floatFromText(std::string_view text);

/// Whether `text` is UTF-8 throughout.
bool isUtf8(std::string_view text);

}  // namespace veyla
