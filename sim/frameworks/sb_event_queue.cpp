// SpringBoard's workspace event queue, which runs labelled events one after
// another (extensions put their own there), and the front-display
// announcement SpringBoard makes to itself whenever what is in front changes.
#include <map>
#include <string>

#include "platform/foundation.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/springboard.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

namespace {

using host::ClassBuilder;
using host::imp;
using platform::Sel;
using platform::send;

std::map<id, std::string>& labels() {
  static auto* table = new std::map<id, std::string>();
  return *table;
}

id eventLabel(id self, SEL) {
  return platform::makeString(labels()[self]);
}

void setEventLabel(id self, SEL, id label) {
  labels()[self] = platform::toString(label);
}

// A plain event has nothing to do; the events of others override this.
void executeEvent(id, SEL) {}

// The queue is idle whenever a scenario acts: an event runs at once.
void executeOrAppendEvent(id, SEL, id event) {
  host::logEvent("workspace", "event " + platform::toString(send<id>(event, Sel("label"))));
  send<void>(event, Sel("execute"));
}

// SpringBoard's own, where it notes the new front display.
void frontDisplayDidChange(id, SEL, id) {}

}  // namespace

void addFrontDisplayChange(ClassBuilder& springBoardClass) {
  addCatalogued(springBoardClass, "-frontDisplayDidChange:", imp(frontDisplayDidChange));
}

void announceFrontDisplay(const std::string& bundleIdentifier) {
  id display = nullptr;
  if (bundleIdentifier != "home") {
    id controller = send<id>(platform::asId(platform::classNamed("SBApplicationController")),
                             Sel("sharedInstance"));
    display = send<id>(controller, Sel("applicationWithBundleIdentifier:"),
                       platform::makeString(bundleIdentifier));
  }
  send<void>(sharedOf("SpringBoard"), Sel("frontDisplayDidChange:"), display);
}

void defineSpringBoardEventQueue() {
  ClassBuilder("SBWorkspaceEvent", "NSObject")
      .instance("label", imp(eventLabel), "@@:")
      .instance("setLabel:", imp(setEventLabel), "v@:@")
      .instance("execute", imp(executeEvent), "v@:")
      .build();
  ClassBuilder queue("SBWorkspaceEventQueue", "NSObject");
  addCatalogued(queue, "+sharedInstance", imp(sharedInstanceOf));
  addCatalogued(queue, "-executeOrAppendEvent:", imp(executeOrAppendEvent));
  if (cataloguedHere("SBWorkspaceEventQueue")) queue.build();
}

}  // namespace kv::sim::frameworks
