// UIKit's views: UIView with its geometry, hierarchy, layout and block
// animations.
#include <algorithm>

#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/classes.h"
#include "sim/host/run_loop.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendSuper;

namespace {

struct ViewState {
  CGRect frame{};
  CGPoint boundsOrigin{};
  double alpha = 1.0;
  bool hidden = false;
  bool clips = false;
  bool interaction = true;
  Integer tag = 0;
  CGAffineTransform transform{1, 0, 0, 1, 0, 0};
  std::vector<Retained> subviews;  // back to front
  id superview = nullptr;          // not retained: the superview owns its subviews
  Retained layer;
  Retained backgroundColor;
  bool layoutPending = false;
};

ViewState& view(id v) {
  return stateOf<ViewState>(v);
}

std::function<void(id)>& changeObserver() {
  static auto* observer = new std::function<void(id)>();
  return *observer;
}

// ---- Creation and geometry ----

id viewInitWithFrame(id self, SEL, CGRect frame) {
  self = sendSuper<id>(platform::classNamed("UIResponder"), self, Sel("init"));
  if (self != nullptr) view(self).frame = frame;
  return self;
}
id viewInit(id self, SEL) {
  return send<id>(self, Sel("initWithFrame:"), CGRect{});
}

CGRect viewFrame(id self, SEL) {
  return view(self).frame;
}
void viewSetFrame(id self, SEL, CGRect frame) {
  view(self).frame = frame;
}
CGRect viewBounds(id self, SEL) {
  return CGRect{view(self).boundsOrigin, view(self).frame.size};
}
void viewSetBounds(id self, SEL, CGRect bounds) {
  ViewState& v = view(self);
  CGPoint center{v.frame.origin.x + v.frame.size.width / 2,
                 v.frame.origin.y + v.frame.size.height / 2};
  v.boundsOrigin = bounds.origin;
  v.frame = platform::makeRect(center.x - bounds.size.width / 2, center.y - bounds.size.height / 2,
                               bounds.size.width, bounds.size.height);
}
CGPoint viewCenter(id self, SEL) {
  const CGRect& f = view(self).frame;
  return CGPoint{f.origin.x + f.size.width / 2, f.origin.y + f.size.height / 2};
}
void viewSetCenter(id self, SEL, CGPoint center) {
  CGRect& f = view(self).frame;
  f.origin = CGPoint{center.x - f.size.width / 2, center.y - f.size.height / 2};
}
CGAffineTransform viewTransform(id self, SEL) {
  return view(self).transform;
}
void viewSetTransform(id self, SEL, CGAffineTransform t) {
  view(self).transform = t;
}

// ---- What a person sees ----

double viewAlpha(id self, SEL) {
  return view(self).alpha;
}
void viewSetAlpha(id self, SEL, double alpha) {
  view(self).alpha = std::clamp(alpha, 0.0, 1.0);
  noteViewChanged(self);
}
BOOL viewIsHidden(id self, SEL) {
  return view(self).hidden ? 1 : 0;
}
void viewSetHidden(id self, SEL, BOOL hidden) {
  view(self).hidden = hidden != 0;
  noteViewChanged(self);
}
BOOL viewClips(id self, SEL) {
  return view(self).clips ? 1 : 0;
}
void viewSetClips(id self, SEL, BOOL clips) {
  view(self).clips = clips != 0;
}
BOOL viewInteraction(id self, SEL) {
  return view(self).interaction ? 1 : 0;
}
void viewSetInteraction(id self, SEL, BOOL on) {
  view(self).interaction = on != 0;
}
id viewBackgroundColor(id self, SEL) {
  return view(self).backgroundColor.get();
}
void viewSetBackgroundColor(id self, SEL, id color) {
  view(self).backgroundColor.reset(color);
}
Integer viewTag(id self, SEL) {
  return view(self).tag;
}
void viewSetTag(id self, SEL, Integer tag) {
  view(self).tag = tag;
}

id viewLayer(id self, SEL) {
  ViewState& v = view(self);
  if (!v.layer) {
    Retained layer = Retained::adopt(host::newObject(platform::classNamed("CALayer")));
    send<void>(layer.get(), Sel("setDelegate:"), self);
    view(self).layer = std::move(layer);
  }
  return view(self).layer.get();
}

// ---- Hierarchy ----

id viewSuperview(id self, SEL) {
  return view(self).superview;
}
id viewSubviews(id self, SEL) {
  return arrayOf(subviewsOf(self));
}

void detach(id child) {
  id parent = view(child).superview;
  if (parent == nullptr) return;
  send<void>(child, Sel("willMoveToSuperview:"), id{nullptr});
  auto& siblings = view(parent).subviews;
  Retained keep(child);
  siblings.erase(std::remove_if(siblings.begin(), siblings.end(),
                                [child](const Retained& r) { return r.get() == child; }),
                 siblings.end());
  view(child).superview = nullptr;
  send<void>(child, Sel("didMoveToSuperview"));
  noteViewChanged(parent);
}

void insertAt(id self, id child, size_t index) {
  if (child == nullptr || child == self) return;
  Retained keep(child);
  if (view(child).superview != nullptr) detach(child);
  send<void>(child, Sel("willMoveToSuperview:"), self);
  auto& subviews = view(self).subviews;
  subviews.insert(subviews.begin() + static_cast<long>(std::min(index, subviews.size())), keep);
  view(child).superview = self;
  send<void>(child, Sel("didMoveToSuperview"));
  noteViewChanged(self);
}

size_t indexOf(id self, id child) {
  auto& subviews = view(self).subviews;
  for (size_t i = 0; i < subviews.size(); ++i) {
    if (subviews[i].get() == child) return i;
  }
  return subviews.size();
}

void viewAddSubview(id self, SEL, id child) {
  insertAt(self, child, SIZE_MAX);
}
void viewRemoveFromSuperview(id self, SEL) {
  detach(self);
}
void viewInsertAtIndex(id self, SEL, id child, Integer index) {
  insertAt(self, child, static_cast<size_t>(std::max<Integer>(index, 0)));
}
void viewInsertAbove(id self, SEL, id child, id sibling) {
  if (view(child).superview == self) detach(child);
  insertAt(self, child, indexOf(self, sibling) + 1);
}
void viewInsertBelow(id self, SEL, id child, id sibling) {
  if (view(child).superview == self) detach(child);
  insertAt(self, child, indexOf(self, sibling));
}
void viewBringToFront(id self, SEL, id child) {
  if (view(child).superview == self) insertAt(self, child, SIZE_MAX);
}
void viewSendToBack(id self, SEL, id child) {
  if (view(child).superview == self) insertAt(self, child, 0);
}
void viewMoveHook(id, SEL, id) {}
void viewMovedHook(id, SEL) {}

BOOL viewIsDescendant(id self, SEL, id ancestor) {
  for (id v = self; v != nullptr; v = view(v).superview) {
    if (v == ancestor) return 1;
  }
  return 0;
}
id viewWithTag(id self, SEL, Integer tag) {
  if (view(self).tag == tag) return self;
  id found = nullptr;
  visitSubviews(self, [&](id v) {
    if (found == nullptr && view(v).tag == tag) found = v;
    return found == nullptr;
  });
  return found;
}
id viewWindow(id self, SEL) {
  for (id v = self; v != nullptr; v = view(v).superview) {
    if (platform::isKindOf(v, "UIWindow")) return v;
  }
  return nullptr;
}

// ---- Layout ----

void viewLayoutSubviews(id, SEL) {}
void viewSetNeedsLayout(id self, SEL) {
  if (view(self).layoutPending) return;
  view(self).layoutPending = true;
  Retained keep(self);
  host::scheduleAfter(0, [keep] { send<void>(keep.get(), Sel("layoutIfNeeded")); });
}
void viewLayoutIfNeeded(id self, SEL) {
  if (!view(self).layoutPending) return;
  view(self).layoutPending = false;
  send<void>(self, Sel("layoutSubviews"));
}
void viewSizeToFit(id, SEL) {}

// ---- Teardown ----

void viewDealloc(id self, SEL cmd) {
  for (auto& child : view(self).subviews) view(child.get()).superview = nullptr;
  if (view(self).layer) send<void>(view(self).layer.get(), Sel("setDelegate:"), id{nullptr});
  sendSuper<void>(platform::classNamed("UIResponder"), self, cmd);
}

// ---- Animations ----

// Blocks arrive as objects, as the platform's callers hand them over; the
// animations run at once and the completion (finished YES) when the
// animation's time has passed on the virtual clock.
void animateCompletion(id, SEL, double duration, id animations, id completion) {
  platform::callBlock<void()>(animations);
  if (completion == nullptr) return;
  id copied = platform::copyBlock(completion);
  host::scheduleAfter(duration, [copied] {
    platform::callBlock<void(BOOL)>(copied, BOOL{1});
    platform::releaseBlock(copied);
  });
}
void animate(id cls, SEL cmd, double duration, id animations) {
  animateCompletion(cls, cmd, duration, animations, nullptr);
}
void animateDelayed(id cls, SEL cmd, double duration, double delay, platform::UInteger,
                    id animations, id completion) {
  animateCompletion(cls, cmd, duration + delay, animations, completion);
}
void performWithoutAnimation(id, SEL, id actions) {
  platform::callBlock<void()>(actions);
}

void defineViewClass() {
  ClassBuilder("UIView", "UIResponder")
      .instance("initWithFrame:", imp(viewInitWithFrame), typesOf(viewInitWithFrame).c_str())
      .instance("init", imp(viewInit), "@@:")
      .instance("frame", imp(viewFrame), typesOf(viewFrame).c_str())
      .instance("setFrame:", imp(viewSetFrame), typesOf(viewSetFrame).c_str())
      .instance("bounds", imp(viewBounds), typesOf(viewBounds).c_str())
      .instance("setBounds:", imp(viewSetBounds), typesOf(viewSetBounds).c_str())
      .instance("center", imp(viewCenter), typesOf(viewCenter).c_str())
      .instance("setCenter:", imp(viewSetCenter), typesOf(viewSetCenter).c_str())
      .instance("transform", imp(viewTransform), typesOf(viewTransform).c_str())
      .instance("setTransform:", imp(viewSetTransform), typesOf(viewSetTransform).c_str())
      .instance("alpha", imp(viewAlpha), "d@:")
      .instance("setAlpha:", imp(viewSetAlpha), "v@:d")
      .instance("isHidden", imp(viewIsHidden), "C@:")
      .instance("setHidden:", imp(viewSetHidden), "v@:C")
      .instance("clipsToBounds", imp(viewClips), "C@:")
      .instance("setClipsToBounds:", imp(viewSetClips), "v@:C")
      .instance("isUserInteractionEnabled", imp(viewInteraction), "C@:")
      .instance("setUserInteractionEnabled:", imp(viewSetInteraction), "v@:C")
      .instance("backgroundColor", imp(viewBackgroundColor), "@@:")
      .instance("setBackgroundColor:", imp(viewSetBackgroundColor), "v@:@")
      .instance("tag", imp(viewTag), typesOf(viewTag).c_str())
      .instance("setTag:", imp(viewSetTag), typesOf(viewSetTag).c_str())
      .instance("layer", imp(viewLayer), "@@:")
      .instance("superview", imp(viewSuperview), "@@:")
      .instance("subviews", imp(viewSubviews), "@@:")
      .instance("addSubview:", imp(viewAddSubview), "v@:@")
      .instance("removeFromSuperview", imp(viewRemoveFromSuperview), "v@:")
      .instance("insertSubview:atIndex:", imp(viewInsertAtIndex),
                typesOf(viewInsertAtIndex).c_str())
      .instance("insertSubview:aboveSubview:", imp(viewInsertAbove), "v@:@@")
      .instance("insertSubview:belowSubview:", imp(viewInsertBelow), "v@:@@")
      .instance("bringSubviewToFront:", imp(viewBringToFront), "v@:@")
      .instance("sendSubviewToBack:", imp(viewSendToBack), "v@:@")
      .instance("willMoveToSuperview:", imp(viewMoveHook), "v@:@")
      .instance("didMoveToSuperview", imp(viewMovedHook), "v@:")
      .instance("isDescendantOfView:", imp(viewIsDescendant), "C@:@")
      .instance("viewWithTag:", imp(viewWithTag), typesOf(viewWithTag).c_str())
      .instance("window", imp(viewWindow), "@@:")
      .instance("layoutSubviews", imp(viewLayoutSubviews), "v@:")
      .instance("setNeedsLayout", imp(viewSetNeedsLayout), "v@:")
      .instance("layoutIfNeeded", imp(viewLayoutIfNeeded), "v@:")
      .instance("sizeToFit", imp(viewSizeToFit), "v@:")
      .instance("dealloc", imp(viewDealloc), "v@:")
      .classMethod("animateWithDuration:animations:", imp(animate), "v@:d@?")
      .classMethod("animateWithDuration:animations:completion:", imp(animateCompletion), "v@:d@?@?")
      .classMethod("animateWithDuration:delay:options:animations:completion:", imp(animateDelayed),
                   "v@:ddL@?@?")
      .classMethod("performWithoutAnimation:", imp(performWithoutAnimation), "v@:@?")
      .build();
}

}  // namespace

void defineUIKitViews() {
  defineViewClass();
}

id newView(const char* className, CGRect frame) {
  Class cls = platform::classNamed(className);
  if (cls == nullptr) return nullptr;
  return send<id>(platform::sendClass<id>(cls, Sel("alloc")), Sel("initWithFrame:"), frame);
}

std::vector<id> subviewsOf(id v) {
  std::vector<id> out;
  if (v == nullptr) return out;
  for (auto& child : view(v).subviews) out.push_back(child.get());
  return out;
}

id superviewOf(id v) {
  return v == nullptr ? nullptr : view(v).superview;
}

void visitSubviews(id root, const std::function<bool(id)>& visit) {
  for (id child : subviewsOf(root)) {
    if (visit(child)) visitSubviews(child, visit);
  }
}

id findSubview(id root, const char* className) {
  id found = nullptr;
  visitSubviews(root, [&](id v) {
    if (found == nullptr && platform::isKindOf(v, className)) found = v;
    return found == nullptr;
  });
  return found;
}

void setViewChangeObserver(std::function<void(id)> observer) {
  changeObserver() = std::move(observer);
}

void noteViewChanged(id v) {
  if (changeObserver()) changeObserver()(v);
}

}  // namespace kv::sim::frameworks
