// Control Center's toggles and modules.
#include "springboard/control_center.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/invocation.h"
#include "platform/runtime.h"
#include "settings/settings.h"
#include "springboard/gate.h"

namespace kv::springboard {

namespace {

using platform::Retained;
using platform::Sel;
using platform::sendIfResponds;

const Sel kAllTargets("allTargets");
const Sel kAllObjects("allObjects");
const Sel kSendActionsForControlEvents("sendActionsForControlEvents:");
const Sel kTouchesCancelled("touchesCancelled:withEvent:");
const Sel kCapitalizedString("capitalizedString");
const Sel kParentViewController("parentViewController");
const Sel kModuleIdentifier("moduleIdentifier");
const Sel kIdentifier("identifier");
const Sel kIsSelected("isSelected");
const Sel kSetSelected("setSelected:");
const Sel kIsHighlighted("isHighlighted");
const Sel kSetHighlighted("setHighlighted:");

constexpr platform::UInteger kTouchUpInside = 1 << 6;
constexpr const char* kOwnSwitch = "net.quorvan.kavelin.switch";

// The connectivity round buttons of iOS 11, named by the controller they
// report to.
struct RoundButtonItem {
  const char* controllerClass;
  const char* item;
};
constexpr RoundButtonItem kRoundButtonItems[] = {
    {"CCUIConnectivityAirplaneViewController", "airplane"},
    {"CCUIConnectivityCellularDataViewController", "cellular"},
    {"CCUIConnectivityWifiViewController", "wifi"},
    {"CCUIConnectivityBluetoothViewController", "bluetooth"},
    {"CCUIConnectivityAirDropViewController", "airdrop"},
    {"CCUIConnectivityHotspotViewController", "hotspot"},
};

bool listed(const settings::ItemList& list, const std::string& item) {
  return list.contains(item);
}

// The control's targets, in the order the set gives them.
std::vector<id> targetsOf(id control) {
  id all = sendIfResponds<id>(sendIfResponds<id>(control, kAllTargets), kAllObjects);
  std::vector<id> out;
  for (platform::UInteger i = 0; i < platform::arrayCount(all); ++i) {
    out.push_back(platform::arrayObjectAt(all, i));
  }
  return out;
}

// The item of a round button: the first target that is one of the
// connectivity controllers names it.
std::optional<std::string> roundButtonItem(id button) {
  for (id target : targetsOf(button)) {
    for (const auto& known : kRoundButtonItems) {
      if (platform::isKindOf(target, known.controllerClass)) return std::string(known.item);
    }
  }
  return std::nullopt;
}

// The identifier of the module a module button belongs to: its controller's
// container holds it.
std::optional<std::string> moduleButtonIdentifier(id view) {
  for (id target : targetsOf(view)) {
    id container = sendIfResponds<id>(target, kParentViewController);
    if (platform::respondsTo(container, kModuleIdentifier)) {
      return platform::stringOf(platform::send<id>(container, kModuleIdentifier));
    }
  }
  return std::nullopt;
}

bool protectedCCItem(const std::optional<std::string>& item) {
  return item && listed(settings::current().protectedCCItems, *item);
}

id capitalized(const std::string& item) {
  return platform::send<id>(platform::makeString(item), kCapitalizedString);
}

// Parks the call (object arguments retained) behind the prompt titled `title`.
bool holdCall(const Retained& call, id title) {
  if (!call) return false;
  platform::retainArguments(call.get());
  return holdBack(call.get(), title);
}

// Which lists a push button's identifier is looked up in.
enum class PushLists {
  kEvery,            // apps, Control Center settings items, items and switches
  kItemsAndSwitches  // Control Center items and switches only
};

// A push button is guarded when its identifier is listed, is the product's
// own switch, or, with power-off protected, powers off or reboots.
bool pushButtonGuarded(const std::string& identifier, PushLists lists) {
  const settings::Settings& s = settings::current();
  bool named = listed(s.protectedCCItems, identifier) || listed(s.protectedSwitches, identifier) ||
               identifier == kOwnSwitch ||
               (lists == PushLists::kEvery && (listed(s.protectedApps, identifier) ||
                                               listed(s.protectedCCSettingsItems, identifier)));
  bool powerAction = s.protectPowerDown && (identifier.find("poweroff") != std::string::npos ||
                                            identifier.find("reboot") != std::string::npos);
  return (named || powerAction) && gatePasses();
}

// Holds a push button's press. The press has already flipped the button's
// looks; they are flipped back, since the toggle has not changed.
bool holdPushButton(id button, SEL cmd, PushLists lists) {
  auto identifier = platform::stringOf(sendIfResponds<id>(button, kIdentifier));
  if (!identifier || !pushButtonGuarded(*identifier, lists)) return false;
  platform::AutoreleasePool pool;
  if (!holdCall(platform::invocationOf(button, cmd), capitalized(*identifier))) return false;
  sendIfResponds(button, kSetSelected, BOOL(!sendIfResponds<BOOL>(button, kIsSelected)));
  sendIfResponds(button, kSetHighlighted, BOOL(!sendIfResponds<BOOL>(button, kIsHighlighted)));
  return true;
}

}  // namespace

// The touch is cancelled rather than ended, so the toggle does not change;
// the replay sends touch-up-inside, which toggles it.
void roundButtonTouchesEnded(id self, SEL cmd, id touches, id event) {
  auto item = roundButtonItem(self);
  if (protectedCCItem(item) && gatePasses()) {
    platform::AutoreleasePool pool;
    if (holdCall(platform::invocationOf(self, kSendActionsForControlEvents, kTouchUpInside),
                 capitalized(*item))) {
      platform::send<void>(self, kTouchesCancelled, touches, event);
      return;
    }
  }
  platform::Hook<&roundButtonTouchesEnded>::original(self, cmd, touches, event);
}

void moduleButtonTouchesEnded(id self, SEL cmd, id touches, id event) {
  auto identifier = moduleButtonIdentifier(self);
  if (protectedCCItem(identifier) && gatePasses()) {
    platform::AutoreleasePool pool;
    if (holdCall(platform::invocationOf(self, cmd, touches, event),
                 platform::makeString(*identifier))) {
      return;
    }
  }
  platform::Hook<&moduleButtonTouchesEnded>::original(self, cmd, touches, event);
}

// A long press expands a module; a protected one waits and presents nothing
// meanwhile.
id moduleExpansion(id self, SEL cmd, id interaction, id presentingController) {
  auto identifier = platform::stringOf(sendIfResponds<id>(self, kModuleIdentifier));
  if (protectedCCItem(identifier) && gatePasses()) {
    platform::AutoreleasePool pool;
    if (holdCall(platform::invocationOf(self, cmd, interaction, presentingController),
                 platform::makeString(*identifier))) {
      return nullptr;
    }
  }
  return platform::Hook<&moduleExpansion>::original(self, cmd, interaction, presentingController);
}

void pushButtonPress(id self, SEL cmd) {
  if (holdPushButton(self, cmd, PushLists::kEvery)) return;
  platform::Hook<&pushButtonPress>::original(self, cmd);
}

void controlCenterButtonPress(id self, SEL cmd) {
  if (holdPushButton(self, cmd, PushLists::kEvery)) return;
  platform::Hook<&controlCenterButtonPress>::original(self, cmd);
}

void uiControlCenterButtonPress(id self, SEL cmd) {
  if (holdPushButton(self, cmd, PushLists::kItemsAndSwitches)) return;
  platform::Hook<&uiControlCenterButtonPress>::original(self, cmd);
}

}  // namespace kv::springboard
