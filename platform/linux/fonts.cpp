#include "platform/linux/fonts.h"

#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <memory>

namespace veyla {

namespace {

using Fonts = std::unique_ptr<FcFontSet, void (*)(FcFontSet*)>;

/// Those that can be drawn at any size, each with its letters.
const FcFontSet* scalableFonts() {
  static const Fonts fonts = [] {
    FcPattern* scalable = FcPatternBuild(nullptr, FC_SCALABLE, FcTypeBool, FcTrue, nullptr);
    FcObjectSet* letters = FcObjectSetBuild(FC_CHARSET, nullptr);
    Fonts found(FcFontList(nullptr, scalable, letters), FcFontSetDestroy);
    FcObjectSetDestroy(letters);
    FcPatternDestroy(scalable);
    return found;
  }();
  return fonts.get();
}

bool hasFont(FcChar32 letter) {
  const FcFontSet* fonts = scalableFonts();
  if (!fonts) return false;
  return std::any_of(fonts->fonts, fonts->fonts + fonts->nfont, [=](FcPattern* font) {
    FcCharSet* letters = nullptr;
    return FcPatternGetCharSet(font, FC_CHARSET, 0, &letters) == FcResultMatch &&
           FcCharSetHasChar(letters, letter) == FcTrue;
  });
}

}  // namespace

std::string drawable(const std::string& text) {
  std::string drawn;
  for (std::size_t at = 0; at < text.size();) {
    FcChar32 letter = 0;
    const auto* rest = reinterpret_cast<const FcChar8*>(text.data()) + at;
    const int size = FcUtf8ToUcs4(rest, &letter, static_cast<int>(text.size() - at));
    const bool isAscii = size == 1;
    if (size > 0 && (isAscii || hasFont(letter))) {
      drawn.append(text, at, static_cast<std::size_t>(size));
    } else {
      drawn += '?';
    }
    at += static_cast<std::size_t>(std::max(size, 1));
  }
  return drawn;
}

}  // namespace veyla
