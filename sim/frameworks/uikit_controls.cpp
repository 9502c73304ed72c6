// UIKit's kinds of view: windows (and the application's key window), labels,
// image views, and the effect and backdrop views drawn behind content.
#include <algorithm>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/classes.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendSuper;

namespace {

// ---- Windows ----

std::vector<Retained>& shownWindows() {
  static auto* list = new std::vector<Retained>();
  return *list;
}
struct WindowState {
  double level = 0;
  Retained rootViewController;
};
void windowMakeKeyAndVisible(id self, SEL) {
  send<void>(self, Sel("setHidden:"), BOOL{0});
  auto& list = shownWindows();
  Retained keep(self);
  list.erase(std::remove_if(list.begin(), list.end(), [self](auto& w) { return w.get() == self; }),
             list.end());
  list.push_back(keep);
}
void windowSetHidden(id self, SEL, BOOL hidden) {
  sendSuper<void>(platform::classNamed("UIView"), self, Sel("setHidden:"), hidden);
  if (hidden) {
    auto& list = shownWindows();
    Retained keep(self);
    list.erase(
        std::remove_if(list.begin(), list.end(), [self](auto& w) { return w.get() == self; }),
        list.end());
  }
}
BOOL windowIsKey(id self, SEL) {
  return !shownWindows().empty() && shownWindows().back().get() == self ? 1 : 0;
}
double windowLevel(id self, SEL) {
  return stateOf<WindowState>(self).level;
}
void windowSetLevel(id self, SEL, double level) {
  stateOf<WindowState>(self).level = level;
}
id windowRoot(id self, SEL) {
  return stateOf<WindowState>(self).rootViewController.get();
}
void windowSetRoot(id self, SEL, id controller) {
  stateOf<WindowState>(self).rootViewController.reset(controller);
  if (controller != nullptr)
    send<void>(self, Sel("addSubview:"), send<id>(controller, Sel("view")));
}
id applicationKeyWindow(id, SEL) {
  return shownWindows().empty() ? nullptr : shownWindows().back().get();
}
id applicationWindows(id, SEL) {
  std::vector<id> items;
  for (auto& w : shownWindows()) items.push_back(w.get());
  return arrayOf(items);
}

// ---- Labels, image views, effects ----

struct LabelState {
  Retained text, font, textColor;
  Integer alignment = 0;
  Integer lines = 1;
};
id labelInitWithFrame(id self, SEL cmd, CGRect frame) {
  self = sendSuper<id>(platform::classNamed("UIView"), self, cmd, frame);
  if (self == nullptr) return nullptr;
  LabelState& l = stateOf<LabelState>(self);
  l.font.reset(
      platform::sendClass<id>(platform::classNamed("UIFont"), Sel("systemFontOfSize:"), 17.0));
  l.textColor.reset(platform::sendClass<id>(platform::classNamed("UIColor"), Sel("blackColor")));
  return self;
}
id labelText(id self, SEL) {
  return stateOf<LabelState>(self).text.get();
}
void labelSetText(id self, SEL, id text) {
  stateOf<LabelState>(self).text = Retained::adopt(send<id>(text, Sel("copy")));
  noteViewChanged(self);
}
id labelFont(id self, SEL) {
  return stateOf<LabelState>(self).font.get();
}
void labelSetFont(id self, SEL, id font) {
  stateOf<LabelState>(self).font.reset(font);
}
id labelColor(id self, SEL) {
  return stateOf<LabelState>(self).textColor.get();
}
void labelSetColor(id self, SEL, id color) {
  stateOf<LabelState>(self).textColor.reset(color);
}
Integer labelAlignment(id self, SEL) {
  return stateOf<LabelState>(self).alignment;
}
void labelSetAlignment(id self, SEL, Integer a) {
  stateOf<LabelState>(self).alignment = a;
}
Integer labelLines(id self, SEL) {
  return stateOf<LabelState>(self).lines;
}
void labelSetLines(id self, SEL, Integer n) {
  stateOf<LabelState>(self).lines = n;
}

struct ImageViewState {
  Retained image;
};
id imageViewInitWithImage(id self, SEL, id image) {
  CGSize size = send<CGSize>(image, Sel("size"));
  self = send<id>(self, Sel("initWithFrame:"), platform::makeRect(0, 0, size.width, size.height));
  if (self != nullptr) send<void>(self, Sel("setImage:"), image);
  return self;
}
id imageViewImage(id self, SEL) {
  return stateOf<ImageViewState>(self).image.get();
}
void imageViewSetImage(id self, SEL, id image) {
  stateOf<ImageViewState>(self).image.reset(image);
  noteViewChanged(self);
}

struct EffectState {
  Integer style = 0;
  Retained effect;
  Retained contentView;
};
id blurEffectWithStyle(id cls, SEL, Integer style) {
  id effect = send<id>(send<id>(cls, Sel("alloc")), Sel("init"));
  stateOf<EffectState>(effect).style = style;
  return send<id>(effect, Sel("autorelease"));
}
Integer effectStyle(id self, SEL) {
  return stateOf<EffectState>(self).style;
}
id effectViewInit(id self, SEL, id effect) {
  self = send<id>(self, Sel("initWithFrame:"), CGRect{});
  if (self == nullptr) return nullptr;
  stateOf<EffectState>(self).effect.reset(effect);
  Retained content = Retained::adopt(newView("UIView", CGRect{}));
  send<void>(self, Sel("addSubview:"), content.get());
  stateOf<EffectState>(self).contentView = std::move(content);
  return self;
}
id effectViewEffect(id self, SEL) {
  return stateOf<EffectState>(self).effect.get();
}
id effectViewContent(id self, SEL) {
  return stateOf<EffectState>(self).contentView.get();
}
id backdropInitWithStyle(id self, SEL, Integer style) {
  self = send<id>(self, Sel("initWithFrame:"), CGRect{});
  if (self != nullptr) stateOf<EffectState>(self).style = style;
  return self;
}

}  // namespace

void defineUIKitControls() {
  ClassBuilder("UIWindow", "UIView")
      .instance("makeKeyAndVisible", imp(windowMakeKeyAndVisible), "v@:")
      .instance("makeKeyWindow", imp(windowMakeKeyAndVisible), "v@:")
      .instance("isKeyWindow", imp(windowIsKey), "C@:")
      .instance("setHidden:", imp(windowSetHidden), "v@:C")
      .instance("windowLevel", imp(windowLevel), "d@:")
      .instance("setWindowLevel:", imp(windowSetLevel), "v@:d")
      .instance("rootViewController", imp(windowRoot), "@@:")
      .instance("setRootViewController:", imp(windowSetRoot), "v@:@")
      .build();
  Class application = platform::classNamed("UIApplication");
  class_addMethod(application, Sel("keyWindow"), imp(applicationKeyWindow), "@@:");
  class_addMethod(application, Sel("windows"), imp(applicationWindows), "@@:");
  ClassBuilder("UILabel", "UIView")
      .instance("initWithFrame:", imp(labelInitWithFrame), typesOf(labelInitWithFrame).c_str())
      .instance("text", imp(labelText), "@@:")
      .instance("setText:", imp(labelSetText), "v@:@")
      .instance("font", imp(labelFont), "@@:")
      .instance("setFont:", imp(labelSetFont), "v@:@")
      .instance("textColor", imp(labelColor), "@@:")
      .instance("setTextColor:", imp(labelSetColor), "v@:@")
      .instance("textAlignment", imp(labelAlignment), typesOf(labelAlignment).c_str())
      .instance("setTextAlignment:", imp(labelSetAlignment), typesOf(labelSetAlignment).c_str())
      .instance("numberOfLines", imp(labelLines), typesOf(labelLines).c_str())
      .instance("setNumberOfLines:", imp(labelSetLines), typesOf(labelSetLines).c_str())
      .build();
  ClassBuilder("UIImageView", "UIView")
      .instance("initWithImage:", imp(imageViewInitWithImage), "@@:@")
      .instance("image", imp(imageViewImage), "@@:")
      .instance("setImage:", imp(imageViewSetImage), "v@:@")
      .build();
  ClassBuilder("UIVisualEffect", "NSObject").build();
  ClassBuilder("UIBlurEffect", "UIVisualEffect")
      .classMethod("effectWithStyle:", imp(blurEffectWithStyle),
                   typesOf(blurEffectWithStyle).c_str())
      .instance("_style", imp(effectStyle), typesOf(effectStyle).c_str())
      .build();
  ClassBuilder("UIVisualEffectView", "UIView")
      .instance("initWithEffect:", imp(effectViewInit), "@@:@")
      .instance("effect", imp(effectViewEffect), "@@:")
      .instance("contentView", imp(effectViewContent), "@@:")
      .build();
  ClassBuilder("_UIBackdropView", "UIView")
      .instance("initWithStyle:", imp(backdropInitWithStyle),
                typesOf(backdropInitWithStyle).c_str())
      .instance("style", imp(effectStyle), typesOf(effectStyle).c_str())
      .build();
}

}  // namespace kv::sim::frameworks
