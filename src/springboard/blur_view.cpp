// KavelinBlurView11 as the runtime knows it. Its two parts are instance
// variables the view owns: `visualEffectView` (the blur) and
// `_protectedLabel` (an image view with the text, drawn once at creation).
#include "springboard/blur_view.h"

#include "platform/classes.h"
#include "platform/drawing.h"
#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "settings/settings.h"

namespace kv::springboard {

namespace {

using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendClass;
using platform::sendSuper;

const Sel kAlloc("alloc");
const Sel kInit("init");
const Sel kRelease("release");
const Sel kEffectWithStyle("effectWithStyle:");
const Sel kInitWithEffect("initWithEffect:");
const Sel kInitWithImage("initWithImage:");
const Sel kSetFrame("setFrame:");
const Sel kFrame("frame");
const Sel kBounds("bounds");
const Sel kSetClipsToBounds("setClipsToBounds:");
const Sel kAddSubview("addSubview:");
const Sel kSetAlpha("setAlpha:");
const Sel kBoldSystemFont("boldSystemFontOfSize:");
const Sel kWhiteColor("whiteColor");
const Sel kDarkGrayColor("darkGrayColor");
const Sel kSetShadowBlurRadius("setShadowBlurRadius:");
const Sel kSetShadowColor("setShadowColor:");
const Sel kSetShadowOffset("setShadowOffset:");
const Sel kSizeWithAttributes("sizeWithAttributes:");
const Sel kDrawAtPoint("drawAtPoint:withAttributes:");
const Sel kMainScreen("mainScreen");
const Sel kScale("scale");

constexpr const char* kEffectViewIvar = "visualEffectView";
constexpr const char* kLabelIvar = "_protectedLabel";
constexpr const char* kText = "Kavelined";
constexpr platform::Integer kLightBlurStyle = 1;
constexpr CGFloat kTextSize = 30.0;
constexpr CGFloat kShadowBlurRadius = 3.0;
constexpr CGSize kShadowOffset{0.0, 2.0};

Class uiView() {
  return platform::classNamed("UIView");
}

id newOf(const char* className) {
  return send<id>(sendClass<id>(platform::classNamed(className), kAlloc), kInit);
}

// The view's own object variable `name`; a class of that name registered
// by someone else has none, and then nothing is kept.
void keep(id self, const char* name, id owned) {
  if (auto* slot = static_cast<id*>(platform::ivarAddress(self, name))) {
    *slot = owned;
  } else {
    send<void>(owned, kRelease);
  }
}
id kept(id self, const char* name) {
  auto* slot = static_cast<id*>(platform::ivarAddress(self, name));
  return slot != nullptr ? *slot : nullptr;
}

// The text as an image: measured with its attributes, drawn at the origin
// into a transparent context of that size at the screen's scale.
id textImage() {
  Retained shadow = Retained::adopt(newOf("NSShadow"));
  send<void>(shadow.get(), kSetShadowBlurRadius, kShadowBlurRadius);
  send<void>(shadow.get(), kSetShadowColor,
             sendClass<id>(platform::classNamed("UIColor"), kDarkGrayColor));
  send<void>(shadow.get(), kSetShadowOffset, kShadowOffset);
  id attributes = platform::makeDictionary({
      {platform::kFontAttribute,
       sendClass<id>(platform::classNamed("UIFont"), kBoldSystemFont, kTextSize)},
      {platform::kForegroundColorAttribute,
       sendClass<id>(platform::classNamed("UIColor"), kWhiteColor)},
      {platform::kShadowAttribute, shadow.get()},
  });
  id text = platform::makeString(kText);
  CGSize size = send<CGSize>(text, kSizeWithAttributes, attributes);
  CGFloat scale =
      send<CGFloat>(sendClass<id>(platform::classNamed("UIScreen"), kMainScreen), kScale);
  UIGraphicsBeginImageContextWithOptions(size, BOOL{0}, scale);
  send<void>(text, kDrawAtPoint, CGPoint{0, 0}, attributes);
  id image = UIGraphicsGetImageFromCurrentImageContext();
  UIGraphicsEndImageContext();
  return image;
}

id initWithFrame(id self, SEL cmd, CGRect frame) {
  self = sendSuper<id>(uiView(), self, cmd, frame);
  if (self == nullptr) return nullptr;
  send<void>(self, kSetClipsToBounds, BOOL{1});
  // The blur, filling the view.
  id effect =
      sendClass<id>(platform::classNamed("UIBlurEffect"), kEffectWithStyle, kLightBlurStyle);
  id effectView = send<id>(sendClass<id>(platform::classNamed("UIVisualEffectView"), kAlloc),
                           kInitWithEffect, effect);
  send<void>(effectView, kSetFrame, platform::makeRect(0, 0, frame.size.width, frame.size.height));
  send<void>(effectView, kSetClipsToBounds, BOOL{1});
  send<void>(self, kAddSubview, effectView);
  keep(self, kEffectViewIvar, effectView);
  // The text over it.
  id label = send<id>(sendClass<id>(platform::classNamed("UIImageView"), kAlloc), kInitWithImage,
                      textImage());
  send<void>(self, kAddSubview, label);
  keep(self, kLabelIvar, label);
  return self;
}

id visualEffectView(id self, SEL) {
  return kept(self, kEffectViewIvar);
}

// The text shows or not as the setting says, centred at its own size.
void layoutSubviews(id self, SEL cmd) {
  sendSuper<void>(uiView(), self, cmd);
  id label = kept(self, kLabelIvar);
  if (label == nullptr) return;
  send<void>(label, kSetAlpha, settings::current().showKavelinedText ? CGFloat{1} : CGFloat{0});
  CGRect bounds = send<CGRect>(self, kBounds);
  CGRect labelFrame = send<CGRect>(label, kFrame);
  send<void>(label, kSetFrame, centredFrame(bounds.size, labelFrame.size));
}

void dealloc(id self, SEL cmd) {
  for (const char* name : {kEffectViewIvar, kLabelIvar}) {
    send<void>(kept(self, name), kRelease);
    keep(self, name, nullptr);
  }
  sendSuper<void>(uiView(), self, cmd);
}

}  // namespace

CGRect centredFrame(CGSize view, CGSize label) {
  return platform::makeRect((view.width - label.width) / 2, (view.height - label.height) / 2,
                            label.width, label.height);
}

void defineBlurView() {
  using platform::method;
  platform::defineClass(kBlurViewClass, "UIView", {kEffectViewIvar, kLabelIvar},
                        {
                            method("initWithFrame:", initWithFrame),
                            method("visualEffectView", visualEffectView),
                            method("layoutSubviews", layoutSubviews),
                            method("dealloc", dealloc),
                        });
}

}  // namespace kv::springboard
