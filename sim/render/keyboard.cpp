// The keyboard: the number pad a passcode field brings, or the letters.
#include <cmath>
#include <iterator>

#include "sim/render/art.h"
#include "sim/render/scene.h"
#include "sim/render/surface.h"
#include "sim/render/text.h"

namespace kv::sim::render {

using platform::Value;

namespace {

constexpr long kNumberPad = 4, kAsciiNumberPad = 11;  // UIKeyboardType
constexpr Rgba kBoard{0.82, 0.835, 0.86, 1}, kKey{1, 1, 1, 1}, kShadow{0.53, 0.54, 0.56, 1};

void key(cairo_t* cr, double x, double y, double w, double h, Rgba face) {
  for (auto [dy, c] : {std::pair{1.0, kShadow}, std::pair{0.0, face}}) {
    double r = 5;
    cairo_new_sub_path(cr);
    cairo_arc(cr, x + w - r, y + dy + r, r, -M_PI / 2, 0);
    cairo_arc(cr, x + w - r, y + dy + h - r, r, 0, M_PI / 2);
    cairo_arc(cr, x + r, y + dy + h - r, r, M_PI / 2, M_PI);
    cairo_arc(cr, x + r, y + dy + r, r, M_PI, 1.5 * M_PI);
    cairo_close_path(cr);
    cairo_set_source_rgba(cr, c.r, c.g, c.b, c.a);
    cairo_fill(cr);
  }
}

TextStyle inkStyle(double size, Weight weight) {
  TextStyle s;
  s.size = size;
  s.weight = weight;
  s.align = 1;
  return s;
}

void numberPad(cairo_t* cr, double x, double y, double w, double h) {
  static const char* const kDigits[] = {"1", "2", "3", "4", "5", "6", "7", "8", "9", "", "0", ""};
  static const char* const kLetters[] = {"",     "ABC", "DEF",  "GHI", "JKL", "MNO",
                                         "PQRS", "TUV", "WXYZ", "",    "",    ""};
  constexpr double kGap = 6;
  double kw = (w - 4 * kGap) / 3, kh = (h - 5 * kGap) / 4;
  for (int i = 0; i < 12; ++i) {
    double kx = x + kGap + (i % 3) * (kw + kGap), ky = y + kGap + (i / 3) * (kh + kGap);
    if (i == 9) continue;  // no key
    if (i == 11) {
      // Delete: a tag with a cross.
      double cx = kx + kw / 2, cy = ky + kh / 2;
      cairo_set_source_rgba(cr, 0, 0, 0, 1);
      cairo_set_line_width(cr, 1.5);
      cairo_move_to(cr, cx - 14, cy);
      cairo_line_to(cr, cx - 7, cy - 8);
      cairo_line_to(cr, cx + 13, cy - 8);
      cairo_line_to(cr, cx + 13, cy + 8);
      cairo_line_to(cr, cx - 7, cy + 8);
      cairo_close_path(cr);
      cairo_move_to(cr, cx - 1, cy - 4);
      cairo_line_to(cr, cx + 7, cy + 4);
      cairo_move_to(cr, cx + 7, cy - 4);
      cairo_line_to(cr, cx - 1, cy + 4);
      cairo_stroke(cr);
      continue;
    }
    key(cr, kx, ky, kw, kh, kKey);
    bool lettered = kLetters[i][0] != '\0';
    drawText(cr, kDigits[i], inkStyle(25, Weight::kRegular), kx, ky - (lettered ? 6 : 0), kw, kh);
    if (lettered) {
      drawText(cr, kLetters[i], inkStyle(10, Weight::kSemibold), kx, ky + kh - 18, kw, 12);
    }
  }
}

void letters(cairo_t* cr, double x, double y, double w, double h) {
  static const char* const kRows[] = {"QWERTYUIOP", "ASDFGHJKL", "ZXCVBNM"};
  constexpr double kGap = 6;
  double kw = (w - 11 * kGap) / 10, kh = (h - 5 * kGap) / 4;
  for (size_t row = 0; row < std::size(kRows); ++row) {
    std::string keys = kRows[row];
    double left = x + (w - static_cast<double>(keys.size()) * (kw + kGap) + kGap) / 2;
    for (size_t i = 0; i < keys.size(); ++i) {
      double kx = left + static_cast<double>(i) * (kw + kGap);
      double ky = y + kGap + static_cast<double>(row) * (kh + kGap);
      key(cr, kx, ky, kw, kh, kKey);
      drawText(cr, keys.substr(i, 1), inkStyle(20, Weight::kRegular), kx, ky, kw, kh);
    }
  }
  double ky = y + kGap + 3 * (kh + kGap);
  key(cr, x + kGap, ky, 2 * kw, kh, kBoard);
  drawText(cr, "123", inkStyle(15, Weight::kRegular), x + kGap, ky, 2 * kw, kh);
  key(cr, x + 3 * kGap + 2 * kw, ky, w - 6 * kGap - 4.5 * kw, kh, kKey);
  drawText(cr, "space", inkStyle(15, Weight::kRegular), x + 3 * kGap + 2 * kw, ky,
           w - 6 * kGap - 4.5 * kw, kh);
}

}  // namespace

void paintKeyboard(Canvas& canvas, const Value& keyboard) {
  const auto& f = keyboard[key::kFrame].asArray();
  if (f.size() != 4) return;
  double x = f[0].asReal(), y = f[1].asReal(), w = f[2].asReal(), h = f[3].asReal();
  cairo_t* cr = canvas.cr();
  cairo_save(cr);
  cairo_rectangle(cr, x, y, w, h);
  cairo_set_source_rgba(cr, kBoard.r, kBoard.g, kBoard.b, kBoard.a);
  cairo_fill(cr);
  long type = keyboard[key::kType].asInteger();
  bool pad = type == kNumberPad || type == kAsciiNumberPad;
  // The iPad's number pad keeps the width of a phone's, centred.
  double padWidth = std::min(w, 420.0);
  if (pad) {
    numberPad(cr, x + (w - padWidth) / 2, y, padWidth, h);
  } else {
    letters(cr, x, y, w, h);
  }
  cairo_restore(cr);
}

}  // namespace kv::sim::render
