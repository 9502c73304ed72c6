// Tamsin: a caller screen of its own inside SpringBoard during calls. Its
// name line shows the caller, set whenever it takes the current calls' info;
// a button opens Contacts.
#include "sim/extensions/extension.h"

namespace kv::sim::extensions {

namespace {

using platform::Sel;
using platform::Value;

std::string gCaller;  // the caller of the call in progress

// The name line: what it reads goes to the timeline.
void labelSetText(id, SEL, id text) {
  host::logEvent("tamsin", "name " + platform::toString(text));
}

id nameLabel(id, SEL) {
  static id label = newInstance("TamsinNameLabel");
  return label;
}

void setInfoForCurrentCalls(id self, SEL) {
  platform::send<void>(platform::send<id>(self, Sel("nameLabel")), Sel("setText:"),
                       platform::makeString(gCaller));
}

void launchAddressBookApp(id, SEL) {
  launchApplication(platform::makeString("com.apple.MobileAddressBook"));
}

id sharedController(id, SEL) {
  static id controller = newInstance("TamsinControllerModern");
  return controller;
}

id controller() {
  return platform::sendClass<id>(platform::classNamed("TamsinControllerModern"),
                                 Sel("sharedInstance"));
}

// tamsin-call NAME: a call from NAME comes in; Tamsin's screen shows it.
Value callAction(const host::ActionRequest& request, std::string*) {
  gCaller = request.args[0];
  platform::send<void>(controller(), Sel("setInfoForCurrentCalls"));
  return {};
}

// tamsin-contacts: tap the Contacts button of Tamsin's call screen.
Value contactsAction(const host::ActionRequest&, std::string*) {
  platform::send<void>(controller(), Sel("launchAddressBookApp"));
  return {};
}

__attribute__((constructor)) void loadTamsin() {
  defineClass("TamsinNameLabel", "NSObject", {{"setText:", imp(labelSetText), "v@:@"}});
  defineClass("TamsinControllerModern", "NSObject",
              {{"nameLabel", imp(nameLabel), "@@:"},
               {"setInfoForCurrentCalls", imp(setInfoForCurrentCalls), "v@:"},
               {"launchAddressBookApp", imp(launchAddressBookApp), "v@:"}},
              {{"sharedInstance", imp(sharedController), "@@:"}});
  host::registerAction("tamsin-call", callAction);
  host::registerAction("tamsin-contacts", contactsAction);
}

}  // namespace

}  // namespace kv::sim::extensions
