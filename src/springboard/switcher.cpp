// The app switcher as a whole: its toggles, the swipe-up gesture, iOS 11's
// fluid switcher transactions and the return to the app it was opened over.
#include "springboard/switcher.h"

#include <cstring>
#include <memory>

#include "base/flags.h"
#include "core/coordinator.h"
#include "core/device.h"
#include "core/requests.h"
#include "core/state.h"
#include "platform/blocks.h"
#include "platform/hook.h"
#include "platform/invocation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "settings/settings.h"
#include "springboard/gate.h"

namespace kv::springboard {

namespace {

using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendIfResponds;

const Sel kIsVisible("isVisible");
const Sel kIsAppSwitcherShowing("isAppSwitcherShowing");
const Sel kIsPluginVisible("isPluginVisible");
const Sel kSelector("selector");
const Sel kState("state");
const Sel kSetState("setState:");
const Sel kSetEnabled("setEnabled:");
const Sel kView("view");
const Sel kSuperview("superview");
const Sel kToggleNoninteractively("toggleSwitcherNoninteractively");
const Sel kApplicationContext("applicationContext");
const Sel kLayoutState("layoutState");
const Sel kPreviousLayoutState("previousLayoutState");
const Sel kUnlockedEnvironmentMode("unlockedEnvironmentMode");
const Sel kElements("elements");
const Sel kAllObjects("allObjects");
const Sel kIdentifier("identifier");
const Sel kActivateWithSource("activateSwitcherNoninteractivelyWithSource:");
const Sel kDismissNoninteractively("dismissSwitcherNoninteractively");
const Sel kReturnToHomeScreen("_returnToHomeScreenWithCompletion:");
const Sel kDisplayIdentifier("displayIdentifier");
const Sel kIsEqual("isEqual:");

constexpr const char* kSwitcherTitle = "Switcher Protection";
constexpr Integer kGestureChanged = 2;    // UIGestureRecognizerStateChanged
constexpr Integer kGestureFailed = 5;     // UIGestureRecognizerStateFailed
constexpr Integer kSwitcherMode = 2;      // the layout's environment: the switcher
constexpr Integer kHomeButtonSource = 1;  // the switcher asked for as the home button does

// What the fluid switcher keeps between a held-back layout and its completion.
struct FluidState {
  Retained transaction;  // the transaction whose app waits for the prompt
  Retained target;       // that app's identifier
};
FluidState& fluid() {
  static auto* state = new FluidState();
  return *state;
}

bool siriShowing() {
  return sendIfResponds<BOOL>(core::sharedInstanceOf("SBAssistantController"), kIsPluginVisible) !=
         0;
}

// What a toggle of the switcher does.
enum class Toggle {
  kAsk,      // held back behind the prompt
  kSwallow,  // a prompt is up: nothing happens
  kRun,      // the platform toggles
};

// Opening the switcher asks, unless it already shows (closing it never
// asks) or Siri covers the screen. A toggle that does not ask is swallowed
// while a parked toggle waits, and while another held-back call waits, so
// that nothing opens the switcher around the prompt; the replay of the
// parked toggle is no longer held, and passes.
Toggle judgeToggle(bool visible, SEL cmd) {
  if (settings::current().protectSwitcher && !visible && !siriShowing() && gatePasses()) {
    return Toggle::kAsk;
  }
  const core::CoordinatorState& c = core::state();
  if (c.switcherPromptPending) return Toggle::kSwallow;
  if (c.invocation) {
    SEL waiting = send<SEL>(c.invocation.get(), kSelector);
    if (std::strcmp(platform::selectorName(waiting), platform::selectorName(cmd)) != 0) {
      return Toggle::kSwallow;
    }
  }
  return Toggle::kRun;
}

// Parks a switcher toggle behind the prompt; false when no call could be
// built (the platform then toggles).
bool parkToggle(const Retained& call) {
  platform::AutoreleasePool pool;
  if (!holdBack(call.get(), platform::makeString(kSwitcherTitle))) return false;
  core::state().switcherPromptPending = true;
  return true;
}

// The switcher's view is presented inside the switcher's container view.
bool switcherInContainer() {
  Class container = platform::classNamed("SBSwitcherContainerView");
  id controller = core::sharedInstanceOf("SBMainSwitcherViewController");
  if (container == nullptr || controller == nullptr) return false;
  for (id view = sendIfResponds<id>(controller, kView); view != nullptr;
       view = sendIfResponds<id>(view, kSuperview)) {
    if (platform::isKindOf(view, container)) return true;
  }
  return false;
}

// The elements of a layout state, as an array (the platform keeps a set).
id elementsOf(id layoutState) {
  id elements = sendIfResponds<id>(layoutState, kElements);
  if (platform::respondsTo(elements, kAllObjects)) return send<id>(elements, kAllObjects);
  return platform::isKindOf(elements, "NSArray") ? elements : nullptr;
}

bool layoutHas(id elements, id identifier) {
  for (platform::UInteger i = 0; i < platform::arrayCount(elements); ++i) {
    id other = sendIfResponds<id>(platform::arrayObjectAt(elements, i), kIdentifier);
    if (other != nullptr && send<BOOL>(other, kIsEqual, identifier) != 0) return true;
  }
  return false;
}

// The protected app the new layout brings up: its first protected element,
// unless that app was on screen already before.
id layoutTarget(id elements, id previousElements) {
  for (platform::UInteger i = 0; i < platform::arrayCount(elements); ++i) {
    id identifier = sendIfResponds<id>(platform::arrayObjectAt(elements, i), kIdentifier);
    if (!isProtectedApp(identifier)) continue;
    return layoutHas(previousElements, identifier) ? nullptr : identifier;
  }
  return nullptr;
}

// The switcher asked for by a gesture that opened it: the request to open it
// waits, the switcher the gesture brought up closes again.
void holdSwitcherOpening(id self, SEL cmd, id request, BOOL updateScenes) {
  id controller = core::sharedInstanceOf("SBMainSwitcherViewController");
  Integer source = kHomeButtonSource;
  Retained call = platform::invocationOf(controller, kActivateWithSource, source);
  bool held = holdBack(call.get(), platform::makeString(kSwitcherTitle));
  platform::Hook<&fluidRunSceneLayout>::original(self, cmd, request, updateScenes);
  if (held) sendIfResponds<BOOL>(controller, kDismissNoninteractively);
}

}  // namespace

BOOL toggleSwitcherWithSource(id self, SEL cmd, Integer source) {
  switch (judgeToggle(sendIfResponds<BOOL>(self, kIsVisible) != 0, cmd)) {
    case Toggle::kAsk:
      if (parkToggle(platform::invocationOf(self, cmd, source))) return 0;
      break;
    case Toggle::kSwallow: return 0;
    case Toggle::kRun: break;
  }
  return platform::Hook<&toggleSwitcherWithSource>::original(self, cmd, source);
}

BOOL toggleSwitcherNoninteractively(id self, SEL cmd) {
  switch (judgeToggle(sendIfResponds<BOOL>(self, kIsVisible) != 0, cmd)) {
    case Toggle::kAsk:
      if (parkToggle(platform::invocationOf(self, cmd))) return 0;
      break;
    case Toggle::kSwallow: return 0;
    case Toggle::kRun: break;
  }
  return platform::Hook<&toggleSwitcherNoninteractively>::original(self, cmd);
}

void uiToggleSwitcher(id self, SEL cmd) {
  switch (judgeToggle(sendIfResponds<BOOL>(self, kIsAppSwitcherShowing) != 0, cmd)) {
    case Toggle::kAsk:
      if (parkToggle(platform::invocationOf(self, cmd))) return;
      break;
    case Toggle::kSwallow: return;
    case Toggle::kRun: break;
  }
  platform::Hook<&uiToggleSwitcher>::original(self, cmd);
}

void systemGestureChanged(id self, SEL cmd, id gesture) {
  // The gesture has begun to pull the switcher up: it is already showing.
  // A gesture that cannot be made to fail is left to the platform.
  bool opening =
      sendIfResponds<Integer>(gesture, kState) == kGestureChanged &&
      platform::respondsTo(gesture, kSetState) && platform::respondsTo(gesture, kSetEnabled) &&
      settings::current().protectSwitcher && gatePasses() && !siriShowing() &&
      switcherInContainer() &&
      sendIfResponds<BOOL>(core::sharedInstanceOf("SBUIController"), kIsAppSwitcherShowing) != 0;
  Retained call;
  if (opening) {
    call = platform::invocationOf(core::sharedInstanceOf("SBMainSwitcherViewController"),
                                  kToggleNoninteractively);
  }
  if (!call) {
    platform::Hook<&systemGestureChanged>::original(self, cmd, gesture);
    return;
  }
  // The gesture fails, so that the platform takes the switcher down again;
  // disabled meanwhile, so that the finger still on the screen cannot pull
  // it up once more. The switcher opens after the prompt, without a gesture.
  send<void>(gesture, kSetState, kGestureFailed);
  send<void>(gesture, kSetEnabled, BOOL{0});
  platform::Hook<&systemGestureChanged>::original(self, cmd, gesture);
  send<void>(gesture, kSetEnabled, BOOL{1});
  parkToggle(call);
}

void fluidRunSceneLayout(id self, SEL cmd, id request, BOOL updateScenes) {
  if (!base::flags().isIOS11) {
    platform::Hook<&fluidRunSceneLayout>::original(self, cmd, request, updateScenes);
    return;
  }
  platform::AutoreleasePool pool;
  id context = sendIfResponds<id>(request, kApplicationContext);
  id layout = sendIfResponds<id>(context, kLayoutState);
  id previous = sendIfResponds<id>(context, kPreviousLayoutState);
  Integer mode = sendIfResponds<Integer>(layout, kUnlockedEnvironmentMode);
  id target = layoutTarget(elementsOf(layout), elementsOf(previous));
  if (!gatePasses()) {
    platform::Hook<&fluidRunSceneLayout>::original(self, cmd, request, updateScenes);
    return;
  }
  if (target == nullptr) {
    bool showing =
        sendIfResponds<BOOL>(core::sharedInstanceOf("SBUIController"), kIsAppSwitcherShowing) != 0;
    if (mode == kSwitcherMode && settings::current().protectSwitcher && !showing) {
      holdSwitcherOpening(self, cmd, request, updateScenes);
      return;
    }
    platform::Hook<&fluidRunSceneLayout>::original(self, cmd, request, updateScenes);
    return;
  }
  // A protected app: the layout goes ahead without its scene, and the app
  // opens behind the prompt once the transaction is complete.
  fluid().transaction = Retained(self);
  fluid().target = keptCopy(target);
  platform::Hook<&fluidRunSceneLayout>::original(self, cmd, request, BOOL{0});
}

void fluidDidComplete(id self, SEL cmd) {
  platform::Hook<&fluidDidComplete>::original(self, cmd);
  FluidState& f = fluid();
  if (!f.transaction || f.transaction.get() != self) return;
  f.transaction.reset();
  auto target = std::make_shared<Retained>(std::move(f.target));
  // On the home screen, the prompt for the app; the app opens after it.
  platform::BlockOf<void()> prompt = ^{
    if (!*target) return;
    Retained identifier = std::move(*target);
    core::launchApplicationWithIdentifier(identifier.get());
  };
  id springBoard = core::application();
  if (platform::respondsTo(springBoard, kReturnToHomeScreen)) {
    send<void>(springBoard, kReturnToHomeScreen, platform::asObject(prompt));
  } else {
    prompt();
  }
}

void setReturnToDisplayItem(id self, SEL cmd, id item) {
  id identifier = sendIfResponds<id>(item, kDisplayIdentifier);
  if (settings::current().protectSwitcher && isProtectedApp(identifier) &&
      sendIfResponds<BOOL>(self, kIsVisible) != 0 && gatePasses()) {
    Retained call = platform::invocationOf(self, cmd, item);
    if (call) platform::retainArguments(call.get());
    if (holdBack(call.get(), identifier)) return;
  }
  platform::Hook<&setReturnToDisplayItem>::original(self, cmd, item);
}

}  // namespace kv::springboard
