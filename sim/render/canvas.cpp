// A cairo picture in points, and PNG files.
#include "sim/render/canvas.h"

#include <cmath>
#include <utility>

namespace kv::sim::render {

Canvas::Canvas(double width, double height, double scale)
    : width_(width), height_(height), scale_(scale) {
  surface_ =
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(std::lround(width * scale)),
                                 static_cast<int>(std::lround(height * scale)));
  cr_ = cairo_create(surface_);
  cairo_scale(cr_, scale, scale);
}

Canvas::~Canvas() {
  if (cr_ != nullptr) cairo_destroy(cr_);
  if (surface_ != nullptr) cairo_surface_destroy(surface_);
}

Canvas::Canvas(Canvas&& other) noexcept
    : width_(other.width_),
      height_(other.height_),
      scale_(other.scale_),
      surface_(std::exchange(other.surface_, nullptr)),
      cr_(std::exchange(other.cr_, nullptr)) {}

int Canvas::pixelWidth() const {
  return cairo_image_surface_get_width(surface_);
}
int Canvas::pixelHeight() const {
  return cairo_image_surface_get_height(surface_);
}

bool Canvas::writePng(const std::string& path, std::string* error) const {
  cairo_surface_flush(surface_);
  cairo_status_t status = cairo_surface_write_to_png(surface_, path.c_str());
  if (status == CAIRO_STATUS_SUCCESS) return true;
  *error = "cannot write " + path + ": " + cairo_status_to_string(status);
  return false;
}

std::string Canvas::pngBytes() const {
  std::string out;
  cairo_surface_flush(surface_);
  cairo_surface_write_to_png_stream(
      surface_,
      [](void* closure, const unsigned char* data, unsigned int length) {
        static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
        return CAIRO_STATUS_SUCCESS;
      },
      &out);
  return out;
}

std::optional<Surface> readPng(const std::string& path, std::string* error) {
  Surface surface(cairo_image_surface_create_from_png(path.c_str()));
  cairo_status_t status = cairo_surface_status(surface.get());
  if (status == CAIRO_STATUS_SUCCESS) return surface;
  *error = "cannot read " + path + ": " + cairo_status_to_string(status);
  return std::nullopt;
}

}  // namespace kv::sim::render
