// PassKit's biometric glyph: PKGlyphView and the PKFingerprintGlyphView it
// draws with, their states and colours, and animated state changes that
// finish after the view's own minimum transition time on the virtual clock.
//
// The completion handler of setState:animated:completionHandler: is a
// void (^)(void) block, as in PassKit: it runs at once for a change without
// animation, and after -_minimumAnimationDurationForStateTransition seconds
// (asked of the view by a message, so that a replacement of that method
// counts) for an animated one.
#include <iterator>

#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"
#include "sim/host/run_loop.h"

namespace kv::sim::host {
// Tells every image-added callback of this process that an image came.
void announceImageAdded();
}  // namespace kv::sim::host

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendSuper;

namespace {

constexpr double kMinimumTransition = 0.5;  // seconds, the platform's own

// The glyph's colours by style, as red, green, blue (alpha 1). The mode
// changes nothing here.
struct StyleColors {
  double primary[3];
  double secondary[3];
};
constexpr StyleColors kStyleColors[] = {
    {{0.0, 0.478, 1.0}, {0.557, 0.557, 0.576}},  // 0: on light material
    {{0.2, 0.2, 0.2}, {0.6, 0.6, 0.6}},          // 1: the alert's own
    {{1.0, 1.0, 1.0}, {0.75, 0.75, 0.75}},       // 2: on dark material
    {{0.0, 0.0, 0.0}, {0.4, 0.4, 0.4}},          // 3: monochrome
};

const StyleColors& colorsFor(Integer style) {
  bool known = style >= 0 && static_cast<size_t>(style) < std::size(kStyleColors);
  return kStyleColors[known ? static_cast<size_t>(style) : 0];
}

id makeColor(const double (&rgb)[3]) {
  return platform::sendClass<id>(platform::classNamed("UIColor"),
                                 Sel("colorWithRed:green:blue:alpha:"), rgb[0], rgb[1], rgb[2],
                                 1.0);
}

struct GlyphState {
  Integer style = 0;
  Integer state = 0;
  Retained primary, secondary;
  Retained fingerprint;  // PKGlyphView's drawing view
};
GlyphState& glyph(id v) {
  return stateOf<GlyphState>(v);
}

id primaryForStyle(id, SEL, Integer style, Integer) {
  return makeColor(colorsFor(style).primary);
}
id secondaryForStyle(id, SEL, Integer style, Integer) {
  return makeColor(colorsFor(style).secondary);
}

// Takes the style's colours from the glyph itself, so that replacements count.
void applyStyle(id self, Integer style) {
  glyph(self).style = style;
  send<void>(self, Sel("_setPrimaryColor:animated:"),
             send<id>(self, Sel("_primaryColorForStyle:mode:"), style, Integer{0}), BOOL{0});
  send<void>(self, Sel("_setSecondaryColor:animated:"),
             send<id>(self, Sel("_secondaryColorForStyle:mode:"), style, Integer{0}), BOOL{0});
}

id fingerprintInitWithFrame(id self, SEL cmd, CGRect frame) {
  self = sendSuper<id>(platform::classNamed("UIView"), self, cmd, frame);
  if (self != nullptr) applyStyle(self, 0);
  return self;
}

id glyphInitWithFrame(id self, SEL cmd, CGRect frame) {
  self = fingerprintInitWithFrame(self, cmd, frame);
  if (self == nullptr) return nullptr;
  Retained drawing = Retained::adopt(newView("PKFingerprintGlyphView", frame));
  send<void>(self, Sel("addSubview:"), drawing.get());
  glyph(self).fingerprint = std::move(drawing);
  return self;
}

id glyphInitWithStyle(id self, SEL, Integer style) {
  self = send<id>(self, Sel("initWithFrame:"), CGRect{});
  if (self != nullptr) applyStyle(self, style);
  return self;
}

// The drawing inside a PKGlyphView, as key-value coding finds its
// _fingerprintView on a device.
id fingerprintViewOf(id self, SEL) {
  return glyph(self).fingerprint.get();
}

Integer glyphStyle(id self, SEL) {
  return glyph(self).style;
}
Integer glyphStateOf(id self, SEL) {
  return glyph(self).state;
}

void setStateAnimated(id self, SEL, Integer state, BOOL animated, id completion) {
  glyph(self).state = state;
  host::logEvent("glyph", "state " + std::to_string(state) + (animated ? " animated" : ""));
  noteViewChanged(self);
  if (completion == nullptr) return;
  if (!animated) {
    platform::callBlock<void()>(completion);
    return;
  }
  double duration = send<double>(self, Sel("_minimumAnimationDurationForStateTransition"));
  id copied = platform::copyBlock(completion);
  Retained keep(self);
  host::scheduleAfter(duration, [keep, copied] {
    platform::callBlock<void()>(copied);
    platform::releaseBlock(copied);
  });
}
void setState(id self, SEL, Integer state) {
  send<void>(self, Sel("setState:animated:completionHandler:"), state, BOOL{0}, id{nullptr});
}

// PKGlyphView's transitions last as long as its fingerprint drawing needs.
double glyphMinimumDuration(id self, SEL) {
  id drawing = glyph(self).fingerprint.get();
  if (drawing == nullptr) return kMinimumTransition;
  return send<double>(drawing, Sel("_minimumAnimationDurationForStateTransition"));
}
double fingerprintMinimumDuration(id, SEL) {
  return kMinimumTransition;
}

id primaryColor(id self, SEL) {
  return glyph(self).primary.get();
}
id secondaryColor(id self, SEL) {
  return glyph(self).secondary.get();
}
void setPrimaryColorAnimated(id self, SEL, id color, BOOL) {
  glyph(self).primary.reset(color);
  noteViewChanged(self);
}
void setSecondaryColorAnimated(id self, SEL, id color, BOOL) {
  glyph(self).secondary.reset(color);
  noteViewChanged(self);
}
void setPrimaryColor(id self, SEL, id color) {
  send<void>(self, Sel("_setPrimaryColor:animated:"), color, BOOL{0});
}
void setSecondaryColor(id self, SEL, id color) {
  send<void>(self, Sel("_setSecondaryColor:animated:"), color, BOOL{0});
}

// The methods both glyph classes have.
ClassBuilder& addGlyphMethods(ClassBuilder& cls) {
  return cls
      .instance("initWithStyle:", imp(glyphInitWithStyle), typesOf(glyphInitWithStyle).c_str())
      .instance("style", imp(glyphStyle), typesOf(glyphStyle).c_str())
      .instance("state", imp(glyphStateOf), typesOf(glyphStateOf).c_str())
      .instance("setState:", imp(setState), typesOf(setState).c_str())
      .instance("setState:animated:completionHandler:", imp(setStateAnimated), "v@:lC@?")
      .instance("primaryColor", imp(primaryColor), "@@:")
      .instance("secondaryColor", imp(secondaryColor), "@@:")
      .instance("setPrimaryColor:", imp(setPrimaryColor), "v@:@")
      .instance("setSecondaryColor:", imp(setSecondaryColor), "v@:@")
      .instance("_setPrimaryColor:animated:", imp(setPrimaryColorAnimated), "v@:@C")
      .instance("_setSecondaryColor:animated:", imp(setSecondaryColorAnimated), "v@:@C")
      .instance("_primaryColorForStyle:mode:", imp(primaryForStyle),
                typesOf(primaryForStyle).c_str())
      .instance("_secondaryColorForStyle:mode:", imp(secondaryForStyle),
                typesOf(secondaryForStyle).c_str());
}

}  // namespace

namespace {

// PassKit as a framework SpringBoard loads on first use: its bundle's load
// defines the classes and announces the image, as the dynamic loader does.
constexpr const char* kPassKitBundle = "PassKit.framework";
IMP gBundleLoad = nullptr;
IMP gBundleIsLoaded = nullptr;
bool gPassKitLoaded = false;

bool isPassKitBundle(id bundle) {
  std::string path = platform::toString(send<id>(bundle, Sel("bundlePath")));
  std::string_view suffix(kPassKitBundle);
  return path.size() >= suffix.size() &&
         path.compare(path.size() - suffix.size(), suffix.size(), suffix) == 0;
}
void definePassKitClasses();
BOOL bundleLoad(id self, SEL cmd) {
  if (!isPassKitBundle(self)) return reinterpret_cast<BOOL (*)(id, SEL)>(gBundleLoad)(self, cmd);
  if (!gPassKitLoaded) {
    gPassKitLoaded = true;
    definePassKitClasses();
    defineCatalogClasses({"PKGlyphView", "PKFingerprintGlyphView"});
    host::logEvent("image", "loaded PassKit");
    host::announceImageAdded();
  }
  return 1;
}
BOOL bundleIsLoaded(id self, SEL cmd) {
  if (!isPassKitBundle(self))
    return reinterpret_cast<BOOL (*)(id, SEL)>(gBundleIsLoaded)(self, cmd);
  return gPassKitLoaded ? 1 : 0;
}
void loadPassKitLater() {
  Class bundle = platform::classNamed("NSBundle");
  Method load = class_getInstanceMethod(bundle, Sel("load"));
  Method isLoaded = class_getInstanceMethod(bundle, Sel("isLoaded"));
  gBundleLoad = method_setImplementation(load, reinterpret_cast<IMP>(bundleLoad));
  gBundleIsLoaded = method_setImplementation(isLoaded, reinterpret_cast<IMP>(bundleIsLoaded));
}

}  // namespace

void definePassKit() {
  if (!atLeast(8)) return;
  if (loadsLate("PKGlyphView")) {
    loadPassKitLater();
    return;
  }
  definePassKitClasses();
}

namespace {

void definePassKitClasses() {
  ClassBuilder fingerprint("PKFingerprintGlyphView", "UIView");
  addGlyphMethods(fingerprint)
      .instance("initWithFrame:", imp(fingerprintInitWithFrame),
                typesOf(fingerprintInitWithFrame).c_str())
      .instance("_minimumAnimationDurationForStateTransition", imp(fingerprintMinimumDuration),
                "d@:");
  fingerprint.build();
  ClassBuilder glyphView("PKGlyphView", "UIView");
  addGlyphMethods(glyphView)
      .instance("initWithFrame:", imp(glyphInitWithFrame), typesOf(glyphInitWithFrame).c_str())
      .instance("fingerprintView", imp(fingerprintViewOf), "@@:")
      .instance("_minimumAnimationDurationForStateTransition", imp(glyphMinimumDuration), "d@:");
  glyphView.build();
}

}  // namespace

}  // namespace kv::sim::frameworks
