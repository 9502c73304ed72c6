// Notification bulletins: BBBulletin, the bulletins SpringBoard holds (each
// also handed to the notification source from iOS 10 on), and their launch
// when tapped: through the user agent with that version's selector (iOS 8
// to 10), or an open-application request whose origin is the bulletin's
// destination (iOS 11). The "bulletin" and "tap-bulletin" actions.
#include <string>
#include <vector>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/notification_center.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/state.h"
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
using platform::Value;

namespace {

// Where a bulletin was tapped, as the user agent's origin argument.
constexpr long kNotificationCenterOrigin = 0;  // a banner or the notification centre
constexpr long kLockScreenOrigin = 1;
// The same as iOS 11's launch origins.
constexpr const char* kNotificationCenterDestination = "BulletinDestinationNotificationCenter";
constexpr const char* kLockScreenDestination = "BulletinDestinationLockScreen";
constexpr unsigned long long kEveryFeed =
    0xffff;  // lock screen, banner, notification centre, sound

// The user agent's bulletin launch of each version, newest first.
constexpr const char* kLaunchWithResponse =
    "-launchFromPushOrLocalBulletin:actionIdentifier:userResponse:origin:";
constexpr const char* kLaunchWithAction = "-launchFromPushOrLocalBulletin:actionIdentifier:origin:";
constexpr const char* kLaunch = "-launchFromPushOrLocalBulletin:origin:";

struct BulletinState {
  std::string section;  // the app's bundle identifier
  std::string message;
  std::string bulletinID;
  std::string title;  // "" for the app's name
  Retained sound;
  Retained date;
};

// The bulletins not yet tapped, oldest first.
std::vector<Retained>& bulletins() {
  static auto* list = new std::vector<Retained>();
  return *list;
}

// ---- BBBulletin ----

id bulletinSection(id self, SEL) {
  return platform::makeString(stateOf<BulletinState>(self).section);
}
id bulletinMessage(id self, SEL) {
  return platform::makeString(stateOf<BulletinState>(self).message);
}
id bulletinTitle(id self, SEL) {
  const auto& state = stateOf<BulletinState>(self);
  if (!state.title.empty()) return platform::makeString(state.title);
  return send<id>(applicationNamed(state.section), Sel("displayName"));
}
void bulletinSetMessage(id self, SEL, id message) {
  stateOf<BulletinState>(self).message = platform::toString(message);
}
id bulletinSound(id self, SEL) {
  return stateOf<BulletinState>(self).sound.get();
}
void bulletinSetSound(id self, SEL, id sound) {
  stateOf<BulletinState>(self).sound.reset(sound);
}
id bulletinDate(id self, SEL) {
  return stateOf<BulletinState>(self).date.get();
}
void bulletinSetDate(id self, SEL, id date) {
  stateOf<BulletinState>(self).date.reset(date);
}
id bulletinID(id self, SEL) {
  return platform::makeString(stateOf<BulletinState>(self).bulletinID);
}

// ---- The user agent's launches (iOS 8 to 10) ----

BOOL launchBulletin(id bulletin) {
  id app = applicationNamed(platform::toString(send<id>(bulletin, Sel("section"))));
  if (app == nullptr) return 0;
  activate(app, "OpenApplication");
  return 1;
}
BOOL launchWithResponse(id, SEL, id bulletin, id, id, int) {
  return launchBulletin(bulletin);
}
BOOL launchWithAction(id, SEL, id bulletin, id, int) {
  return launchBulletin(bulletin);
}
BOOL launch(id, SEL, id bulletin, long) {
  return launchBulletin(bulletin);
}

// ---- Actions ----

// bulletin BUNDLE-ID TEXT [feed N]
Value bulletinAction(const host::ActionRequest& request, std::string* error) {
  if (applicationNamed(request.args[0]) == nullptr) {
    *error = "no app " + request.args[0] + " to post a bulletin for";
    return {};
  }
  unsigned long long feed = kEveryFeed;
  if (request.args.size() == 4 && request.args[2] == "feed" &&
      request.args[3].find_first_not_of("0123456789") == std::string::npos) {
    feed = std::stoull(request.args[3]);
  } else if (request.args.size() != 2) {
    *error = "bulletin BUNDLE-ID TEXT [feed N]";
    return {};
  }
  Retained bulletin = Retained::adopt(newBulletin(request.args[0], "", request.args[1]));
  bulletins().push_back(bulletin);
  host::logEvent("bulletin", "posted " + request.args[0] + " " + quoteForLog(request.args[1]));
  deliverBulletin(bulletin.get(), feed);
  return {};
}

// The bulletin a tap names: the latest of an app, or one by its index among
// those not yet tapped (oldest 0).
std::vector<Retained>::iterator findBulletin(const std::string& which) {
  auto& list = bulletins();
  if (!which.empty() && which.find_first_not_of("0123456789") == std::string::npos) {
    size_t index = std::stoul(which);
    return index < list.size() ? list.begin() + static_cast<long>(index) : list.end();
  }
  for (auto it = list.rbegin(); it != list.rend(); ++it) {
    if (stateOf<BulletinState>(it->get()).section == which) return std::next(it).base();
  }
  return list.end();
}

// tap-bulletin BUNDLE-ID|INDEX: on the lock screen while locked, else in the
// notification centre. A locked device keeps its lock screen over the app.
Value tapBulletinAction(const host::ActionRequest& request, std::string* error) {
  auto found = findBulletin(request.args[0]);
  if (found == bulletins().end() || !springBoard().screenOn) {
    *error = springBoard().screenOn ? "no bulletin " + request.args[0] + " to tap"
                                    : "the screen is off: no bulletin can be tapped";
    return {};
  }
  Retained bulletin = *found;
  bulletins().erase(found);
  const auto& state = stateOf<BulletinState>(bulletin.get());
  bool locked = springBoard().locked;
  host::logEvent("bulletin", "tapped " + state.section + (locked ? " on the lock screen" : ""));
  id userAgent = sharedOf("SBUserAgent");
  long origin = locked ? kLockScreenOrigin : kNotificationCenterOrigin;
  auto here = [](const char* method) { return cataloguedHere("SBUserAgent", method) != nullptr; };
  if (here(kLaunchWithResponse)) {
    send<BOOL>(userAgent, Sel(kLaunchWithResponse + 1), bulletin.get(), id{nullptr}, id{nullptr},
               static_cast<int>(origin));
  } else if (here(kLaunchWithAction)) {
    send<BOOL>(userAgent, Sel(kLaunchWithAction + 1), bulletin.get(), id{nullptr},
               static_cast<int>(origin));
  } else if (here(kLaunch)) {
    send<BOOL>(userAgent, Sel(kLaunch + 1), bulletin.get(), origin);
  } else {
    requestOpenApplication(
        {state.section, false, locked ? kLockScreenDestination : kNotificationCenterDestination});
  }
  return {};
}

}  // namespace

id newBulletin(const std::string& section, const std::string& title, const std::string& message) {
  static int counter = 0;
  id bulletin = host::newObject(platform::classNamed("BBBulletin"));
  auto& state = stateOf<BulletinState>(bulletin);
  state.section = section;
  state.message = message;
  state.bulletinID = "bulletin-" + std::to_string(++counter);
  state.title = title;
  return bulletin;
}

void addBulletinLaunches(ClassBuilder& userAgent) {
  addCatalogued(userAgent, kLaunchWithResponse, imp(launchWithResponse));
  addCatalogued(userAgent, kLaunchWithAction, imp(launchWithAction));
  addCatalogued(userAgent, kLaunch, imp(launch));
}

void defineSpringBoardBulletins() {
  ClassBuilder bulletin("BBBulletin", "NSObject");
  addCatalogued(bulletin, "-section", imp(bulletinSection));
  addCatalogued(bulletin, "-sectionID", imp(bulletinSection));
  addCatalogued(bulletin, "-title", imp(bulletinTitle));
  addCatalogued(bulletin, "-message", imp(bulletinMessage));
  addCatalogued(bulletin, "-setSound:", imp(bulletinSetSound));
  bulletin.instance("setMessage:", imp(bulletinSetMessage), "v@:@");
  bulletin.instance("sound", imp(bulletinSound), "@@:");
  bulletin.instance("date", imp(bulletinDate), "@@:");
  bulletin.instance("setDate:", imp(bulletinSetDate), "v@:@");
  bulletin.instance("bulletinID", imp(bulletinID), "@@:");
  bulletin.build();
  host::registerAction("bulletin", bulletinAction);
  host::registerAction("tap-bulletin", tapBulletinAction);
}

}  // namespace kv::sim::frameworks
