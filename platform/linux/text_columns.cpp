#include "platform/linux/text_columns.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>

namespace veyla {

namespace {

std::size_t columnsOfCharacter(UChar32 character) {
  const std::uint32_t kind = U_MASK(u_charType(character));
  if (kind & (U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK | U_GC_CC_MASK)) return 0;
  const int width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

/// Hands over in turn what of the text is printable ASCII, and what is not: few texts need more
/// than a look at each byte.
template <class Plain, class Other>
void inPieces(std::string_view text, const Plain& plain, const Other& other) {
  const auto isPlain = [](char c) { return c >= ' ' && c <= '~'; };
  while (!text.empty()) {
    const auto middle = std::find_if_not(text.begin(), text.end(), isPlain);
    const auto end = std::find_if(middle, text.end(), isPlain);
    const auto plainSize = static_cast<std::size_t>(middle - text.begin());
    const auto otherSize = static_cast<std::size_t>(end - middle);
    if (plainSize > 0) plain(text.substr(0, plainSize));
    if (otherSize > 0) other(icu::UnicodeString::fromUTF8(text.substr(plainSize, otherSize)));
    text.remove_prefix(plainSize + otherSize);
  }
}

}  // namespace

std::size_t columnsOf(std::string_view text) {
  std::size_t columns = 0;
  inPieces(
      text, [&](std::string_view plain) { columns += plain.size(); },
      [&](const icu::UnicodeString& characters) {
        for (std::int32_t at = 0; at < characters.length(); at = characters.moveIndex32(at, 1)) {
          columns += columnsOfCharacter(characters.char32At(at));
        }
      });
  return columns;
}

std::string withAsciiSpaces(std::string_view text) {
  std::string spaced;
  spaced.reserve(text.size());
  inPieces(
      text, [&](std::string_view plain) { spaced += plain; },
      [&](icu::UnicodeString characters) {
        for (std::int32_t i = 0; i < characters.length(); ++i) {
          constexpr char16_t lastAscii = 0x7F;
          if (characters[i] > lastAscii && u_isUWhiteSpace(characters[i])) {
            characters.setCharAt(i, u' ');
          }
        }
        characters.toUTF8String(spaced);
      });
  return spaced;
}

}  // namespace veyla
