// SpringBoard's services that answer what other processes ask it about:
// the icon model's visible icons, and the bulletin server's settings of a
// notification section (whether the Phone app's calls show on the lock
// screen).
#include <map>
#include <string>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;

namespace {

// ---- The icon model: every app the home screen shows ----

id visibleIconIdentifiers(id, SEL) {
  id set = platform::sendClass<id>(platform::classNamed("NSMutableSet"), Sel("set"));
  for (const auto& app : installedApps()) {
    send<void>(set, Sel("addObject:"), platform::makeString(app.bundleIdentifier));
  }
  return set;
}

// ---- The bulletin server and its sections ----

struct SectionState {
  std::string sectionID;
  bool showsInLockScreen = true;
};

BOOL sectionShows(id self, SEL) {
  return stateOf<SectionState>(self).showsInLockScreen ? 1 : 0;
}
void sectionSetShows(id self, SEL, BOOL shows) {
  stateOf<SectionState>(self).showsInLockScreen = shows != 0;
}
id sectionID(id self, SEL) {
  return platform::makeString(stateOf<SectionState>(self).sectionID);
}

// The sections as the server keeps them, by identifier.
std::map<std::string, bool>& storedSections() {
  static auto* sections = new std::map<std::string, bool>{{"com.apple.mobilephone", true}};
  return *sections;
}

// A copy of a stored section, as the server hands them out.
id newSection(const std::string& identifier) {
  auto it = storedSections().find(identifier);
  if (it == storedSections().end()) return nullptr;
  id section = host::newObject(platform::classNamed("BBSectionInfo"));
  stateOf<SectionState>(section) = SectionState{identifier, it->second};
  return send<id>(section, Sel("autorelease"));
}

id savedSectionInfo(id, SEL) {
  id info = platform::sendClass<id>(platform::classNamed("NSMutableDictionary"), Sel("dictionary"));
  for (const auto& [identifier, shows] : storedSections()) {
    send<void>(info, Sel("setObject:forKey:"), newSection(identifier),
               platform::makeString(identifier));
  }
  return info;
}
id sectionInfoForSectionID(id, SEL, id identifier, BOOL) {
  return newSection(platform::toString(identifier));
}
void setSectionInfo(id, SEL, id section, id identifier) {
  std::string name = platform::toString(identifier);
  if (section == nullptr || !storedSections().count(name)) return;
  bool shows = stateOf<SectionState>(section).showsInLockScreen;
  storedSections()[name] = shows;
  host::logEvent("bulletins",
                 "section " + name + " shows in the lock screen: " + (shows ? "yes" : "no"));
}

}  // namespace

void defineSpringBoardServices() {
  ClassBuilder("SBIconModel", "NSObject")
      .instance("visibleIconIdentifiers", imp(visibleIconIdentifiers), "@@:")
      .build();
  ClassBuilder("BBSectionInfo", "NSObject")
      .instance("sectionID", imp(sectionID), "@@:")
      .instance("showsInLockScreen", imp(sectionShows), "C@:")
      .instance("setShowsInLockScreen:", imp(sectionSetShows), "v@:C")
      .build();
  ClassBuilder server("BBServer", "NSObject");
  server.classMethod("sharedInstance", imp(sharedInstanceOf), "@@:");
  if (atLeast(10)) {
    server.instance("savedSectionInfo", imp(savedSectionInfo), "@@:")
        .instance("setSectionInfo:forSectionID:", imp(setSectionInfo), "v@:@@");
  } else {
    server.instance("_sectionInfoForSectionID:effective:", imp(sectionInfoForSectionID), "@@:@C")
        .instance("_setSectionInfo:forSectionID:", imp(setSectionInfo), "v@:@@");
  }
  server.build();
}

// The icon controller's model, made with the controller.
void giveIconControllerItsModel(id iconController) {
  id* slot = static_cast<id*>(platform::ivarAddress(iconController, "_iconModel"));
  if (slot == nullptr || *slot != nullptr) return;
  *slot = host::newObject(platform::classNamed("SBIconModel"));
}

}  // namespace kv::sim::frameworks
