// Compares a picture with a reference picture, within a tolerance that lets
// a few edge pixels differ but not a moved, recoloured or missing part.
#pragma once

#include <cairo.h>

#include <string>

namespace kv::sim::render {

// A pixel differs when one of its channels differs by more than this.
constexpr int kChannelTolerance = 40;
// Pictures match when no more pixels than this differ.
constexpr long kPixelTolerance = 24;

struct Difference {
  bool sameSize = true;
  long pixels = 0;        // pixels that differ
  int left = 0, top = 0;  // the box around them, in pixels
  int right = 0, bottom = 0;

  bool matches() const { return sameSize && pixels <= kPixelTolerance; }
  // "812 pixels differ, in x 208..334, y 100..226" or "sizes differ: ...".
  std::string describe() const;
};

// Compares two image surfaces pixel by pixel.
Difference compareSurfaces(cairo_surface_t* picture, cairo_surface_t* reference);

// Writes a picture of where they differ: the reference faded, differing
// pixels in red. False with *error when it cannot.
bool writeDifference(cairo_surface_t* picture, cairo_surface_t* reference, const std::string& path,
                     std::string* error);

}  // namespace kv::sim::render
