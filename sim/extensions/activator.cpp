// Activator: gestures and hardware events ("events") assigned to actions
// ("listeners"). The event goes to LAActivator, which hands it to the
// listener assigned: an app's bundle identifier launches the app, a switch's
// listener ("switch-flip.ID", or the product's own) flips it, and
// "libactivator.system.show-switcher" toggles the app switcher.
#include <map>

#include "sim/extensions/extension.h"

namespace kv::sim::extensions {

namespace {

using platform::Sel;
using platform::Value;

constexpr const char* kShowSwitcher = "libactivator.system.show-switcher";
constexpr long kActivatorSource = 1;

struct EventData {
  std::string name;
  std::string listener;
};

std::map<id, EventData>& events() {
  static auto* table = new std::map<id, EventData>();
  return *table;
}

id shared(const char* className) {
  static auto* instances = new std::map<std::string, id>();
  id& instance = (*instances)[className];
  if (instance == nullptr) instance = newInstance(className);
  return instance;
}

id sharedInstance(id cls, SEL) {
  return shared(platform::classNameOf(cls));
}

id eventName(id self, SEL) {
  return platform::makeString(events()[self].name);
}

bool isSwitchListener(const std::string& listener) {
  return listener.rfind("switch-flip.", 0) == 0 ||
         listener.find("net.quorvan.kavelin") != std::string::npos;
}

// -[LAActivator sendEventToListener:]: the assigned listener receives it.
void sendEventToListener(id, SEL, id event) {
  const EventData& data = events()[event];
  host::logEvent("activator", data.name + " -> " + data.listener);
  if (data.listener == kShowSwitcher) {
    platform::send<void>(shared("LASimpleListener"), Sel("activateSwitcher"));
  } else if (isSwitchListener(data.listener)) {
    platform::send<void>(shared("LASwitchListener"), Sel("activator:receiveEvent:forListenerName:"),
                         shared("LAActivator"), event, platform::makeString(data.listener));
  } else {
    id app = applicationFor(data.listener);
    if (app == nullptr) {
      host::logEvent("activator", "no listener " + data.listener);
      return;
    }
    platform::send<void>(shared("LAApplicationListener"), Sel("activateApplication:"), app);
  }
}

void activateApplication(id, SEL, id application) {
  launchApplication(platform::send<id>(application, Sel("bundleIdentifier")));
}

void receiveEvent(id, SEL, id, id, id listenerName) {
  host::logEvent("activator", "switch " + platform::toString(listenerName) + " flipped");
}

// The switcher as SpringBoard's own toggle opens or closes it.
void activateSwitcher(id, SEL) {
  id main = platform::sendClass<id>(platform::classNamed("SBMainSwitcherViewController"),
                                    Sel("sharedInstance"));
  if (main == nullptr) {
    id ui = platform::sendClass<id>(platform::classNamed("SBUIController"), Sel("sharedInstance"));
    platform::send<void>(ui, Sel("_toggleSwitcher"));
  } else if (platform::respondsTo(main, Sel("toggleSwitcherNoninteractivelyWithSource:"))) {
    platform::send<BOOL>(main, Sel("toggleSwitcherNoninteractivelyWithSource:"), kActivatorSource);
  } else {
    platform::send<BOOL>(main, Sel("toggleSwitcherNoninteractively"));
  }
}

// activator EVENT LISTENER: the event happens (a gesture, a press of a
// button, a finger on the sensor) with LISTENER assigned to it.
Value eventAction(const host::ActionRequest& request, std::string*) {
  id event = newInstance("LAEvent");
  events()[event] = {request.args[0], request.args[1]};
  // Events stay: a listener's call held for later still refers to its event.
  platform::send<void>(shared("LAActivator"), Sel("sendEventToListener:"), event);
  return {};
}

__attribute__((constructor)) void loadActivator() {
  defineClass("LAEvent", "NSObject", {{"name", imp(eventName), "@@:"}});
  defineClass("LAActivator", "NSObject",
              {{"sendEventToListener:", imp(sendEventToListener), "v@:@"}},
              {{"sharedInstance", imp(sharedInstance), "@@:"}});
  defineClass("LAApplicationListener", "NSObject",
              {{"activateApplication:", imp(activateApplication), "v@:@"}},
              {{"sharedInstance", imp(sharedInstance), "@@:"}});
  defineClass("LASwitchListener", "NSObject",
              {{"activator:receiveEvent:forListenerName:", imp(receiveEvent), "v@:@@@"}},
              {{"sharedInstance", imp(sharedInstance), "@@:"}});
  defineClass("LASimpleListener", "NSObject", {{"activateSwitcher", imp(activateSwitcher), "v@:"}},
              {{"sharedInstance", imp(sharedInstance), "@@:"}});
  host::registerAction("activator", eventAction);
}

}  // namespace

}  // namespace kv::sim::extensions
