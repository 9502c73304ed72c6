// Control Center's toggles as each system has them. Through iOS 10 they are
// push buttons (SBControlCenterButton and SpringBoardUI's
// SBUIControlCenterButton through iOS 9, CCUIControlCenterPushButton on
// iOS 10) that show the press at once and act in _pressAction; on iOS 11 the
// connectivity module's round buttons report to their view controllers, and
// module buttons to their module's controller inside a container that
// expands on a long press. Every touch goes through UIControl's tracking.
// The "cc" and "cc-expand" actions and the "cc" query.
#include <string>
#include <vector>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/actions.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendSuper;
using platform::Value;

namespace {

constexpr platform::UInteger kTouchUpInside = 1 << 6;

const Sel kAddTarget("addTarget:action:forControlEvents:");
const Sel kPressAction("_pressAction");
const Sel kButtonTapped("buttonTapped:");
const Sel kIsSelected("isSelected");
const Sel kIsTracking("isTracking");
const Sel kModuleIdentifier("moduleIdentifier");
const Sel kSetSelected("setSelected:");
const Sel kTouchesBegan("touchesBegan:withEvent:");
const Sel kTouchesEnded("touchesEnded:withEvent:");
const Sel kAddChild("addChildViewController:");
const Sel kExpand("_previewInteraction:viewControllerPresentationForPresentingViewController:");
const Sel kSetWithObject("setWithObject:");
const Sel kRebootForReason("rebootForReason:");
const Sel kReboot("reboot");

// One toggle: what a scenario calls it and whether it is on.
struct Toggle {
  std::string item;
  bool on;
  Retained button;      // the control a touch lands on
  Retained controller;  // iOS 11: the view controller the button reports to
  Retained container;   // iOS 11 modules: the module's container
};
std::vector<Toggle>& toggles() {
  static auto* list = new std::vector<Toggle>();
  return *list;
}
Toggle* toggleNamed(const std::string& item) {
  for (auto& t : toggles()) {
    if (t.item == item) return &t;
  }
  return nullptr;
}

// Which toggle an object (a button or a controller) belongs to.
struct OwnerState {
  std::string item;
};

// A push button whose identifier carries this reboots the device, as
// extensions' switches do.
constexpr const char* kRebootSwitch = "switch.reboot";

// The toggle changes and its button shows it.
void flip(Toggle& t) {
  t.on = !t.on;
  send<void>(t.button.get(), kSetSelected, BOOL(t.on));
  host::logEvent("control-center", t.item + (t.on ? " on" : " off"));
}

void reboot() {
  id manager = sharedOf("SBRestartManager");
  if (manager != nullptr) {
    send<void>(manager, kRebootForReason, platform::makeString("control center switch"));
  } else {
    send<void>(sharedOf("SpringBoard"), kReboot);
  }
}

// ---- Push buttons (through iOS 10) ----

id pushButtonIdentifier(id self, SEL) {
  return platform::makeString(stateOf<OwnerState>(self).item);
}
// The press acts: the toggle changes, or the reboot switch reboots.
void pushButtonPressAction(id self, SEL) {
  const std::string& item = stateOf<OwnerState>(self).item;
  host::logEvent("control-center", "press " + item);
  if (item == kRebootSwitch) {
    reboot();
    return;
  }
  if (Toggle* t = toggleNamed(item)) flip(*t);
}
// A push button shows the press at once: its looks flip as the finger
// lifts, before its actions run.
void pushButtonTouchesEnded(id self, SEL cmd, id touches, id event) {
  if (send<BOOL>(self, kIsTracking)) {
    send<void>(self, kSetSelected, BOOL(!send<BOOL>(self, kIsSelected)));
  }
  sendSuper<void>(platform::classNamed("UIControl"), self, cmd, touches, event);
}

// ---- iOS 11 ----

// A round button's or a module button's controller: its toggle changes.
void controllerButtonTapped(id self, SEL, id) {
  if (Toggle* t = toggleNamed(stateOf<OwnerState>(self).item)) flip(*t);
}
id containerModuleIdentifier(id self, SEL) {
  return platform::makeString(stateOf<OwnerState>(self).item);
}
// A long press expands the module; the presentation is its container.
id containerExpand(id self, SEL, id, id) {
  host::logEvent("control-center", "expanded " + stateOf<OwnerState>(self).item);
  return self;
}

// ---- Building ----

struct ToggleSpec {
  const char* item;
  bool on;
};
constexpr ToggleSpec kPushButtons[] = {
    {"airplane", false},       {"wifi", true},           {"bluetooth", true},
    {"do-not-disturb", false}, {"rotation-lock", false}, {kRebootSwitch, false},
};
struct RoundButtonSpec {
  const char* item;
  const char* controllerClass;
  bool on;
};
constexpr RoundButtonSpec kRoundButtons[] = {
    {"airplane", "CCUIConnectivityAirplaneViewController", false},
    {"cellular", "CCUIConnectivityCellularDataViewController", true},
    {"wifi", "CCUIConnectivityWifiViewController", true},
    {"bluetooth", "CCUIConnectivityBluetoothViewController", true},
    {"airdrop", "CCUIConnectivityAirDropViewController", false},
    {"hotspot", "CCUIConnectivityHotspotViewController", false},
};
constexpr const char* kConnectivityModule = "com.apple.control-center.ConnectivityModule";
constexpr const char* kButtonModules[] = {"com.apple.control-center.FlashlightModule",
                                          "com.apple.control-center.DoNotDisturbModule"};

id newContainer(const std::string& identifier) {
  id container = host::newObject(platform::classNamed("CCUIContentModuleContainerViewController"));
  stateOf<OwnerState>(container).item = identifier;
  return container;
}

void makePushButtons() {
  bool ios10 = atLeast(10);
  for (const auto& spec : kPushButtons) {
    // Through iOS 9 the stock toggles are SpringBoard's buttons, and the
    // switches extensions add are SpringBoardUI's own.
    const char* cls = ios10                                     ? "CCUIControlCenterPushButton"
                      : std::string(spec.item) == kRebootSwitch ? "SBUIControlCenterButton"
                                                                : "SBControlCenterButton";
    Retained button = Retained::adopt(newView(cls, CGRect{{0, 0}, {60, 60}}));
    stateOf<OwnerState>(button.get()).item = spec.item;
    send<void>(button.get(), kSetSelected, BOOL(spec.on));
    send<void>(button.get(), kAddTarget, button.get(), static_cast<SEL>(kPressAction),
               kTouchUpInside);
    toggles().push_back({spec.item, spec.on, button, Retained(), Retained()});
  }
}

void makeModules() {
  Retained connectivity = Retained::adopt(newContainer(kConnectivityModule));
  for (const auto& spec : kRoundButtons) {
    Retained controller =
        Retained::adopt(host::newObject(platform::classNamed(spec.controllerClass)));
    stateOf<OwnerState>(controller.get()).item = spec.item;
    send<void>(connectivity.get(), kAddChild, controller.get());
    Retained button = Retained::adopt(newView("CCUIRoundButton", CGRect{{0, 0}, {54, 54}}));
    send<void>(button.get(), kSetSelected, BOOL(spec.on));
    send<void>(button.get(), kAddTarget, controller.get(), static_cast<SEL>(kButtonTapped),
               kTouchUpInside);
    toggles().push_back({spec.item, spec.on, button, controller, connectivity});
  }
  for (const char* identifier : kButtonModules) {
    Retained container = Retained::adopt(newContainer(identifier));
    Retained controller =
        Retained::adopt(host::newObject(platform::classNamed("CCUIButtonModuleViewController")));
    stateOf<OwnerState>(controller.get()).item = identifier;
    send<void>(container.get(), kAddChild, controller.get());
    Retained button = Retained::adopt(newView("CCUIButtonModuleView", CGRect{{0, 0}, {70, 70}}));
    send<void>(button.get(), kAddTarget, controller.get(), static_cast<SEL>(kButtonTapped),
               kTouchUpInside);
    toggles().push_back({identifier, false, button, controller, container});
  }
}

bool controlCenterReachable(std::string* error) {
  if (!springBoard().screenOn) {
    *error = "the screen is off: no Control Center";
    return false;
  }
  return true;
}

// cc ITEM: a tap on the toggle: the finger goes down on its button and
// lifts inside it.
Value ccAction(const host::ActionRequest& request, std::string* error) {
  if (!controlCenterReachable(error)) return {};
  Toggle* t = toggleNamed(request.args[0]);
  if (t == nullptr) {
    *error = "Control Center has no toggle " + request.args[0] + " here";
    return {};
  }
  host::logEvent("control-center", "tap " + t->item);
  Retained touch = Retained::adopt(host::newObject(platform::classNamed("UITouch")));
  Retained event = Retained::adopt(host::newObject(platform::classNamed("UIEvent")));
  id touches = platform::sendClass<id>(platform::classNamed("NSSet"), kSetWithObject, touch.get());
  Retained button = t->button;
  send<void>(button.get(), kTouchesBegan, touches, event.get());
  send<void>(button.get(), kTouchesEnded, touches, event.get());
  return {};
}

// cc-expand MODULE-ID: a long press on a module (iOS 11).
Value ccExpandAction(const host::ActionRequest& request, std::string* error) {
  if (!controlCenterReachable(error)) return {};
  for (auto& t : toggles()) {
    if (!t.container ||
        platform::toString(send<id>(t.container.get(), kModuleIdentifier)) != request.args[0]) {
      continue;
    }
    Retained interaction = Retained::adopt(host::newObject(platform::classNamed("NSObject")));
    send<id>(t.container.get(), kExpand, interaction.get(), id{nullptr});
    return {};
  }
  *error = "Control Center has no module " + request.args[0] + " to expand here";
  return {};
}

// The "cc" query: whether ITEM is on, and whether its button shows it on.
Value ccQuery(const std::vector<std::string>& args) {
  Toggle* t = args.empty() ? nullptr : toggleNamed(args[0]);
  if (t == nullptr) return Value();
  return Value::dictionary({
      {"on", Value::boolean(t->on)},
      {"shows", Value::boolean(send<BOOL>(t->button.get(), kIsSelected) != 0)},
  });
}

}  // namespace

void defineSpringBoardControlCenter() {
  if (!atLeast(11)) {
    bool ios10 = atLeast(10);
    ClassBuilder base(ios10 ? "CCUIControlCenterButton" : "SBUIControlCenterButton", "UIButton");
    addCatalogued(base, "-_pressAction", imp(pushButtonPressAction));
    base.instance("touchesEnded:withEvent:", imp(pushButtonTouchesEnded), "v@:@@");
    ClassBuilder push(ios10 ? "CCUIControlCenterPushButton" : "SBControlCenterButton",
                      base.name().c_str());
    addCatalogued(base, "-identifier", imp(pushButtonIdentifier));
    addCatalogued(push, "-identifier", imp(pushButtonIdentifier));
    base.build();
    push.build();
    makePushButtons();
  } else {
    ClassBuilder container("CCUIContentModuleContainerViewController", "UIViewController");
    container.instance("moduleIdentifier", imp(containerModuleIdentifier), "@@:");
    addCatalogued(container,
                  "-_previewInteraction:viewControllerPresentationForPresentingViewController:",
                  imp(containerExpand));
    container.build();
    ClassBuilder("CCUIButtonModuleViewController", "UIViewController")
        .instance("buttonTapped:", imp(controllerButtonTapped), "v@:@")
        .build();
    ClassBuilder("CCUIConnectivityButtonViewController", "CCUIButtonModuleViewController").build();
    for (const auto& spec : kRoundButtons) {
      ClassBuilder(spec.controllerClass, "CCUIConnectivityButtonViewController").build();
    }
    ClassBuilder("CCUIRoundButton", "UIControl").build();
    ClassBuilder("CCUIButtonModuleView", "UIControl").build();
    makeModules();
  }
  host::registerAction("cc", ccAction);
  host::registerAction("cc-expand", ccExpandAction);
  host::registerQuery("cc", ccQuery);
}

}  // namespace kv::sim::frameworks
