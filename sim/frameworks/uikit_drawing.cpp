// Drawing into images: UIKit's bitmap image context, strings measured and
// drawn with attributes (NSShadow among them), and Core Image's blur as
// UIKit shows its output. An image made here records what it shows, in words.
#include <cstdio>
#include <string>
#include <vector>

#include "platform/foundation.h"
#include "platform/geometry.h"
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

namespace {

// ---- The image context ----

struct ImageContext {
  CGSize size{};
  double scale = 1;
  std::string drawing;
};

std::vector<ImageContext>& contexts() {
  static auto* stack = new std::vector<ImageContext>();
  return *stack;
}

std::string number(double v) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", v);
  return text;
}

// ---- NSShadow ----

struct ShadowState {
  double blurRadius = 0;
  Retained color;
  CGSize offset{};
};

void shadowSetBlurRadius(id self, SEL, CGFloat radius) {
  stateOf<ShadowState>(self).blurRadius = radius;
}
void shadowSetColor(id self, SEL, id color) {
  stateOf<ShadowState>(self).color.reset(color);
}
void shadowSetOffset(id self, SEL, CGSize offset) {
  stateOf<ShadowState>(self).offset = offset;
}

// ---- Strings with attributes ----

id attribute(id attributes, const char* key) {
  return platform::objectForKey(attributes, key);
}

double fontSizeOf(id attributes) {
  id font = attribute(attributes, "NSFont");
  return font == nullptr ? 12.0 : send<double>(font, Sel("pointSize"));
}

// A system font's glyphs average 0.6 of its size across, its lines 1.2 of
// it high; the shadow does not count.
CGSize stringSize(id self, SEL, id attributes) {
  double size = fontSizeOf(attributes);
  double length = static_cast<double>(platform::toString(self).size());
  return CGSize{length * size * 0.6, size * 1.2};
}

void stringDraw(id self, SEL, CGPoint at, id attributes) {
  if (contexts().empty()) return;
  std::string what = "text " + quoteForLog(platform::toString(self));
  id font = attribute(attributes, "NSFont");
  if (font != nullptr) {
    what += " font " + platform::toString(send<id>(font, Sel("fontName"))) + " " +
            number(send<double>(font, Sel("pointSize")));
  }
  if (id color = attribute(attributes, "NSColor")) what += " color " + colorHexOf(color);
  if (id shadow = attribute(attributes, "NSShadow")) {
    const ShadowState& s = stateOf<ShadowState>(shadow);
    what += " shadow blur " + number(s.blurRadius) + " color " + colorHexOf(s.color.get()) +
            " offset " + number(s.offset.width) + "," + number(s.offset.height);
  }
  what += " at " + number(at.x) + "," + number(at.y);
  std::string& drawing = contexts().back().drawing;
  drawing += (drawing.empty() ? "" : "; ") + what;
}

// ---- Core Image ----

// A simulated CGImage is the UIImage it came from.
CGImageRef imageCGImage(id self, SEL) {
  return reinterpret_cast<CGImageRef>(self);
}

struct CIImageState {
  Retained source;  // the UIImage
  double blurRadius = 0;
};

id ciImageWithCGImage(id cls, SEL, CGImageRef image) {
  if (image == nullptr) return nullptr;
  id ci = autoreleasedNew(cls);
  stateOf<CIImageState>(ci).source.reset(reinterpret_cast<id>(image));
  return ci;
}
CGRect ciImageExtent(id self, SEL) {
  CGSize size = send<CGSize>(stateOf<CIImageState>(self).source.get(), Sel("size"));
  return platform::makeRect(0, 0, size.width, size.height);
}
id ciImageCropped(id self, SEL, CGRect) {
  return self;
}

struct FilterState {
  std::string name;
  Retained input;
  double radius = 10;
};

id filterWithName(id cls, SEL, id name) {
  id filter = autoreleasedNew(cls);
  stateOf<FilterState>(filter).name = platform::toString(name);
  return filter;
}
void filterSetValue(id self, SEL, id value, id key) {
  FilterState& f = stateOf<FilterState>(self);
  std::string k = platform::toString(key);
  if (k == "inputImage") f.input.reset(value);
  if (k == "inputRadius") f.radius = platform::realOf(value).value_or(f.radius);
}
id filterValueForKey(id self, SEL, id key) {
  const FilterState& f = stateOf<FilterState>(self);
  if (platform::toString(key) != "outputImage" || f.name != "CIGaussianBlur" || !f.input) {
    return nullptr;
  }
  id output = autoreleasedNew(platform::asId(platform::classNamed("CIImage")));
  CIImageState& s = stateOf<CIImageState>(output);
  s.source = stateOf<CIImageState>(f.input.get()).source;
  s.blurRadius = f.radius;
  return output;
}

// UIKit shows a Core Image image as its source, with the filter applied.
id imageWithCIImage(id, SEL, id ci) {
  if (ci == nullptr) return nullptr;
  const CIImageState& s = stateOf<CIImageState>(ci);
  id source = s.source.get();
  std::string shows = imageDrawingOf(source);
  if (shows.empty()) shows = "image " + imageNameOf(source);
  if (s.blurRadius > 0) shows = "blurred (radius " + number(s.blurRadius) + ") " + shows;
  return makeImage(send<CGSize>(source, Sel("size")), send<double>(source, Sel("scale")), shows);
}

}  // namespace

void defineUIKitDrawing() {
  ClassBuilder("NSShadow", "NSObject")
      .instance("setShadowBlurRadius:", imp(shadowSetBlurRadius),
                typesOf(shadowSetBlurRadius).c_str())
      .instance("setShadowColor:", imp(shadowSetColor), "v@:@")
      .instance("setShadowOffset:", imp(shadowSetOffset), typesOf(shadowSetOffset).c_str())
      .build();
  Class string = platform::classNamed("NSString");
  class_addMethod(string, Sel("sizeWithAttributes:"), imp(stringSize), typesOf(stringSize).c_str());
  class_addMethod(string, Sel("drawAtPoint:withAttributes:"), imp(stringDraw),
                  typesOf(stringDraw).c_str());
  Class image = platform::classNamed("UIImage");
  class_addMethod(image, Sel("CGImage"), imp(imageCGImage), typesOf(imageCGImage).c_str());
  class_addMethod(platform::metaclassOf(image), Sel("imageWithCIImage:"), imp(imageWithCIImage),
                  "@@:@");
  ClassBuilder("CIImage", "NSObject")
      .classMethod("imageWithCGImage:", imp(ciImageWithCGImage),
                   typesOf(ciImageWithCGImage).c_str())
      .instance("extent", imp(ciImageExtent), typesOf(ciImageExtent).c_str())
      .instance("imageByCroppingToRect:", imp(ciImageCropped), typesOf(ciImageCropped).c_str())
      .build();
  ClassBuilder("CIFilter", "NSObject")
      .classMethod("filterWithName:", imp(filterWithName), "@@:@")
      .instance("setValue:forKey:", imp(filterSetValue), "v@:@@")
      .instance("valueForKey:", imp(filterValueForKey), "@@:@")
      .build();
}

}  // namespace kv::sim::frameworks

extern "C" {

void UIGraphicsBeginImageContextWithOptions(CGSize size, BOOL, CGFloat scale) {
  kv::sim::frameworks::contexts().push_back({size, scale, ""});
}

id UIGraphicsGetImageFromCurrentImageContext(void) {
  auto& stack = kv::sim::frameworks::contexts();
  if (stack.empty()) return nullptr;
  const auto& c = stack.back();
  return kv::sim::frameworks::makeImage(c.size, c.scale, c.drawing);
}

void UIGraphicsEndImageContext(void) {
  auto& stack = kv::sim::frameworks::contexts();
  if (!stack.empty()) stack.pop_back();
}

}  // extern "C"
