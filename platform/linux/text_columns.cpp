#include "platform/linux/text_columns.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <cstdint>

namespace veyla {

namespace {

std::size_t columnsOfCharacter(UChar32 character) {
  const std::uint32_t kind = U_MASK(u_charType(character));
  if (kind & (U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK | U_GC_CC_MASK)) return 0;
  const int width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

}  // namespace

std::size_t columnsOf(std::string_view text) {
  std::size_t columns = 0;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t ascii = i;
    while (i < text.size() && text[i] >= ' ' && text[i] <= '~') ++i;
    columns += i - ascii;
    const std::size_t other = i;
    while (i < text.size() && !(text[i] >= ' ' && text[i] <= '~')) ++i;
    if (i == other) continue;
    const icu::UnicodeString characters =
        icu::UnicodeString::fromUTF8(text.substr(other, i - other));
    for (std::int32_t at = 0; at < characters.length(); at = characters.moveIndex32(at, 1)) {
      columns += columnsOfCharacter(characters.char32At(at));
    }
  }
  return columns;
}

std::string withAsciiSpaces(std::string_view text) {
  icu::UnicodeString characters = icu::UnicodeString::fromUTF8(text);
  for (std::int32_t i = 0; i < characters.length(); ++i) {
    constexpr char16_t lastAscii = 0x7F;
    if (characters[i] > lastAscii && u_isUWhiteSpace(characters[i])) characters.setCharAt(i, u' ');
  }
  std::string plain;
  return characters.toUTF8String(plain);
}

}  // namespace veyla
