// The walk over captured views.
#include "sim/render/painter.h"

#include <cmath>
#include <filesystem>

#include "sim/render/art.h"
#include "sim/render/blur.h"
#include "sim/render/scene.h"
#include "sim/render/text.h"

namespace kv::sim::render {

using platform::Value;

namespace {

Rgba rgbaOf(const Value& v, Rgba fallback = {}) {
  const auto& c = v.asArray();
  if (c.size() != 4) return fallback;
  return Rgba{c[0].asReal(), c[1].asReal(), c[2].asReal(), c[3].asReal()};
}

// A rectangle with corners rounded by `radius` (clamped to half a side).
void roundedRect(cairo_t* cr, double w, double h, double radius) {
  double r = std::min({radius, w / 2, h / 2});
  if (r <= 0) {
    cairo_rectangle(cr, 0, 0, w, h);
    return;
  }
  cairo_new_sub_path(cr);
  cairo_arc(cr, w - r, r, r, -M_PI / 2, 0);
  cairo_arc(cr, w - r, h - r, r, 0, M_PI / 2);
  cairo_arc(cr, r, h - r, r, M_PI / 2, M_PI);
  cairo_arc(cr, r, r, r, M_PI, 1.5 * M_PI);
  cairo_close_path(cr);
}

// The sharpest file of an image for this scale: "name@2x.png" beside
// "name.png" on a 2x screen, as UIKit looks for it.
std::string sharpestFile(const std::string& path, double scale) {
  auto dot = path.rfind('.');
  if (dot == std::string::npos || path.find('@') != std::string::npos) return path;
  for (int s = static_cast<int>(std::ceil(scale)); s >= 2; --s) {
    std::string candidate = path.substr(0, dot) + "@" + std::to_string(s) + "x" + path.substr(dot);
    if (std::filesystem::exists(candidate)) return candidate;
  }
  return path;
}

void paintImage(Canvas& canvas, const std::string& devicePath, double w, double h,
                const PathMap& paths) {
  std::string file = paths(devicePath);
  if (file.empty()) return;
  std::string error;
  auto read = readPng(sharpestFile(file, canvas.scale()), &error);
  if (!read) return;  // as UIKit shows no image for a file it cannot read
  cairo_surface_t* image = read->get();
  int iw = cairo_image_surface_get_width(image), ih = cairo_image_surface_get_height(image);
  if (iw == 0 || ih == 0) return;
  cairo_t* cr = canvas.cr();
  cairo_save(cr);
  cairo_rectangle(cr, 0, 0, w, h);
  cairo_clip(cr);
  cairo_scale(cr, w / iw, h / ih);  // UIKit's default: scaled to fill
  cairo_set_source_surface(cr, image, 0, 0);
  cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
  cairo_pattern_set_extend(cairo_get_source(cr), CAIRO_EXTEND_PAD);  // edges stay sharp
  cairo_paint(cr);
  cairo_restore(cr);
}

void paintText(cairo_t* cr, const Value& text, double w, double h) {
  TextStyle style;
  style.size = text[key::kSize].asReal(17);
  style.weight = weightNamed(text[key::kWeight].asString());
  Rgba c = rgbaOf(text[key::kColor], Rgba{0, 0, 0, 1});
  style.color[0] = c.r, style.color[1] = c.g, style.color[2] = c.b, style.color[3] = c.a;
  style.align = static_cast<int>(text[key::kAlign].asInteger());
  style.lines = static_cast<int>(text[key::kLines].asInteger(1));
  drawText(cr, text[key::kString].asString(), style, 0, 0, w, h);
}

// What the node's kind draws of its own, in its bounds.
void paintOwn(Canvas& canvas, const Value& node, double w, double h, const PathMap& paths) {
  cairo_t* cr = canvas.cr();
  if (const Value& text = node[key::kText]; !text.isNone()) paintText(cr, text, w, h);
  if (const Value& image = node[key::kImage]; !image.isNone()) {
    paintImage(canvas, image.asString(), w, h, paths);
  }
  if (const Value& glyph = node[key::kGlyph]; !glyph.isNone()) {
    drawGlyph(cr, glyph[key::kState].asInteger(), rgbaOf(glyph[key::kPrimary]),
              rgbaOf(glyph[key::kSecondary]), 0, 0, w, h);
  }
  if (const Value& field = node[key::kPasscode]; !field.isNone()) {
    drawPasscodeField(cr, field[key::kFields].asInteger(), field[key::kFilled].asInteger(), 0, 0, w,
                      h);
  }
}

}  // namespace

void paintNode(Canvas& canvas, const Value& node, const PathMap& paths) {
  const auto& frame = node[key::kFrame].asArray();
  if (frame.size() != 4) return;
  double x = frame[0].asReal(), y = frame[1].asReal();
  double w = frame[2].asReal(), h = frame[3].asReal();
  double alpha = node[key::kAlpha].asReal(1);
  double corner = node[key::kCorner].asReal(0);
  cairo_t* cr = canvas.cr();
  cairo_save(cr);

  // A view turns about its centre; its frame gives the centre and its size.
  cairo_translate(cr, x + w / 2, y + h / 2);
  if (const auto& t = node[key::kTransform].asArray(); t.size() == 6) {
    cairo_matrix_t m;
    cairo_matrix_init(&m, t[0].asReal(), t[1].asReal(), t[2].asReal(), t[3].asReal(), t[4].asReal(),
                      t[5].asReal());
    cairo_transform(cr, &m);
  }
  cairo_translate(cr, -w / 2, -h / 2);
  bool group = alpha < 1;
  if (group) cairo_push_group(cr);

  if (const Value& blur = node[key::kBlur]; !blur.isNone()) {
    roundedRect(cr, w, h, corner);
    fillWithBlur(cr, canvas.surface(), blur[key::kStyle].asInteger());
  }
  if (const Value& background = node[key::kBackground]; !background.isNone()) {
    Rgba c = rgbaOf(background);
    roundedRect(cr, w, h, corner);
    cairo_set_source_rgba(cr, c.r, c.g, c.b, c.a);
    cairo_fill(cr);
  }
  if (node[key::kClips].asBool()) {
    roundedRect(cr, w, h, corner);
    cairo_clip(cr);
  }
  paintOwn(canvas, node, w, h, paths);

  // Subviews stand in the bounds' coordinates.
  if (const auto& b = node[key::kBounds].asArray(); b.size() == 2) {
    cairo_translate(cr, -b[0].asReal(), -b[1].asReal());
  }
  for (const Value& child : node[key::kChildren].asArray()) paintNode(canvas, child, paths);

  if (group) {
    cairo_pop_group_to_source(cr);
    cairo_paint_with_alpha(cr, alpha);
  }
  cairo_restore(cr);
}

}  // namespace kv::sim::render
