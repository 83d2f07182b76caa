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

icu::UnicodeString fromUtf8(std::string_view text) {
  return icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

}  // namespace

std::size_t columnsOf(std::string_view text) {
  const icu::UnicodeString characters = fromUtf8(text);
  std::size_t columns = 0;
  for (std::int32_t i = 0; i < characters.length(); i = characters.moveIndex32(i, 1)) {
    columns += columnsOfCharacter(characters.char32At(i));
  }
  return columns;
}

std::string withAsciiSpaces(std::string_view text) {
  icu::UnicodeString characters = fromUtf8(text);
  for (std::int32_t i = 0; i < characters.length(); ++i) {
    constexpr char16_t lastAscii = 0x7F;
    if (characters[i] > lastAscii && u_isUWhiteSpace(characters[i])) characters.setCharAt(i, u' ');
  }
  std::string plain;
  return characters.toUTF8String(plain);
}

}  // namespace veyla
