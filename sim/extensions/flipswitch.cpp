// Flipswitch: switch buttons other extensions place in their panels. A
// button knows its switch by "switchIdentifier"; a press flips the switch, a
// hold opens the switch's settings. The public button class and the private
// one of its own panels both answer.
#include <map>

#include "sim/extensions/extension.h"

namespace kv::sim::extensions {

namespace {

using platform::Value;

std::map<id, std::string>& switchOf() {
  static auto* table = new std::map<id, std::string>();
  return *table;
}

std::map<std::string, bool>& switchStates() {
  static auto* table = new std::map<std::string, bool>();
  return *table;
}

id switchIdentifier(id self, SEL) {
  return platform::makeString(switchOf()[self]);
}

void pressed(id self, SEL) {
  const std::string& identifier = switchOf()[self];
  bool on = !switchStates()[identifier];
  switchStates()[identifier] = on;
  host::logEvent("flipswitch", identifier + (on ? " on" : " off"));
}

void held(id self, SEL) {
  host::logEvent("flipswitch", switchOf()[self] + " settings opened");
}

// The button of `identifier` in the panel: private buttons in Flipswitch's
// own panels, public ones elsewhere; one of each per switch.
id buttonFor(const std::string& identifier, bool privateButton) {
  static auto* buttons = new std::map<std::string, id>();
  std::string key = (privateButton ? "_" : "") + identifier;
  id& button = (*buttons)[key];
  if (button == nullptr) {
    button = newInstance(privateButton ? "_FSSwitchButton" : "FSSwitchButton");
    switchOf()[button] = identifier;
  }
  return button;
}

bool privateWanted(const host::ActionRequest& request) {
  return request.args.size() > 1 && request.args[1] == "private";
}

// switch-press ID [private] / switch-hold ID [private]: the user's finger
// reaches the button, which handles it as its own control event.
Value pressAction(const host::ActionRequest& request, std::string*) {
  platform::send<void>(buttonFor(request.args[0], privateWanted(request)),
                       platform::Sel("_pressed"));
  return {};
}

Value holdAction(const host::ActionRequest& request, std::string*) {
  platform::send<void>(buttonFor(request.args[0], privateWanted(request)), platform::Sel("_held"));
  return {};
}

__attribute__((constructor)) void loadFlipswitch() {
  for (const char* name : {"FSSwitchButton", "_FSSwitchButton"}) {
    defineClass(name, "NSObject",
                {{"switchIdentifier", imp(switchIdentifier), "@@:"},
                 {"_pressed", imp(pressed), "v@:"},
                 {"_held", imp(held), "v@:"}});
  }
  host::registerAction("switch-press", pressAction);
  host::registerAction("switch-hold", holdAction);
}

}  // namespace

}  // namespace kv::sim::extensions
