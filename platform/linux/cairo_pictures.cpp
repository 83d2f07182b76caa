#include "platform/linux/cairo_pictures.h"

#include "platform/linux/cairo_canvas.h"
#include "platform/linux/fonts.h"

namespace veyla {

namespace {

std::unique_ptr<Picture> makeCairoCanvas(Size size, double density) {
  return std::make_unique<CairoCanvas>(size, density);
}

}  // namespace

/// Of what is linked with this; the program has one that opens the module.
const Pictures& pictures() { return *veylaCairoPictures(); }

}  // namespace veyla

const veyla::Pictures* veylaCairoPictures() {
  static const veyla::Pictures pictures{veyla::makeCairoCanvas, veyla::drawable};
  return &pictures;
}
