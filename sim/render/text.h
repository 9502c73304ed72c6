// Text on the pictures, in the one pinned font (Inter, in the system
// font's place): lines broken to a width and drawn as a label draws them.
#pragma once

#include <cairo.h>

#include <string>
#include <vector>

namespace kv::sim::render {

enum class Weight { kRegular, kSemibold, kBold };

// "semibold" and "bold" by name; anything else is regular.
Weight weightNamed(const std::string& name);

struct TextStyle {
  double size = 17;
  Weight weight = Weight::kRegular;
  double color[4] = {0, 0, 0, 1};
  int align = 0;  // 0 left, 1 centre, 2 right (NSTextAlignment)
  int lines = 1;  // the most lines shown; 0 for any number
};

// True when the font files are there; else *error says which is missing.
bool fontsAvailable(std::string* error);

// The height of one line of text at `size` points.
double lineHeight(double size);

// `text` broken into lines no wider than `width` (at line breaks, then
// between words, then inside a word too long for a line), at most `lines`
// of them when `lines` is above 0, the last one ending in "…" when cut.
std::vector<std::string> breakLines(cairo_t* cr, const std::string& text, const TextStyle& style,
                                    double width);

// Draws `text` in the box (x, y, width, height) as a label does: broken
// into lines, aligned across, the block centred up and down.
void drawText(cairo_t* cr, const std::string& text, const TextStyle& style, double x, double y,
              double width, double height);

}  // namespace kv::sim::render
