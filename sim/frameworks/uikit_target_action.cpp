// UIControl as UIKit has it: targets with actions for control events, touch
// tracking that ends in touch-up-inside or is cancelled, and the selected
// and highlighted states; and UITouch and UIEvent, which touches carry.
#include <algorithm>
#include <string_view>
#include <vector>

#include "platform/foundation.h"
#include "platform/runtime.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/classes.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Sel;
using platform::send;
using platform::UInteger;

namespace {

constexpr UInteger kTouchDown = 1 << 0;
constexpr UInteger kTouchUpInside = 1 << 6;
constexpr UInteger kTouchCancel = 1 << 8;

const Sel kSetHighlighted("setHighlighted:");
const Sel kSendActions("sendActionsForControlEvents:");
const Sel kAddObject("addObject:");

struct Target {
  id target;  // not retained, as UIKit's targets
  SEL action;
  UInteger events;
};
struct ControlState {
  std::vector<Target> targets;
  bool tracking = false;
  bool selected = false;
  bool highlighted = false;
};
ControlState& controlOf(id control) {
  return stateOf<ControlState>(control);
}

void addTarget(id self, SEL, id target, SEL action, UInteger events) {
  controlOf(self).targets.push_back({target, action, events});
}
void removeTarget(id self, SEL, id target, SEL action, UInteger events) {
  auto& targets = controlOf(self).targets;
  std::erase_if(targets, [&](const Target& t) {
    return (target == nullptr || t.target == target) && (action == nullptr || t.action == action) &&
           (t.events & events) != 0;
  });
}
id allTargets(id self, SEL) {
  id set = platform::sendClass<id>(platform::classNamed("NSMutableSet"), Sel("set"));
  for (const Target& t : controlOf(self).targets) {
    if (t.target != nullptr) send<void>(set, kAddObject, t.target);
  }
  return set;
}
// Each action takes the sender alone. The list is copied first: an action
// may change the control's targets.
void sendActionsForControlEvents(id self, SEL, UInteger events) {
  std::vector<Target> targets = controlOf(self).targets;
  for (const Target& t : targets) {
    if ((t.events & events) != 0) sendAction(t.target, t.action, self);
  }
}

// A touch goes down on the control, is lifted inside it, or is cancelled.
// Touch-up-inside is sent while the control still shows highlighted.
void touchesBegan(id self, SEL, id, id) {
  controlOf(self).tracking = true;
  send<void>(self, kSetHighlighted, BOOL{1});
  send<void>(self, kSendActions, kTouchDown);
}
void touchesEnded(id self, SEL, id, id) {
  if (!controlOf(self).tracking) return;
  controlOf(self).tracking = false;
  send<void>(self, kSendActions, kTouchUpInside);
  send<void>(self, kSetHighlighted, BOOL{0});
}
void touchesCancelled(id self, SEL, id, id) {
  if (!controlOf(self).tracking) return;
  controlOf(self).tracking = false;
  send<void>(self, kSetHighlighted, BOOL{0});
  send<void>(self, kSendActions, kTouchCancel);
}

BOOL isSelected(id self, SEL) {
  return controlOf(self).selected ? 1 : 0;
}
void setSelected(id self, SEL, BOOL selected) {
  controlOf(self).selected = selected != 0;
  noteViewChanged(self);
}
BOOL isHighlighted(id self, SEL) {
  return controlOf(self).highlighted ? 1 : 0;
}
void setHighlighted(id self, SEL, BOOL highlighted) {
  controlOf(self).highlighted = highlighted != 0;
  noteViewChanged(self);
}
BOOL isTracking(id self, SEL) {
  return controlOf(self).tracking ? 1 : 0;
}

}  // namespace

void defineUIKitTargetAction() {
  ClassBuilder("UIControl", "UIView")
      .instance("addTarget:action:forControlEvents:", imp(addTarget), typesOf(addTarget).c_str())
      .instance("removeTarget:action:forControlEvents:", imp(removeTarget),
                typesOf(removeTarget).c_str())
      .instance("allTargets", imp(allTargets), "@@:")
      .instance("sendActionsForControlEvents:", imp(sendActionsForControlEvents),
                typesOf(sendActionsForControlEvents).c_str())
      .instance("touchesBegan:withEvent:", imp(touchesBegan), "v@:@@")
      .instance("touchesEnded:withEvent:", imp(touchesEnded), "v@:@@")
      .instance("touchesCancelled:withEvent:", imp(touchesCancelled), "v@:@@")
      .instance("isSelected", imp(isSelected), "C@:")
      .instance("setSelected:", imp(setSelected), "v@:C")
      .instance("isHighlighted", imp(isHighlighted), "C@:")
      .instance("setHighlighted:", imp(setHighlighted), "v@:C")
      .instance("isTracking", imp(isTracking), "C@:")
      .build();
  ClassBuilder("UIButton", "UIControl").build();
  ClassBuilder("UITouch", "NSObject").build();
  ClassBuilder("UIEvent", "NSObject").build();
}

void sendAction(id target, SEL action, id sender) {
  std::string_view name = platform::selectorName(action);
  if (!name.empty() && name.back() == ':') {
    platform::send<void>(target, action, sender);
  } else {
    platform::send<void>(target, action);
  }
}

}  // namespace kv::sim::frameworks
