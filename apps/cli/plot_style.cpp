#include "apps/cli/plot_style.h"

#include <algorithm>

#include "apps/cli/complain.h"
#include "platform/format.h"
#include "platform/linux/pictures.h"

namespace veyla {

std::string plotText(std::string text) {
  std::replace(text.begin(), text.end(), '\'', ' ');
  return "'" + pictures().drawable(printable(text)) + "'";
}

std::string plotBegin(int width, int height) {
  return formatText("set terminal pngcairo size %d,%d", width, height) +
         " font 'Inter,20' linewidth 2 background '#ffffff'\n"
         "set encoding utf8\n"
         "set border 3 linecolor rgb '#8a8a90'\n"
         "set tics nomirror textcolor rgb '#3c3c40'\n"
         "set grid linecolor rgb '#c8c8d0' linewidth 0.6\n"
         "set key outside top center horizontal textcolor rgb '#3c3c40'\n"
         "set lmargin 9\nset rmargin 4\n";
}

std::string plotTitles(const std::string& title, const std::string& xLabel,
                       const std::string& yLabel) {
  return "set title " + plotText(title) + " font 'Inter Medium,24'\nset xlabel " +
         plotText(xLabel) + "\nset ylabel " + plotText(yLabel) + "\n";
}

}  // namespace veyla
