// Shapes the pictures draw that no view is made of: the fingerprint, the
// face, the success tick, the ring, passcode dots, and the settings
// bundle's images drawn from them.
#pragma once

#include <cairo.h>

#include <string>

namespace kv::sim::render {

struct Rgba {
  double r = 0, g = 0, b = 0, a = 1;
};

// Each shape fills the square of side `size` at (x, y) in the current
// user space, in one colour.
void drawFingerprint(cairo_t* cr, double x, double y, double size, Rgba color);
void drawFace(cairo_t* cr, double x, double y, double size, Rgba color);
void drawTick(cairo_t* cr, double x, double y, double size, Rgba color);
void drawRing(cairo_t* cr, double x, double y, double size, Rgba color);

// What PassKit's glyph shows in a state: the fingerprint or the face, lit
// (primary colour) while it scans, the tick when it succeeded, else dim
// (secondary colour).
enum class GlyphShape { kFingerprint, kFace, kTick };
struct GlyphLook {
  GlyphShape shape;
  bool primary;
};
GlyphLook glyphLookFor(long state);

// The glyph of `state` in the box (x, y, width, height).
void drawGlyph(cairo_t* cr, long state, Rgba primary, Rgba secondary, double x, double y,
               double width, double height);

// A passcode field of `fields` entry fields, `filled` of them typed: a dot
// for each typed one, a dash for each free one, in the box given.
void drawPasscodeField(cairo_t* cr, long fields, long filled, double x, double y, double width,
                       double height);

// The PNG bytes of the settings bundle's image `name` ("circle-gold",
// "thumb-red", "Icon", ...) at `scale`; "" for a name it does not have.
std::string bundleImagePng(const std::string& name, double scale);

}  // namespace kv::sim::render
