// UIKit's gesture recognizers: a view carries them, and a recognised gesture
// sends each target its action with the recognizer.
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

constexpr Integer kRecognized = 3;  // UIGestureRecognizerStateEnded

struct GestureState {
  std::vector<std::pair<id, SEL>> targets;  // targets are not retained
  Integer state = 0;
  id view = nullptr;  // not retained: the view keeps its recognizers
  bool enabled = true;
};

// A view's recognizers; when the view goes, a recognizer that lives on
// forgets it.
struct GestureList {
  std::vector<Retained> items;
  GestureList() = default;
  GestureList(const GestureList&) = delete;
  GestureList& operator=(const GestureList&) = delete;
  ~GestureList() {
    for (auto& g : items) stateOf<GestureState>(g.get()).view = nullptr;
  }
};

void viewAddGesture(id self, SEL, id recognizer) {
  if (recognizer == nullptr) return;
  stateOf<GestureList>(self).items.emplace_back(recognizer);
  stateOf<GestureState>(recognizer).view = self;
}
void viewRemoveGesture(id self, SEL, id recognizer) {
  Retained keep(recognizer);
  std::erase_if(stateOf<GestureList>(self).items,
                [recognizer](const Retained& r) { return r.get() == recognizer; });
  stateOf<GestureState>(recognizer).view = nullptr;
}
id viewGestures(id self, SEL) {
  std::vector<id> items;
  for (auto& g : stateOf<GestureList>(self).items) items.push_back(g.get());
  return arrayOf(items);
}

id gestureInit(id self, SEL, id target, SEL action) {
  self = sendSuper<id>(platform::classNamed("NSObject"), self, Sel("init"));
  if (self == nullptr) return nullptr;
  GestureState& g = stateOf<GestureState>(self);
  if (target != nullptr) g.targets.emplace_back(target, action);
  return self;
}
void gestureAddTarget(id self, SEL, id target, SEL action) {
  stateOf<GestureState>(self).targets.emplace_back(target, action);
}
Integer gestureState(id self, SEL) {
  return stateOf<GestureState>(self).state;
}
void gestureSetState(id self, SEL, Integer state) {
  stateOf<GestureState>(self).state = state;
}
id gestureView(id self, SEL) {
  return stateOf<GestureState>(self).view;
}
BOOL gestureEnabled(id self, SEL) {
  return stateOf<GestureState>(self).enabled ? 1 : 0;
}
void gestureSetEnabled(id self, SEL, BOOL on) {
  stateOf<GestureState>(self).enabled = on != 0;
}

}  // namespace

void defineUIKitGestures() {
  Class view = platform::classNamed("UIView");
  class_addMethod(view, Sel("addGestureRecognizer:"), imp(viewAddGesture), "v@:@");
  class_addMethod(view, Sel("removeGestureRecognizer:"), imp(viewRemoveGesture), "v@:@");
  class_addMethod(view, Sel("gestureRecognizers"), imp(viewGestures), "@@:");
  ClassBuilder("UIGestureRecognizer", "NSObject")
      .instance("initWithTarget:action:", imp(gestureInit), "@@:@:")
      .instance("addTarget:action:", imp(gestureAddTarget), "v@:@:")
      .instance("state", imp(gestureState), typesOf(gestureState).c_str())
      .instance("setState:", imp(gestureSetState), typesOf(gestureSetState).c_str())
      .instance("view", imp(gestureView), "@@:")
      .instance("isEnabled", imp(gestureEnabled), "C@:")
      .instance("setEnabled:", imp(gestureSetEnabled), "v@:C")
      .build();
  ClassBuilder("UITapGestureRecognizer", "UIGestureRecognizer").build();
}

void recognizeGesture(id recognizer) {
  if (!stateOf<GestureState>(recognizer).enabled) return;
  Retained keep(recognizer);
  stateOf<GestureState>(recognizer).state = kRecognized;
  auto targets = stateOf<GestureState>(recognizer).targets;
  for (auto& [target, action] : targets) sendAction(target, action, recognizer);
  stateOf<GestureState>(recognizer).state = 0;
}

}  // namespace kv::sim::frameworks
