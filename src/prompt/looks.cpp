// The prompt's biometric face by the IconColor setting.
#include "prompt/looks.h"

#include <string>

#include "base/flags.h"
#include "base/hardware.h"
#include "core/controller.h"
#include "platform/foundation.h"
#include "platform/geometry.h"
#include "platform/runtime.h"
#include "prompt/selectors.h"
#include "settings/bundle.h"
#include "settings/settings.h"

namespace kv::prompt {

namespace {

using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendClass;

constexpr Look kLooks[] = {
    {0, false, "thumb-black", "circle-white", nullptr, nullptr, false},
    {1, false, "thumb-white", "circle-black", nullptr, nullptr, false},
    {2, false, "thumb-black", "circle-gold", nullptr, nullptr, false},
    {3, true, nullptr, nullptr, nullptr, nullptr, false},
    {4, true, nullptr, nullptr, "305a94", "8a9bb1", false},
    {5, true, nullptr, nullptr, nullptr, nullptr, true},
};
constexpr int kDefaultLook = 2;
constexpr int kSystemGlyphLook = 3;
constexpr int kFaceCameraLook = 5;

constexpr const char* kRedFingerprint = "thumb-red";

// The ring takes the glyph's place; the fingerprints sit inside it. The
// glyph placed by itself is drawn a ninth larger, to fill its larger frame.
constexpr CGRect kGlyphFrame{{104, 50}, {63, 63}};
constexpr CGRect kPlacedGlyphFrame{{100, 45}, {70, 70}};
constexpr CGAffineTransform kPlacedGlyphTransform{70.0 / 63, 0, 0, 70.0 / 63, 0, 0};
constexpr CGRect kRingFrame = kGlyphFrame;
constexpr CGRect kFingerprintFrame{{114, 60}, {43, 43}};
constexpr CGRect kGhostFrame{{0, 60}, {60, 15}};

id allocOf(const char* className) {
  return sendClass<id>(platform::classNamed(className), sel::kAlloc);
}

// An image of the settings bundle by name, or nil when the bundle or the
// image is missing. The bundle's place is decided afresh for each image, and
// the image is read by path, so that a bundle object cached for the other
// place cannot answer.
id bundleImage(const char* name) {
  static const Sel kWithContentsOfFile("imageWithContentsOfFile:");
  return sendClass<id>(platform::classNamed("UIImage"), kWithContentsOfFile,
                       platform::makeString(settings::bundlePath() + "/" + name + ".png"));
}

Retained imageView(const char* imageName, CGRect frame) {
  static const Sel kInitWithImage("initWithImage:");
  Retained view =
      Retained::adopt(send<id>(allocOf("UIImageView"), kInitWithImage, bundleImage(imageName)));
  send<void>(view.get(), sel::kSetFrame, frame);
  return view;
}

// "305a94" as a UIColor: each byte over 255.0, alpha 1.0.
id colorFromHex(const char* hex) {
  static const Sel kScannerWithString("scannerWithString:"), kScanHexInt("scanHexInt:");
  static const Sel kColorWithRGBA("colorWithRed:green:blue:alpha:");
  unsigned int value = 0;
  id scanner = sendClass<id>(platform::classNamed("NSScanner"), kScannerWithString,
                             platform::makeString(hex));
  send<BOOL>(scanner, kScanHexInt, &value);
  auto byte = [value](int shift) { return static_cast<double>((value >> shift) & 0xff) / 255.0; };
  return sendClass<id>(platform::classNamed("UIColor"), kColorWithRGBA, byte(16), byte(8), byte(0),
                       1.0);
}

// The glyph class's own colour for a style and mode, or nil.
// The glyph's own colour for a style, where this system's glyph has one.
id styleColor(id glyph, const char* selector, Integer style, Integer mode) {
  return platform::sendIfResponds<id>(glyph, Sel(selector), style, mode);
}

// Applies a colour with the animated private setter where the glyph has it.
void applyColor(id glyph, const char* animatedSetter, const char* plainSetter, id color) {
  if (color == nullptr) return;
  Sel animated(animatedSetter);
  if (platform::respondsTo(glyph, animated)) {
    send<void>(glyph, animated, color, BOOL{0});
  } else {
    send<void>(glyph, Sel(plainSetter), color);
  }
}

void addTo(id container, const Retained& view) {
  send<void>(container, sel::kAddSubview, view.get());
}

void buildRing(AlertViewState& s, const Look& look, id container) {
  s.circle = imageView(look.ring, kRingFrame);
  s.thumb = imageView(look.fingerprint, kFingerprintFrame);
  s.thumbRed = imageView(kRedFingerprint, kFingerprintFrame);
  send<void>(s.thumbRed.get(), sel::kSetAlpha, 0.0);
  s.ghostView = Retained::adopt(send<id>(allocOf("UIView"), sel::kInitWithFrame, kGhostFrame));
  for (const Retained* view : {&s.circle, &s.thumb, &s.thumbRed, &s.ghostView})
    addTo(container, *view);
}

// False when the system has no PKGlyphView.
bool buildGlyph(AlertViewState& s, const Look& look, id container) {
  static const Sel kInitWithStyle("initWithStyle:"), kGlyphStyle("glyphStyle"),
      kGlyphMode("glyphMode");
  static const Sel kSetTransform("setTransform:");
  Class glyphClass = platform::classNamed("PKGlyphView");
  if (glyphClass == nullptr) return false;
  id controller = core::controller();
  auto style = send<Integer>(controller, kGlyphStyle);
  auto mode = send<Integer>(controller, kGlyphMode);
  s.glyphView =
      Retained::adopt(send<id>(sendClass<id>(glyphClass, sel::kAlloc), kInitWithStyle, style));
  id glyph = s.glyphView.get();
  id primary = look.primaryHex ? colorFromHex(look.primaryHex)
                               : styleColor(glyph, "_primaryColorForStyle:mode:", style, mode);
  id secondary = look.secondaryHex
                     ? colorFromHex(look.secondaryHex)
                     : styleColor(glyph, "_secondaryColorForStyle:mode:", style, mode);
  applyColor(glyph, "_setPrimaryColor:animated:", "setPrimaryColor:", primary);
  applyColor(glyph, "_setSecondaryColor:animated:", "setSecondaryColor:", secondary);
  if (look.placedByItself) {
    send<void>(glyph, kSetTransform, kPlacedGlyphTransform);
    send<void>(glyph, sel::kSetFrame, kPlacedGlyphFrame);
  } else {
    send<void>(glyph, sel::kSetFrame, kGlyphFrame);
  }
  addTo(container, s.glyphView);
  return true;
}

}  // namespace

const Look& lookFor(int iconColor) {
  const Look* fallback = &kLooks[0];
  for (const auto& look : kLooks) {
    if (look.iconColor == iconColor) return look;
    if (look.iconColor == kDefaultLook) fallback = &look;
  }
  return *fallback;
}

const Look& chooseLook() {
  // The face camera always shows its glyph: the settings force IconColor 5
  // on such a device, and the hardware decides before they are loaded.
  if (base::faceCameraPresent()) return lookFor(kFaceCameraLook);
  if (base::flags().isIOS11) return lookFor(kSystemGlyphLook);
  return lookFor(settings::current().iconColor);
}

void buildLook(AlertViewState& s, const Look& look, id container) {
  if (look.glyph && buildGlyph(s, look, container)) return;
  buildRing(s, look.glyph ? lookFor(kDefaultLook) : look, container);
}

}  // namespace kv::prompt
