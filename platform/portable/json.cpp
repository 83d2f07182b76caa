#include "platform/portable/json.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/portable/real_text.h"

namespace veyla {

namespace {

// Of the library's two the one that keeps the order of entries.
using Json = nlohmann::ordered_json;

constexpr std::string_view floatTag = "$float";
constexpr std::string_view doubleTag = "$double";
constexpr std::string_view dateTag = "$date";
constexpr std::string_view dictionaryTag = "$dictionary";

constexpr std::string_view nanPrefix = "nan:";

bool looksLikeTag(std::string_view key) { return key.starts_with('$'); }

template <class Real>
using BitsOf = std::conditional_t<sizeof(Real) == 4, std::uint32_t, std::uint64_t>;

// `std::bit_cast` is younger than the library that WebAssembly gets.
template <class To, class From>
To sameBits(From from) {
  static_assert(sizeof(To) == sizeof(From));
  To to;
  std::memcpy(&to, &from, sizeof to);
  return to;
}

template <class Real>
std::string textOf(Real value) {
  if (std::isnan(value)) {
    char digits[24];
    const auto bits = sameBits<BitsOf<Real>>(value);
    return std::string(nanPrefix).append(
        digits, std::to_chars(digits, digits + sizeof digits, bits, 16).ptr);
  }
  std::string text = RealText::shortest(value);
  if (std::isfinite(value) && text.find_first_of(".e") == std::string::npos) text += ".0";
  return text;
}

template <class Real>
std::optional<Real> realFromText(std::string_view text) {
  if (text.starts_with(nanPrefix)) {
    text.remove_prefix(nanPrefix.size());
    BitsOf<Real> bits = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bits, 16);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return sameBits<Real>(bits);
  }
  Real value = 0;
  if (!RealText::read(text, value)) return std::nullopt;
  return value;
}

/// Of equal keys keeps the last value, at the place of the first.
void keepLastOfEqualKeys(Value::Dictionary& entries) {
  std::unordered_map<std::string_view, std::size_t> places;
  std::vector<bool> repeats(entries.size(), false);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const auto [place, isNew] = places.emplace(entries[i].first, i);
    if (isNew) continue;
    entries[place->second].second = std::move(entries[i].second);
    repeats[i] = true;
  }
  if (places.size() == entries.size()) return;
  Value::Dictionary kept;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (!repeats[i]) kept.push_back(std::move(entries[i]));
  }
  entries = std::move(kept);
}

/// Makes a `Value` of the events of a JSON text. An event that returns false ends the reading.
class ValueBuilder {
 public:
  enum class Tags { none, read };

  explicit ValueBuilder(Tags tags) : tags_(tags) {}

  std::optional<Value> take() { return std::move(root_); }

  bool null() { return add(Value()); }
  bool boolean(bool value) { return add(Value(value)); }
  bool number_integer(std::int64_t value) { return add(Value(value)); }
  bool number_unsigned(std::uint64_t value) {
    if (std::in_range<std::int64_t>(value)) return add(Value(static_cast<std::int64_t>(value)));
    return add(Value(static_cast<double>(value)));
  }
  bool number_float(double value, const std::string& text) {
    // Rounding to double first and to single then can end beside the number that was written.
    if (insideTag(floatTag)) return add(Value(std::strtof(text.c_str(), nullptr)));
    return add(Value(value));
  }
  bool string(std::string& value) { return add(Value(std::move(value))); }
  bool binary(Json::binary_t&) { return false; }

  bool start_object(std::size_t) {
    const bool literal = insideTag(dictionaryTag);
    if (!open()) return false;
    open_.back().isDictionary = true;
    open_.back().literal = literal;
    return true;
  }
  bool key(std::string& name) {
    open_.back().key = std::move(name);
    return true;
  }
  bool end_object() {
    Container closed = close();
    if (tags_ == Tags::none) {
      keepLastOfEqualKeys(closed.entries);
    } else if (!closed.literal && !closed.entries.empty() &&
               looksLikeTag(closed.entries.front().first)) {
      return addTagged(closed.entries);
    }
    return add(Value(std::move(closed.entries)));
  }
  bool start_array(std::size_t) { return open(); }
  bool end_array() { return add(Value(close().elements)); }

  bool parse_error(std::size_t, const std::string&, const Json::exception&) { return false; }

 private:
  struct Container {
    bool isDictionary = false;
    /// Its keys are keys, whatever they look like.
    bool literal = false;
    std::string key;
    Value::Array elements;
    Value::Dictionary entries;
  };

  bool open() {
    if (open_.size() == deepestJson) return false;
    open_.emplace_back();
    return true;
  }

  Container close() {
    Container closed = std::move(open_.back());
    open_.pop_back();
    return closed;
  }

  bool insideTag(std::string_view tag) const {
    if (tags_ == Tags::none || open_.empty()) return false;
    const Container& parent = open_.back();
    return parent.isDictionary && !parent.literal && parent.entries.empty() && parent.key == tag;
  }

  /// Room from the start for about the keys of a history entry, and for its labels.
  static constexpr std::size_t usualSize = 4;

  bool add(Value value) {
    if (open_.empty()) {
      root_ = std::move(value);
    } else if (Container& parent = open_.back(); parent.isDictionary) {
      if (parent.entries.empty()) parent.entries.reserve(usualSize);
      parent.entries.emplace_back(std::move(parent.key), std::move(value));
    } else {
      if (parent.elements.empty()) parent.elements.reserve(2 * usualSize);
      parent.elements.push_back(std::move(value));
    }
    return true;
  }

  /// What only looks like a tag is the dictionary that it is.
  bool addTagged(Value::Dictionary& entries) {
    auto meant = meaningOf(entries);
    return add(meant ? std::move(*meant) : Value(std::move(entries)));
  }

  static std::optional<Value> meaningOf(const Value::Dictionary& entries) {
    if (entries.size() != 1) return std::nullopt;
    const auto& [tag, value] = entries.front();
    if (tag == dictionaryTag && value.dictionary()) return value;
    if (!value.text() && !value.isNumber()) return std::nullopt;
    if (tag == floatTag) {
      if (!value.text()) return value;
      const auto number = floatFromText(*value.text());
      return number ? std::optional<Value>(*number) : std::nullopt;
    }
    if (tag != doubleTag && tag != dateTag) return std::nullopt;
    const auto number = value.text() ? doubleFromText(*value.text()) : value.doubleValue();
    if (!number) return std::nullopt;
    return tag == dateTag ? Value(Date{*number}) : Value(*number);
  }

  Tags tags_;
  std::optional<Value> root_;
  std::vector<Container> open_;
};

std::optional<Value> valueFromText(std::string_view text, ValueBuilder::Tags tags) {
  ValueBuilder builder(tags);
  if (!Json::sax_parse(text.begin(), text.end(), &builder)) return std::nullopt;
  return builder.take();
}

/// The elements of an array that is no JSON as a whole, of which each stands on a line: what a line
/// holds, or, where that is no JSON, its text. Nothing when no line can be read, or an end is
/// missing.
std::optional<Value> elementsByLines(std::string_view text) {
  if (!text.starts_with('[') || !text.ends_with(']') || !isUtf8(text)) return std::nullopt;
  text = text.substr(1, text.size() - 2);
  Value::Array elements;
  bool anyRead = false;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(jsonElementSeparator), text.size());
    auto element = valueFromText(text.substr(0, end), ValueBuilder::Tags::read);
    anyRead |= element.has_value();
    elements.push_back(element ? std::move(*element) : Value(std::string(text.substr(0, end))));
    text.remove_prefix(std::min(end + jsonElementSeparator.size(), text.size()));
  }
  if (!anyRead) return std::nullopt;
  return elements;
}

class Writer {
 public:
  bool write(const Value& value) {
    return value.visit([this](const auto& held) { return write(held); });
  }
  std::string take() { return std::move(text_); }

 private:
  bool write(std::monostate) { return append("null"); }
  bool write(bool value) { return append(value ? "true" : "false"); }
  bool write(std::int64_t value) {
    char digits[24];
    return append(std::string(digits, std::to_chars(digits, digits + sizeof digits, value).ptr));
  }
  bool write(float value) { return writeTagged(floatTag, value); }
  bool write(double value) {
    return std::isfinite(value) ? append(numberText(value)) : writeTagged(doubleTag, value);
  }
  bool write(Date value) { return writeTagged(dateTag, value.secondsSince1970); }

  bool write(const std::string& value) {
    const auto plain = [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; };
    if (std::all_of(value.begin(), value.end(), plain)) {
      append("\"");
      append(value);
      return append("\"");
    }
    if (!isUtf8(value)) return false;
    return append(Json(value).dump());
  }

  bool write(const Value::Array& elements) {
    if (depth_ == deepestJson) return false;
    const std::string_view separator = depth_ == 0 ? jsonElementSeparator : ",";
    ++depth_;
    append("[");
    for (std::size_t i = 0; i < elements.size(); ++i) {
      if (i > 0) append(separator);
      if (!write(elements[i])) return false;
    }
    --depth_;
    return append("]");
  }

  bool write(const Value::Dictionary& entries) {
    const bool tagged = !entries.empty() && looksLikeTag(entries.front().first);
    // The tag is a dictionary too, to the reader that counts them.
    const std::size_t levels = tagged ? 2 : 1;
    if (depth_ + levels > deepestJson) return false;
    depth_ += levels;
    if (tagged) openTag(dictionaryTag);
    append("{");
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (i > 0) append(",");
      if (!write(entries[i].first)) return false;
      append(":");
      if (!write(entries[i].second)) return false;
    }
    append("}");
    if (tagged) append("}");
    depth_ -= levels;
    return true;
  }

  template <class Real>
  bool writeTagged(std::string_view tag, Real value) {
    if (depth_ == deepestJson) return false;
    openTag(tag);
    const std::string_view quote = std::isfinite(value) ? "" : "\"";
    append(quote);
    append(numberText(value));
    append(quote);
    return append("}");
  }

  void openTag(std::string_view tag) {
    append("{\"");
    append(tag);
    append("\":");
  }

  bool append(std::string_view piece) {
    text_ += piece;
    return true;
  }

  std::string text_;
  std::size_t depth_ = 0;
};

/// The value in the library's form, as far as JSON has one.
class PlainJson {
 public:
  Json of(const Value& value) {
    return value.visit([this](const auto& held) { return of(held); });
  }
  /// Whether something had none, in whose place null stands.
  bool lacksSomething() const { return lacksSomething_; }

 private:
  Json nothing() {
    lacksSomething_ = true;
    return nullptr;
  }
  Json of(std::monostate) { return nullptr; }
  Json of(bool value) { return value; }
  Json of(std::int64_t value) { return value; }
  // The double beside the single's shortest text is written as that text.
  Json of(float value) { return of(std::strtod(numberText(value).c_str(), nullptr)); }
  Json of(double value) { return std::isfinite(value) ? Json(value) : nothing(); }
  Json of(Date) { return nothing(); }
  Json of(const std::string& value) { return isUtf8(value) ? Json(value) : nothing(); }
  Json of(const Value::Array& elements) {
    Json array = Json::array();
    for (const Value& element : elements) array.push_back(of(element));
    return array;
  }
  Json of(const Value::Dictionary& entries) {
    Json object = Json::object();
    for (const auto& [key, value] : entries) {
      if (!isUtf8(key)) return nothing();
      object[key] = of(value);
    }
    return object;
  }

  bool lacksSomething_ = false;
};

}  // namespace

std::optional<std::string> NlohmannJsonWriter::prettyPrinted(const Value& value) const {
  constexpr int indentation = 2;
  PlainJson plain;
  const auto json = plain.of(value);
  if (plain.lacksSomething()) return std::nullopt;
  return json.dump(indentation);
}

std::optional<Value> NlohmannJsonParser::parse(std::string_view text) const {
  return valueFromText(text, ValueBuilder::Tags::none);
}

std::optional<std::string> writeJson(const Value& value) {
  Writer writer;
  if (!writer.write(value)) return std::nullopt;
  return writer.take();
}

std::optional<Value> readJson(std::string_view text) {
  auto value = valueFromText(text, ValueBuilder::Tags::read);
  return value ? std::move(value) : elementsByLines(text);
}

std::string numberText(double value) { return textOf(value); }
std::string numberText(float value) { return textOf(value); }
std::optional<double> doubleFromText(std::string_view text) { return realFromText<double>(text); }
std::optional<float> floatFromText(std::string_view text) { return realFromText<float>(text); }

bool isUtf8(std::string_view text) {
  // The library judges whole JSON texts, without exceptions where it is asked for no more. What is
  // special inside quotes is ASCII, and ASCII is UTF-8.
  std::string quoted = "\"";
  for (const char c : text) quoted += static_cast<unsigned char>(c) < 0x80 ? 'a' : c;
  return Json::accept(quoted + "\"");
}

}  // namespace veyla
