// The drawn shapes: strokes in a unit square, scaled to the box asked for.
#include "sim/render/art.h"

#include <cmath>
#include <iterator>

#include "sim/render/canvas.h"

namespace kv::sim::render {

namespace {

constexpr double kStroke = 0.045;  // line width, in the unit square

double radians(double degrees) {
  return degrees * M_PI / 180;
}

// Starts drawing in the unit square mapped onto the square (x, y, size).
void enterUnit(cairo_t* cr, double x, double y, double size, Rgba color) {
  cairo_save(cr);
  cairo_translate(cr, x, y);
  cairo_scale(cr, size, size);
  cairo_set_source_rgba(cr, color.r, color.g, color.b, color.a);
  cairo_set_line_width(cr, kStroke);
  cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
  cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
}

// The fingerprint's ridges: arcs about one centre, open below, the inner
// ones nearly closed.
struct Ridge {
  double radius, from, to;  // degrees, clockwise from the right
};
constexpr Ridge kRidges[] = {
    {0.07, 200, 500},  {0.145, 160, 300}, {0.145, 320, 410}, {0.22, 150, 250},  {0.22, 270, 420},
    {0.295, 165, 290}, {0.295, 305, 375}, {0.37, 185, 355},  {0.445, 205, 335},
};

struct StateLook {
  long state;
  GlyphLook look;
};
// PassKit's states as the prompt uses them: 0 idle and 1 scanning with the
// fingerprint; 2 and 4 idle, 3 and 5 looking with the face; 6, 7, 11 and 12
// the success of the two.
constexpr StateLook kStates[] = {
    {0, {GlyphShape::kFingerprint, false}}, {1, {GlyphShape::kFingerprint, true}},
    {2, {GlyphShape::kFace, false}},        {3, {GlyphShape::kFace, true}},
    {4, {GlyphShape::kFace, false}},        {5, {GlyphShape::kFace, true}},
    {6, {GlyphShape::kTick, true}},         {7, {GlyphShape::kTick, true}},
    {11, {GlyphShape::kTick, true}},        {12, {GlyphShape::kTick, true}},
};

}  // namespace

void drawFingerprint(cairo_t* cr, double x, double y, double size, Rgba color) {
  enterUnit(cr, x, y, size, color);
  for (const Ridge& r : kRidges) {
    cairo_new_sub_path(cr);
    cairo_save(cr);
    cairo_translate(cr, 0.5, 0.52);
    cairo_scale(cr, 0.88, 1.0);  // a fingertip is taller than wide
    cairo_arc(cr, 0, 0, r.radius, radians(r.from), radians(r.to));
    cairo_restore(cr);
  }
  cairo_stroke(cr);
  cairo_restore(cr);
}

void drawFace(cairo_t* cr, double x, double y, double size, Rgba color) {
  enterUnit(cr, x, y, size, color);
  // Four corner brackets.
  constexpr double kIn = 0.06, kArm = 0.2, kRound = 0.1;
  for (int corner = 0; corner < 4; ++corner) {
    cairo_save(cr);
    cairo_translate(cr, 0.5, 0.5);
    cairo_rotate(cr, M_PI / 2 * corner);
    cairo_translate(cr, -0.5, -0.5);
    cairo_move_to(cr, kIn, kIn + kArm);
    cairo_line_to(cr, kIn, kIn + kRound);
    cairo_arc(cr, kIn + kRound, kIn + kRound, kRound, M_PI, 1.5 * M_PI);
    cairo_line_to(cr, kIn + kArm, kIn);
    cairo_restore(cr);
  }
  // Eyes, nose and smile.
  cairo_move_to(cr, 0.36, 0.36);
  cairo_line_to(cr, 0.36, 0.44);
  cairo_move_to(cr, 0.64, 0.36);
  cairo_line_to(cr, 0.64, 0.44);
  cairo_move_to(cr, 0.5, 0.36);
  cairo_line_to(cr, 0.5, 0.55);
  cairo_line_to(cr, 0.46, 0.55);
  cairo_new_sub_path(cr);
  cairo_arc(cr, 0.5, 0.52, 0.16, radians(35), radians(145));
  cairo_stroke(cr);
  cairo_restore(cr);
}

void drawTick(cairo_t* cr, double x, double y, double size, Rgba color) {
  enterUnit(cr, x, y, size, color);
  cairo_arc(cr, 0.5, 0.5, 0.5 - kStroke, 0, 2 * M_PI);
  cairo_move_to(cr, 0.3, 0.52);
  cairo_line_to(cr, 0.44, 0.66);
  cairo_line_to(cr, 0.72, 0.36);
  cairo_stroke(cr);
  cairo_restore(cr);
}

void drawRing(cairo_t* cr, double x, double y, double size, Rgba color) {
  enterUnit(cr, x, y, size, color);
  cairo_set_line_width(cr, 0.05);
  cairo_arc(cr, 0.5, 0.5, 0.475, 0, 2 * M_PI);
  cairo_stroke(cr);
  cairo_restore(cr);
}

GlyphLook glyphLookFor(long state) {
  for (const auto& s : kStates) {
    if (s.state == state) return s.look;
  }
  return {GlyphShape::kFingerprint, false};
}

void drawGlyph(cairo_t* cr, long state, Rgba primary, Rgba secondary, double x, double y,
               double width, double height) {
  GlyphLook look = glyphLookFor(state);
  double size = std::min(width, height);
  double left = x + (width - size) / 2, top = y + (height - size) / 2;
  Rgba color = look.primary ? primary : secondary;
  switch (look.shape) {
    case GlyphShape::kFingerprint: drawFingerprint(cr, left, top, size, color); break;
    case GlyphShape::kFace: drawFace(cr, left, top, size, color); break;
    case GlyphShape::kTick: drawTick(cr, left, top, size, color); break;
  }
}

void drawPasscodeField(cairo_t* cr, long fields, long filled, double x, double y, double width,
                       double height) {
  if (fields <= 0) return;
  constexpr double kDot = 12, kDash = 14, kDashHeight = 2.5;
  double cell = width / static_cast<double>(fields);
  double middle = y + height / 2;
  cairo_save(cr);
  cairo_set_source_rgba(cr, 0.11, 0.11, 0.12, 1);
  for (long i = 0; i < fields; ++i) {
    double centre = x + cell * (static_cast<double>(i) + 0.5);
    if (i < filled) {
      cairo_arc(cr, centre, middle, kDot / 2, 0, 2 * M_PI);
    } else {
      cairo_rectangle(cr, centre - kDash / 2, middle - kDashHeight / 2, kDash, kDashHeight);
    }
    cairo_fill(cr);
  }
  cairo_restore(cr);
}

namespace {

struct BundleImage {
  const char* name;
  double size;  // points
  void (*draw)(cairo_t*, double, double, double, Rgba);
  Rgba color;
};

void drawIcon(cairo_t* cr, double x, double y, double size, Rgba color) {
  cairo_save(cr);
  double r = size * 0.22;
  cairo_new_sub_path(cr);
  cairo_arc(cr, x + size - r, y + r, r, -M_PI / 2, 0);
  cairo_arc(cr, x + size - r, y + size - r, r, 0, M_PI / 2);
  cairo_arc(cr, x + r, y + size - r, r, M_PI / 2, M_PI);
  cairo_arc(cr, x + r, y + r, r, M_PI, 1.5 * M_PI);
  cairo_close_path(cr);
  cairo_set_source_rgba(cr, color.r, color.g, color.b, color.a);
  cairo_fill(cr);
  cairo_restore(cr);
  drawFingerprint(cr, x + size * 0.18, y + size * 0.18, size * 0.64, Rgba{1, 1, 1, 1});
}

constexpr Rgba kWhite{1, 1, 1, 1}, kBlack{0, 0, 0, 1};
constexpr Rgba kGold{0.83, 0.69, 0.22, 1}, kRed{1, 0.23, 0.19, 1};
constexpr Rgba kProductBlue{0.19, 0.35, 0.58, 1};

constexpr BundleImage kBundleImages[] = {
    {"circle-white", 63, drawRing, kWhite},       {"circle-black", 63, drawRing, kBlack},
    {"circle-gold", 63, drawRing, kGold},         {"thumb-white", 43, drawFingerprint, kWhite},
    {"thumb-black", 43, drawFingerprint, kBlack}, {"thumb-red", 43, drawFingerprint, kRed},
    {"Icon", 40, drawIcon, kProductBlue},
};

}  // namespace

std::string bundleImagePng(const std::string& name, double scale) {
  for (const auto& image : kBundleImages) {
    if (name != image.name) continue;
    Canvas canvas(image.size, image.size, scale);
    image.draw(canvas.cr(), 0, 0, image.size, image.color);
    return canvas.pngBytes();
  }
  return "";
}

}  // namespace kv::sim::render
