// Pellum: a gesture back to the previous app. It puts its own event,
// labelled "ActivatePellum", on SpringBoard's workspace event queue; the
// event, when it runs, brings that app to the front.
#include <map>

#include "sim/extensions/extension.h"

namespace kv::sim::extensions {

namespace {

using platform::Sel;
using platform::Value;

std::map<id, std::string>& targets() {
  static auto* table = new std::map<id, std::string>();
  return *table;
}

void execute(id self, SEL) {
  launchApplication(platform::makeString(targets()[self]));
}

// pellum BUNDLE-ID: Pellum's gesture back to the previous app, which it
// shows as BUNDLE-ID.
Value gestureAction(const host::ActionRequest& request, std::string*) {
  id event = newInstance("PellumWorkspaceEvent");
  targets()[event] = request.args[0];  // kept: a held-back event runs later
  platform::send<void>(event, Sel("setLabel:"), platform::makeString("ActivatePellum"));
  id queue =
      platform::sendClass<id>(platform::classNamed("SBWorkspaceEventQueue"), Sel("sharedInstance"));
  platform::send<void>(queue, Sel("executeOrAppendEvent:"), event);
  return {};
}

__attribute__((constructor)) void loadPellum() {
  defineClass("PellumWorkspaceEvent", "SBWorkspaceEvent", {{"execute", imp(execute), "v@:"}});
  host::registerAction("pellum", gestureAction);
}

}  // namespace

}  // namespace kv::sim::extensions
