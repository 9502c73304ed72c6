// A picture being drawn: a cairo image surface in points at a scale, with
// its drawing context, written to and read from PNG files.
#pragma once

#include <cairo.h>

#include <memory>
#include <optional>
#include <string>

namespace kv::sim::render {

// Owns a cairo image surface (ARGB, premultiplied) and its context, whose
// user space is in points.
class Canvas {
 public:
  Canvas(double width, double height, double scale);
  ~Canvas();
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;
  Canvas(Canvas&& other) noexcept;

  cairo_t* cr() const { return cr_; }
  cairo_surface_t* surface() const { return surface_; }
  double width() const { return width_; }    // points
  double height() const { return height_; }  // points
  double scale() const { return scale_; }
  int pixelWidth() const;
  int pixelHeight() const;

  // Writes the picture as a PNG file; false with *error when it cannot.
  bool writePng(const std::string& path, std::string* error) const;
  // The picture as the bytes of a PNG file.
  std::string pngBytes() const;

 private:
  double width_, height_, scale_;
  cairo_surface_t* surface_;
  cairo_t* cr_;
};

// An image surface read from a PNG file, released when it goes.
struct SurfaceDeleter {
  void operator()(cairo_surface_t* s) const { cairo_surface_destroy(s); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;

// Reads a PNG file; nullopt with *error when it is missing or no PNG.
std::optional<Surface> readPng(const std::string& path, std::string* error);

}  // namespace kv::sim::render
