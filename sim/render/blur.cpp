// Three box blurs in a row, close to a Gaussian, over a copy of the pixels
// under a path.
#include "sim/render/blur.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "sim/render/canvas.h"

namespace kv::sim::render {

namespace {

constexpr double kRadius = 20;  // points, as the system's material blurs
constexpr int kPasses = 3;

struct Tint {
  long style;
  double white, alpha;
};
constexpr Tint kTints[] = {
    {0, 0.97, 0.82},  // extra light
    {1, 1.0, 0.45},   // light
    {2, 0.11, 0.72},  // dark
};
constexpr Tint kDefaultTint = {-1, 1.0, 0.45};

// One pass over rows (or, with the strides swapped, columns) of ARGB pixels:
// each channel becomes the mean of the 2r+1 pixels around it, the edges
// repeated.
void boxPass(std::vector<uint32_t>& pixels, int count, int length, int step, int stride, int r) {
  std::vector<uint32_t> line(static_cast<size_t>(length));
  for (int n = 0; n < count; ++n) {
    uint32_t* base = pixels.data() + static_cast<ptrdiff_t>(n) * stride;
    for (int i = 0; i < length; ++i) line[static_cast<size_t>(i)] = base[i * step];
    for (int shift = 0; shift < 32; shift += 8) {
      auto at = [&](int i) {
        return static_cast<int>((line[static_cast<size_t>(std::clamp(i, 0, length - 1))] >> shift) &
                                0xff);
      };
      int sum = 0;
      for (int i = -r; i <= r; ++i) sum += at(i);
      for (int i = 0; i < length; ++i) {
        uint32_t mean = static_cast<uint32_t>(sum / (2 * r + 1));
        base[i * step] = (base[i * step] & ~(0xffu << shift)) | (mean << shift);
        sum += at(i + r + 1) - at(i - r);
      }
    }
  }
}

}  // namespace

void fillWithBlur(cairo_t* cr, cairo_surface_t* beneath, long style) {
  double x1, y1, x2, y2;
  cairo_save(cr);
  cairo_identity_matrix(cr);
  cairo_path_extents(cr, &x1, &y1, &x2, &y2);
  cairo_restore(cr);
  cairo_surface_flush(beneath);
  int width = cairo_image_surface_get_width(beneath);
  int height = cairo_image_surface_get_height(beneath);
  int left = std::max(0, static_cast<int>(std::floor(x1)));
  int top = std::max(0, static_cast<int>(std::floor(y1)));
  int w = std::min(width, static_cast<int>(std::ceil(x2))) - left;
  int h = std::min(height, static_cast<int>(std::ceil(y2))) - top;
  const Tint* tint = &kDefaultTint;
  for (const auto& t : kTints) {
    if (t.style == style) tint = &t;
  }
  if (w > 0 && h > 0) {
    // The pixels under the path, blurred.
    std::vector<uint32_t> pixels(static_cast<size_t>(w) * static_cast<size_t>(h));
    const unsigned char* data = cairo_image_surface_get_data(beneath);
    int stride = cairo_image_surface_get_stride(beneath);
    for (int row = 0; row < h; ++row) {
      std::memcpy(pixels.data() + static_cast<size_t>(row) * static_cast<size_t>(w),
                  data + static_cast<ptrdiff_t>(row + top) * stride + left * 4,
                  static_cast<size_t>(w) * 4);
    }
    double scale = 1, unused = 0;
    cairo_user_to_device_distance(cr, &scale, &unused);
    int r = std::max(1, static_cast<int>(std::lround(kRadius * std::abs(scale) / kPasses)));
    for (int pass = 0; pass < kPasses; ++pass) {
      boxPass(pixels, h, w, 1, w, r);
      boxPass(pixels, w, h, w, 1, r);
    }
    Surface blurred(cairo_image_surface_create_for_data(
        reinterpret_cast<unsigned char*>(pixels.data()), CAIRO_FORMAT_ARGB32, w, h, w * 4));
    cairo_save(cr);
    cairo_identity_matrix(cr);
    cairo_set_source_surface(cr, blurred.get(), left, top);
    cairo_fill_preserve(cr);
    cairo_restore(cr);
  }
  cairo_set_source_rgba(cr, tint->white, tint->white, tint->white, tint->alpha);
  cairo_fill(cr);
}

}  // namespace kv::sim::render
