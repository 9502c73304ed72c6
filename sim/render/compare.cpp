// Pixel comparison of two pictures.
#include "sim/render/compare.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>

#include "sim/render/canvas.h"

namespace kv::sim::render {

namespace {

struct Pixels {
  const unsigned char* data;
  int width, height, stride;
  explicit Pixels(cairo_surface_t* s) {
    cairo_surface_flush(s);
    data = cairo_image_surface_get_data(s);
    width = cairo_image_surface_get_width(s);
    height = cairo_image_surface_get_height(s);
    stride = cairo_image_surface_get_stride(s);
  }
  uint32_t at(int x, int y) const {
    return *reinterpret_cast<const uint32_t*>(data + static_cast<ptrdiff_t>(y) * stride + x * 4);
  }
};

// True when some channel (alpha or colour) of the two differs too much.
bool differs(uint32_t a, uint32_t b) {
  for (int shift = 0; shift < 32; shift += 8) {
    int ca = static_cast<int>((a >> shift) & 0xff), cb = static_cast<int>((b >> shift) & 0xff);
    if (std::abs(ca - cb) > kChannelTolerance) return true;
  }
  return false;
}

void forEachDifference(const Pixels& a, const Pixels& b, const std::function<void(int, int)>& f) {
  for (int y = 0; y < a.height; ++y) {
    for (int x = 0; x < a.width; ++x) {
      if (differs(a.at(x, y), b.at(x, y))) f(x, y);
    }
  }
}

}  // namespace

std::string Difference::describe() const {
  if (!sameSize) return "the pictures' sizes differ";
  if (pixels == 0) return "no pixel differs";
  return std::to_string(pixels) + " pixels differ, in x " + std::to_string(left) + ".." +
         std::to_string(right) + ", y " + std::to_string(top) + ".." + std::to_string(bottom);
}

Difference compareSurfaces(cairo_surface_t* picture, cairo_surface_t* reference) {
  Pixels a(picture), b(reference);
  Difference d;
  if (a.width != b.width || a.height != b.height) {
    d.sameSize = false;
    return d;
  }
  d.left = a.width, d.top = a.height;
  forEachDifference(a, b, [&d](int x, int y) {
    ++d.pixels;
    d.left = std::min(d.left, x), d.right = std::max(d.right, x);
    d.top = std::min(d.top, y), d.bottom = std::max(d.bottom, y);
  });
  if (d.pixels == 0) d.left = d.top = 0;
  return d;
}

bool writeDifference(cairo_surface_t* picture, cairo_surface_t* reference, const std::string& path,
                     std::string* error) {
  Pixels a(picture), b(reference);
  if (a.width != b.width || a.height != b.height) {
    *error = "the pictures' sizes differ";
    return false;
  }
  Canvas out(a.width, a.height, 1);
  cairo_t* cr = out.cr();
  cairo_set_source_rgb(cr, 1, 1, 1);
  cairo_paint(cr);
  cairo_set_source_surface(cr, reference, 0, 0);
  cairo_paint_with_alpha(cr, 0.3);
  cairo_set_source_rgb(cr, 1, 0, 0);
  forEachDifference(a, b, [cr](int x, int y) { cairo_rectangle(cr, x, y, 1, 1); });
  cairo_fill(cr);
  return out.writePng(path, error);
}

}  // namespace kv::sim::render
