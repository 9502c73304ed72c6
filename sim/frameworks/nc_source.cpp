// NCBulletinNotificationSource, where every bulletin reaches SpringBoard's
// notification centre from iOS 10 on: by its feed it plays a sound, lights
// the screen, shows a banner, and hands a request to the lock screen's list
// and the notification list. NurletBulletinManager, the lock-screen
// bulletin library a device's extension brings, posts through it.
#include <map>
#include <string>

#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/notification_center.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;

namespace {

const Sel kInsert("insertNotificationRequest:forCoalescedNotification:");
const Sel kRemove("removeNotificationRequest:forCoalescedNotification:");
const Sel kSectionID("sectionID");
const Sel kMessage("message");
const Sel kSound("sound");

constexpr const char* kWithReply = "-observer:addBulletin:forFeed:playLightsAndSirens:withReply:";
constexpr const char* kPlain = "-observer:addBulletin:forFeed:";
constexpr long kNotificationBacklightSource = 17;  // a bulletin wakes the screen

// The requests made for bulletins, and one coalesced notification per app.
std::map<id, Retained>& requests() {
  static auto* map = new std::map<id, Retained>();
  return *map;
}
id coalescedFor(const std::string& section) {
  static auto* map = new std::map<std::string, Retained>();
  Retained& coalesced = (*map)[section];
  if (!coalesced) {
    coalesced = Retained::adopt(host::newObject(platform::classNamed("NCCoalescedNotification")));
  }
  return coalesced.get();
}

// A lock-screen bulletin lights a dark screen where the backlight agrees.
void lightScreen() {
  id backlight = sharedOf("SBBacklightController");
  bool agrees = send<BOOL>(backlight, Sel("shouldTurnOnScreenForBacklightSource:"),
                           kNotificationBacklightSource) != 0;
  if (springBoard().screenOn) return;
  if (!agrees) {
    host::logEvent("notification", "the screen stays dark");
    return;
  }
  send<void>(backlight, Sel("_animateBacklightToFactor:duration:source:silently:completion:"), 1.0f,
             0.25, kNotificationBacklightSource, BOOL{0}, id{nullptr});
}

void receive(id bulletin, unsigned long long feed, bool lightsAndSirens) {
  std::string section = platform::toString(send<id>(bulletin, kSectionID));
  bool locked = springBoard().locked;
  host::logEvent("notification", "source receives " + section + " feed " + std::to_string(feed));
  if ((feed & kFeedSound) != 0 && lightsAndSirens) {
    std::string sound = soundName(send<id>(bulletin, kSound));
    host::logEvent("sound", (sound.empty() ? std::string("tri-tone") : sound) + " for " + section);
  }
  if (!locked && (feed & kFeedBanner) != 0) {
    host::logEvent(
        "notification",
        "banner " + section + " " + quoteForLog(platform::toString(send<id>(bulletin, kMessage))));
  }
  Retained& request = requests()[bulletin];
  if (!request) request = Retained::adopt(newRequest(bulletin));
  if ((feed & kFeedNotificationList) != 0) {
    send<BOOL>(notificationList(), kInsert, request.get(), coalescedFor(section));
  }
  if (locked && (feed & kFeedLockScreen) != 0) {
    send<BOOL>(lockScreenList(), kInsert, request.get(), coalescedFor(section));
    if (lightsAndSirens) lightScreen();
  }
}

void addBulletinWithReply(id, SEL, id, id bulletin, unsigned long long feed, BOOL lights,
                          id reply) {
  receive(bulletin, feed, lights != 0);
  if (reply != nullptr) platform::callBlock<void(id)>(reply, id{nullptr});
}
void addBulletin(id, SEL, id, id bulletin, unsigned long long feed) {
  receive(bulletin, feed, true);
}

// ---- NurletBulletinManager ----

// Posts a bulletin to the lock screen only, with no sound of its own.
id nurletShow(id, SEL, id title, id message, id sectionID, id date, id, id) {
  id bulletin = newBulletin(platform::toString(sectionID), platform::toString(title),
                            platform::toString(message));
  send<void>(bulletin, Sel("setDate:"), date);
  deliverBulletin(bulletin, kFeedLockScreen);
  return send<id>(bulletin, Sel("autorelease"));
}
// The bulletin's request shows its new text.
void nurletUpdate(id, SEL, id bulletin) {
  id request = requestForBulletin(bulletin);
  if (request == nullptr) return;
  if (springBoard().locked) {
    host::logEvent("notification", "lock screen updates " + bulletinText(bulletin));
  }
}
void nurletRemove(id, SEL, id bulletin) {
  id request = requestForBulletin(bulletin);
  if (request == nullptr) return;
  Retained keep(request);
  send<void>(lockScreenList(), kRemove, request, id{nullptr});
  requests().erase(bulletin);
}

}  // namespace

void deliverBulletin(id bulletin, unsigned long long feed) {
  id source = sharedOf("NCBulletinNotificationSource");
  if (cataloguedHere("NCBulletinNotificationSource", kWithReply) != nullptr) {
    ReplyBlock reply("bulletin " + platform::toString(send<id>(bulletin, kSectionID)));
    send<void>(source, Sel(kWithReply + 1), id{nullptr}, bulletin, feed, BOOL{1}, reply.get());
  } else if (cataloguedHere("NCBulletinNotificationSource", kPlain) != nullptr) {
    send<void>(source, Sel(kPlain + 1), id{nullptr}, bulletin, feed);
  }
}

id requestForBulletin(id bulletin) {
  auto found = requests().find(bulletin);
  return found == requests().end() ? nullptr : found->second.get();
}

void defineNotificationSource() {
  if (!cataloguedHere("NCBulletinNotificationSource")) return;
  ClassBuilder source("NCBulletinNotificationSource", "NSObject");
  addCatalogued(source, kWithReply, imp(addBulletinWithReply));
  addCatalogued(source, kPlain, imp(addBulletin));
  source.build();
  ClassBuilder("NurletBulletinManager", "NSObject")
      .classMethod("sharedInstance", imp(sharedInstanceOf), "@@:")
      .instance("showBulletinWithTitle:message:sectionID:date:image:soundPath:", imp(nurletShow),
                "@@:@@@@@@")
      .instance("updateBulletinAtLockscreen:", imp(nurletUpdate), "v@:@")
      .instance("removeBulletinFromLockscreen:", imp(nurletRemove), "v@:@")
      .build();
}

}  // namespace kv::sim::frameworks
