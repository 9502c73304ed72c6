// Tamsin: a caller screen of its own during calls, with a button that opens
// Contacts.
#include "sim/extensions/extension.h"

namespace kv::sim::extensions {

namespace {

using platform::Sel;
using platform::Value;

void launchAddressBookApp(id, SEL) {
  launchApplication(platform::makeString("com.apple.MobileAddressBook"));
}

id sharedController(id, SEL) {
  static id controller = newInstance("TamsinControllerModern");
  return controller;
}

// tamsin-contacts: tap the Contacts button of Tamsin's call screen.
Value contactsAction(const host::ActionRequest&, std::string*) {
  platform::send<void>(platform::sendClass<id>(platform::classNamed("TamsinControllerModern"),
                                               Sel("sharedInstance")),
                       Sel("launchAddressBookApp"));
  return {};
}

__attribute__((constructor)) void loadTamsin() {
  defineClass("TamsinControllerModern", "NSObject",
              {{"launchAddressBookApp", imp(launchAddressBookApp), "v@:"}},
              {{"sharedInstance", imp(sharedController), "@@:"}});
  host::registerAction("tamsin-contacts", contactsAction);
}

}  // namespace

}  // namespace kv::sim::extensions
