// What views draw with: UIColor, UIFont and UIImage, read from image files
// on the device.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/classes.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendSuper;

namespace {

// ---- UIColor ----

struct ColorState {
  double r = 0, g = 0, b = 0, a = 1;
};

id colorWithRGBA(id cls, SEL, double r, double g, double b, double a) {
  id color = autoreleasedNew(cls);
  stateOf<ColorState>(color) = ColorState{r, g, b, a};
  return color;
}
id colorWithWhite(id cls, SEL cmd, double white, double alpha) {
  return colorWithRGBA(cls, cmd, white, white, white, alpha);
}
template <int R, int G, int B, int A>
id namedColor(id cls, SEL cmd) {
  return colorWithRGBA(cls, cmd, R / 3.0, G / 3.0, B / 3.0, A);
}
BOOL colorGetRGBA(id self, SEL, double* r, double* g, double* b, double* a) {
  const ColorState& c = stateOf<ColorState>(self);
  if (r) *r = c.r;
  if (g) *g = c.g;
  if (b) *b = c.b;
  if (a) *a = c.a;
  return 1;
}
id colorWithAlpha(id self, SEL cmd, double alpha) {
  const ColorState c = stateOf<ColorState>(self);
  return colorWithRGBA(platform::asId(object_getClass(self)), cmd, c.r, c.g, c.b, alpha);
}
BOOL colorIsEqual(id self, SEL, id other) {
  if (!platform::isKindOf(other, "UIColor")) return 0;
  const ColorState& a = stateOf<ColorState>(self);
  const ColorState& b = stateOf<ColorState>(other);
  return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a ? 1 : 0;
}

// ---- UIFont ----

struct FontState {
  std::string name = "System";
  double size = 17;
};
id fontNamed(id cls, const std::string& name, double size) {
  id font = autoreleasedNew(cls);
  stateOf<FontState>(font) = FontState{name, size};
  return font;
}
id systemFont(id cls, SEL, double size) {
  return fontNamed(cls, ".SFUIText", size);
}
id boldSystemFont(id cls, SEL, double size) {
  return fontNamed(cls, ".SFUIText-Semibold", size);
}
id fontWithNameSize(id cls, SEL, id name, double size) {
  return fontNamed(cls, platform::toString(name), size);
}
double fontSize(id self, SEL) {
  return stateOf<FontState>(self).size;
}
id fontName(id self, SEL) {
  return platform::makeString(stateOf<FontState>(self).name);
}

// ---- UIImage ----

struct ImageState {
  std::string name;  // "circle-white"
  std::string path;  // the device path read
  CGSize size{};
  double scale = 1;
  std::string drawing;  // what an image made in the simulator shows ("" for a file's)
};

bool fileExists(const std::string& path) {
  id manager =
      platform::sendClass<id>(platform::classNamed("NSFileManager"), Sel("defaultManager"));
  return send<BOOL>(manager, Sel("fileExistsAtPath:"), platform::makeString(path)) != 0;
}

// The image's name: the file name without directory, scale suffix or extension.
std::string imageName(const std::string& path) {
  std::string name = path.substr(path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1);
  if (auto dot = name.rfind('.'); dot != std::string::npos && dot > 0) name.resize(dot);
  for (const char* suffix : {"@2x", "@3x"}) {
    if (name.size() > 3 && name.compare(name.size() - 3, 3, suffix) == 0)
      name.resize(name.size() - 3);
  }
  return name;
}

// Reads an image file: a PNG (its size from the header) or a JPEG; nil for
// a missing file or anything else.
id imageFromFile(id cls, const std::string& path) {
  if (path.empty() || !fileExists(path)) return nullptr;
  id data = platform::sendClass<id>(platform::classNamed("NSData"), Sel("dataWithContentsOfFile:"),
                                    platform::makeString(path));
  auto length = send<platform::UInteger>(data, Sel("length"));
  const auto* bytes = static_cast<const unsigned char*>(send<const void*>(data, Sel("bytes")));
  static constexpr unsigned char kPngSignature[] = {0x89, 'P', 'N', 'G', 0x0d, 0x0a, 0x1a, 0x0a};
  bool png = length >= 24 && std::memcmp(bytes, kPngSignature, sizeof kPngSignature) == 0;
  bool jpeg = length >= 3 && bytes[0] == 0xff && bytes[1] == 0xd8;
  if (!png && !jpeg) return nullptr;
  id image = autoreleasedNew(cls);
  ImageState& s = stateOf<ImageState>(image);
  s.path = path;
  s.name = imageName(path);
  s.scale = path.find("@3x.") != std::string::npos   ? 3
            : path.find("@2x.") != std::string::npos ? 2
                                                     : 1;
  if (png) {
    auto be32 = [&](size_t at) {
      return (uint32_t{bytes[at]} << 24) | (uint32_t{bytes[at + 1]} << 16) |
             (uint32_t{bytes[at + 2]} << 8) | uint32_t{bytes[at + 3]};
    };
    s.size = CGSize{be32(16) / s.scale, be32(20) / s.scale};
  }
  return image;
}

// Looks a named image up in a directory the way UIKit does on a 2x screen.
id imageNamedIn(id cls, const std::string& directory, const std::string& name) {
  std::string base = directory.empty() ? name : directory + "/" + name;
  bool hasExtension = name.find('.') != std::string::npos;
  for (const std::string& candidate :
       {hasExtension ? base : std::string(), base + "@2x.png", base + ".png", base + "@3x.png"}) {
    if (candidate.empty() || !fileExists(candidate)) continue;
    if (id image = imageFromFile(cls, candidate)) return image;
  }
  return nullptr;
}

id bundleDirectory(id bundle) {
  if (bundle == nullptr) {
    bundle = platform::sendClass<id>(platform::classNamed("NSBundle"), Sel("mainBundle"));
  }
  return send<id>(bundle, Sel("bundlePath"));
}

id imageNamedInBundle(id cls, SEL, id name, id bundle, id) {
  std::string n = platform::toString(name);
  if (n.empty()) return nullptr;
  return imageNamedIn(cls, n[0] == '/' ? "" : platform::toString(bundleDirectory(bundle)), n);
}
id imageNamed(id cls, SEL cmd, id name) {
  return imageNamedInBundle(cls, cmd, name, nullptr, nullptr);
}
id imageWithContentsOfFile(id cls, SEL, id path) {
  return imageFromFile(cls, platform::toString(path));
}
CGSize imageSize(id self, SEL) {
  return stateOf<ImageState>(self).size;
}
double imageScale(id self, SEL) {
  return stateOf<ImageState>(self).scale;
}

}  // namespace

void defineUIKitGraphics() {
  ClassBuilder("UIColor", "NSObject")
      .classMethod("colorWithRed:green:blue:alpha:", imp(colorWithRGBA), "@@:dddd")
      .classMethod("colorWithWhite:alpha:", imp(colorWithWhite), "@@:dd")
      .classMethod("whiteColor", imp(namedColor<3, 3, 3, 1>), "@@:")
      .classMethod("blackColor", imp(namedColor<0, 0, 0, 1>), "@@:")
      .classMethod("darkGrayColor", imp(namedColor<1, 1, 1, 1>), "@@:")
      .classMethod("lightGrayColor", imp(namedColor<2, 2, 2, 1>), "@@:")
      .classMethod("clearColor", imp(namedColor<0, 0, 0, 0>), "@@:")
      .classMethod("redColor", imp(namedColor<3, 0, 0, 1>), "@@:")
      .classMethod("greenColor", imp(namedColor<0, 3, 0, 1>), "@@:")
      .classMethod("blueColor", imp(namedColor<0, 0, 3, 1>), "@@:")
      .instance("getRed:green:blue:alpha:", imp(colorGetRGBA), "C@:^d^d^d^d")
      .instance("colorWithAlphaComponent:", imp(colorWithAlpha), "@@:d")
      .instance("isEqual:", imp(colorIsEqual), "C@:@")
      .build();
  ClassBuilder("UIFont", "NSObject")
      .classMethod("systemFontOfSize:", imp(systemFont), "@@:d")
      .classMethod("boldSystemFontOfSize:", imp(boldSystemFont), "@@:d")
      .classMethod("fontWithName:size:", imp(fontWithNameSize), "@@:@d")
      .instance("pointSize", imp(fontSize), "d@:")
      .instance("fontName", imp(fontName), "@@:")
      .build();
  ClassBuilder("UIImage", "NSObject")
      .classMethod("imageNamed:", imp(imageNamed), "@@:@")
      .classMethod("imageNamed:inBundle:compatibleWithTraitCollection:", imp(imageNamedInBundle),
                   "@@:@@@")
      .classMethod("imageWithContentsOfFile:", imp(imageWithContentsOfFile), "@@:@")
      .instance("size", imp(imageSize), typesOf(imageSize).c_str())
      .instance("scale", imp(imageScale), "d@:")
      .build();
}

id makeImage(CGSize size, double scale, const std::string& drawing) {
  id image = autoreleasedNew(platform::asId(platform::classNamed("UIImage")));
  ImageState& s = stateOf<ImageState>(image);
  s.size = size;
  s.scale = scale;
  s.drawing = drawing;
  return image;
}
std::string imageDrawingOf(id image) {
  return image == nullptr ? "" : stateOf<ImageState>(image).drawing;
}

std::string imageNameOf(id image) {
  return image == nullptr ? "" : stateOf<ImageState>(image).name;
}
std::string imagePathOf(id image) {
  return image == nullptr ? "" : stateOf<ImageState>(image).path;
}

std::string colorHexOf(id color) {
  if (color == nullptr) return "";
  const ColorState& c = stateOf<ColorState>(color);
  char hex[8];
  auto byte = [](double v) {
    return static_cast<unsigned>(std::lround(std::clamp(v, 0.0, 1.0) * 255));
  };
  std::snprintf(hex, sizeof hex, "%02x%02x%02x", byte(c.r), byte(c.g), byte(c.b));
  return hex;
}

}  // namespace kv::sim::frameworks
