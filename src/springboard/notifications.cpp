// Lock-screen notifications of protected apps: the holding-back rule, the
// hiding pass of the notification list, the summary and what its tap,
// clearing and closing do, and the sound of incoming bulletins.
#include "springboard/notifications.h"

#include <algorithm>
#include <string>
#include <vector>

#include "base/flags.h"
#include "core/coordinator.h"
#include "core/device.h"
#include "core/policy.h"
#include "core/state.h"
#include "platform/functions.h"
#include "platform/hook.h"
#include "platform/invocation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "settings/bundle.h"
#include "settings/settings.h"
#include "springboard/gate.h"
#include "springboard/system_actions.h"

namespace kv::springboard {

namespace {

using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendClass;
using platform::sendIfResponds;
using platform::UInteger;

// The notification list.
const Sel kSectionIdentifier("sectionIdentifier");
const Sel kBulletin("bulletin");
const Sel kInsert("insertNotificationRequest:forCoalescedNotification:");
const Sel kRemove("removeNotificationRequest:forCoalescedNotification:");
const Sel kCollectionView("collectionView");
const Sel kNumberOfSections("numberOfSectionsInCollectionView:");
const Sel kNumberOfItems("collectionView:numberOfItemsInSection:");
const Sel kRequestAt("notificationRequestAtIndexPath:");
const Sel kCellForItem("collectionView:cellForItemAtIndexPath:");
const Sel kIndexPathForItem("indexPathForItem:inSection:");
const Sel kNotificationRequest("notificationRequest");
const Sel kGestureRecognizers("gestureRecognizers");
const Sel kAddGestureRecognizer("addGestureRecognizer:");
const Sel kInitWithTargetAction("initWithTarget:action:");
const Sel kReInsertAll("_kv_reInsertAll");
const Sel kAddObject("addObject:");
const Sel kIndexPathOfKavelinCell("indexPathOfKavelinCell");

// Bulletins and the lock-screen bulletin library.
const Sel kAlloc("alloc");
const Sel kSharedInstance("sharedInstance");
const Sel kTitle("title");
const Sel kSectionID("sectionID");
const Sel kSetMessage("setMessage:");
const Sel kSetDate("setDate:");
const Sel kDate("date");
const Sel kSetSound("setSound:");
const Sel kShowBulletin("showBulletinWithTitle:message:sectionID:date:image:soundPath:");
const Sel kUpdateAtLockscreen("updateBulletinAtLockscreen:");
const Sel kRemoveFromLockscreen("removeBulletinFromLockscreen:");
const Sel kImageWithContentsOfFile("imageWithContentsOfFile:");

// Sounds.
const Sel kFileURLWithPath("fileURLWithPath:");
const Sel kInitWithSystemSoundPath("initWithSystemSoundPath:behavior:vibrationPattern:");
const Sel kInitWithSystemSoundID("initWithSystemSoundID:behavior:vibrationPattern:");
const Sel kInitWithType("initWithType:");
const Sel kSetExternalToneFileURL("setExternalToneFileURL:");
const Sel kInitWithToneAlertConfiguration("initWithToneAlertConfiguration:");

constexpr const char* kSummaryTitle = "Kavelin";
constexpr const char* kSummarySection = "Kavelin";
constexpr const char* kSummaryFormat = " Kavelined Notifications\nTap to view";
constexpr const char* kPromptTitle = "Notifications";
constexpr Integer kExternalToneAlertType = 17;

// Bits of a bulletin's feed.
constexpr unsigned long long kFeedSound = 16;
constexpr unsigned long long kFeedLockScreen = 8;
constexpr unsigned long long kFeedAlerts = 1 | 2;  // cleared for a protected app's bulletin

struct NotificationState {
  Retained heldBack;       // NSMutableArray of {"request", "notification"}
  Retained removedOnShow;  // NSMutableArray of requests
  bool reInserting = false;
  Retained listController;  // the section list last seen appearing
  Retained summaryBulletin;
  Retained summaryCompanion;  // the summary's image, kept as long as the bulletin
  Retained summaryCell;
};

NotificationState& state() {
  static auto* s = new NotificationState();
  return *s;
}

id newMutableArray() {
  return platform::makeArray({});
}

bool isProtectedSection(id sectionIdentifier) {
  auto section = platform::stringOf(sectionIdentifier);
  const auto& sections = settings::current().protectedNotifications;
  return section && std::find(sections.begin(), sections.end(), *section) != sections.end();
}

bool isSummarySection(id sectionIdentifier) {
  return platform::stringOf(sectionIdentifier) == kSummarySection;
}

// Protection is on and someone could lift it: otherwise a held-back
// notification could never come back.
bool canAuthenticate() {
  return settings::current().enabled && core::wayToAuthenticate();
}

bool holdingBack() {
  return base::flags().isIOS10OrLater && core::uiLocked() && !state().reInserting &&
         canAuthenticate();
}

id nurletManager() {
  return sendClass<id>(platform::classNamed("NurletBulletinManager"), kSharedInstance);
}

id indexPath(Integer item, Integer section) {
  return sendClass<id>(platform::classNamed("NSIndexPath"), kIndexPathForItem, item, section);
}

id summaryImage() {
  return sendClass<id>(platform::classNamed("UIImage"), kImageWithContentsOfFile,
                       platform::makeString(settings::bundlePath() + "/Icon.png"));
}

// Shows the held-back count on the lock screen: the summary posted once,
// then updated. Without the bulletin library nothing shows, and the
// notifications stay held back all the same.
void showSummary() {
  NotificationState& n = state();
  UInteger count = n.heldBack ? platform::arrayCount(n.heldBack.get()) : 0;
  id message = platform::makeString(std::to_string(count) + kSummaryFormat);
  id manager = nurletManager();
  if (manager == nullptr) return;
  id now = sendClass<id>(platform::classNamed("NSDate"), kDate);
  if (n.summaryBulletin) {
    sendIfResponds(n.summaryBulletin.get(), kSetMessage, message);
    sendIfResponds(n.summaryBulletin.get(), kSetDate, now);
    sendIfResponds(manager, kUpdateAtLockscreen, n.summaryBulletin.get());
    return;
  }
  // The summary's own arrival must not light a dark screen.
  suppressNextScreenOn();
  id image = summaryImage();
  id bulletin =
      sendIfResponds<id>(manager, kShowBulletin, platform::makeString(kSummaryTitle), message,
                         platform::makeString(kSummarySection), now, image, id{nullptr});
  n.summaryBulletin.reset(bulletin);
  n.summaryCompanion.reset(bulletin != nullptr ? image : nullptr);
}

// The summary went from the lock screen: the bulletin library forgets it.
void dropSummary() {
  NotificationState& n = state();
  if (n.summaryBulletin) {
    sendIfResponds(nurletManager(), kRemoveFromLockscreen, n.summaryBulletin.get());
  }
  n.summaryBulletin.reset();
  n.summaryCompanion.reset();
}

bool requestIsHeld(id request) {
  id held = state().heldBack.get();
  for (UInteger i = 0, count = platform::arrayCount(held); i < count; ++i) {
    if (platform::objectForKey(platform::arrayObjectAt(held, i), "request") == request) return true;
  }
  return false;
}

void holdBackRequest(id request, id coalesced) {
  NotificationState& n = state();
  if (!n.heldBack) n.heldBack.reset(newMutableArray());
  // The same request arriving again is one notification, put back once.
  if (!requestIsHeld(request)) {
    send<void>(n.heldBack.get(), kAddObject,
               platform::makeDictionary({{"request", request}, {"notification", coalesced}}));
  }
  showSummary();
}

// The product's own sound: "incoming.aiff" of the settings bundle, made as
// this system's BBSound can make it. Nil where it cannot.
Retained productSound() {
  Class soundClass = platform::classNamed("BBSound");
  if (soundClass == nullptr) return Retained();
  std::string path = settings::bundlePath() + "/incoming.aiff";
  auto fresh = [soundClass] { return sendClass<id>(soundClass, kAlloc); };
  if (platform::instancesRespondTo(soundClass, kInitWithSystemSoundPath)) {
    return Retained::adopt(
        send<id>(fresh(), kInitWithSystemSoundPath, platform::makeString(path), 0ull, id{nullptr}));
  }
  id url =
      sendClass<id>(platform::classNamed("NSURL"), kFileURLWithPath, platform::makeString(path));
  SystemSoundID soundID = 0;
  if (url == nullptr ||
      AudioServicesCreateSystemSoundID(reinterpret_cast<CFURLRef>(url), &soundID) != 0 ||
      soundID == 0) {
    return Retained();
  }
  Retained sound;
  if (platform::instancesRespondTo(soundClass, kInitWithSystemSoundID)) {
    sound = Retained::adopt(
        send<id>(fresh(), kInitWithSystemSoundID, unsigned{soundID}, 0ull, id{nullptr}));
  } else if (Class configurationClass = platform::classNamed("TLAlertConfiguration")) {
    Retained configuration = Retained::adopt(
        send<id>(sendClass<id>(configurationClass, kAlloc), kInitWithType, kExternalToneAlertType));
    sendIfResponds(configuration.get(), kSetExternalToneFileURL, url);
    sound = Retained::adopt(
        sendIfResponds<id>(fresh(), kInitWithToneAlertConfiguration, configuration.get()));
  }
  AudioServicesDisposeSystemSoundID(soundID);
  return sound;
}

// What an incoming bulletin of a protected app becomes while locked: the
// product's sound, and no banner or alert of its own when it goes to the
// lock screen. Answers the feed to pass on.
unsigned long long incomingFeed(id bulletin, unsigned long long feed) {
  if (!settings::current().enabled || !core::uiLocked()) return feed;
  if (!core::wayToAuthenticate() || !isProtectedSection(send<id>(bulletin, kSectionID))) {
    return feed;
  }
  if ((feed & kFeedSound) != 0) {
    Retained sound = productSound();
    if (sound) sendIfResponds(bulletin, kSetSound, sound.get());
  }
  if ((feed & kFeedLockScreen) != 0) feed &= ~kFeedAlerts;
  return feed;
}

}  // namespace

BOOL priorityListInsert(id self, SEL cmd, id request, id coalesced) {
  if (!holdingBack() || !isProtectedSection(send<id>(request, kSectionIdentifier))) {
    return platform::Hook<&priorityListInsert>::original(self, cmd, request, coalesced);
  }
  holdBackRequest(request, coalesced);
  return 0;
}

id priorityListCell(id self, SEL cmd, id collectionView, id path) {
  id cell = platform::Hook<&priorityListCell>::original(self, cmd, collectionView, path);
  id bulletin = send<id>(send<id>(self, kRequestAt, path), kBulletin);
  if (cell == nullptr || platform::stringOf(send<id>(bulletin, kTitle)) != kSummaryTitle) {
    return cell;
  }
  state().summaryCell.reset(cell);
  // A redrawn cell keeps the recognizer it was given the first time.
  if (platform::arrayCount(sendIfResponds<id>(cell, kGestureRecognizers)) == 0) {
    Retained tap = Retained::adopt(
        send<id>(sendClass<id>(platform::classNamed("UITapGestureRecognizer"), kAlloc),
                 kInitWithTargetAction, self, kReInsertAll));
    if (tap) sendIfResponds(cell, kAddGestureRecognizer, tap.get());
  }
  return cell;
}

void priorityListClear(id self, SEL cmd, id cell, id request) {
  platform::Hook<&priorityListClear>::original(self, cmd, cell, request);
  if (isSummarySection(send<id>(request, kSectionIdentifier))) dropSummary();
}

void priorityListPerformAction(id self, SEL cmd, id cell, id action, id request, id completion) {
  platform::Hook<&priorityListPerformAction>::original(self, cmd, cell, action, request,
                                                       completion);
  if (isSummarySection(send<id>(request, kSectionIdentifier))) dropSummary();
}

void longLookClose(id self, SEL cmd, id button) {
  platform::Hook<&longLookClose>::original(self, cmd, button);
  id request = sendIfResponds<id>(self, kNotificationRequest);
  if (isSummarySection(send<id>(request, kSectionIdentifier))) dropSummary();
}

void sectionListWillAppear(id self, SEL cmd, BOOL animated) {
  NotificationState& n = state();
  if (settings::current().enabled && core::uiLocked() &&
      !settings::current().protectedNotifications.empty()) {
    n.listController.reset(self);
    id collectionView = send<id>(self, kCollectionView);
    std::vector<Retained> collected;
    Integer sections = send<Integer>(self, kNumberOfSections, collectionView);
    for (Integer section = 0; section < sections; ++section) {
      Integer items = send<Integer>(self, kNumberOfItems, collectionView, section);
      for (Integer item = 0; item < items; ++item) {
        id request = send<id>(self, kRequestAt, indexPath(item, section));
        if (isProtectedSection(send<id>(request, kSectionIdentifier)))
          collected.emplace_back(request);
      }
    }
    if (!n.removedOnShow) n.removedOnShow.reset(newMutableArray());
    for (const Retained& request : collected) {
      send<void>(n.removedOnShow.get(), kAddObject, request.get());
      send<void>(self, kRemove, request.get(), id{nullptr});
    }
  }
  platform::Hook<&sectionListWillAppear>::original(self, cmd, animated);
}

void sectionListDidDisappear(id self, SEL cmd, BOOL animated) {
  platform::Hook<&sectionListDidDisappear>::original(self, cmd, animated);
  // Taken first: an insert may bring the list back before this loop ends.
  Retained removed = std::move(state().removedOnShow);
  for (UInteger i = 0, count = platform::arrayCount(removed.get()); i < count; ++i) {
    send<BOOL>(self, kInsert, platform::arrayObjectAt(removed.get(), i), id{nullptr});
  }
}

void sourceAddBulletinWithReply(id self, SEL cmd, id observer, id bulletin, unsigned long long feed,
                                BOOL lightsAndSirens, id reply) {
  feed = incomingFeed(bulletin, feed);
  platform::Hook<&sourceAddBulletinWithReply>::original(self, cmd, observer, bulletin, feed,
                                                        lightsAndSirens, reply);
}

void sourceAddBulletin(id self, SEL cmd, id observer, id bulletin, unsigned long long feed) {
  feed = incomingFeed(bulletin, feed);
  platform::Hook<&sourceAddBulletin>::original(self, cmd, observer, bulletin, feed);
}

void removeAll(id self, SEL) {
  NotificationState& n = state();
  for (UInteger i = 0, count = platform::arrayCount(n.heldBack.get()); i < count; ++i) {
    id entry = platform::arrayObjectAt(n.heldBack.get(), i);
    send<void>(self, kRemove, platform::objectForKey(entry, "request"),
               platform::objectForKey(entry, "notification"));
  }
  showSummary();
}

void reInsertAll(id self, SEL cmd) {
  if (!canAuthenticate()) return;
  if (core::replaying() == core::Replaying::kNothing) {
    // Another action already waiting keeps the prompt: the notifications
    // stay held back, and the summary can be tapped again.
    if (core::state().invocation) return;
    Retained call = platform::invocationOf(self, cmd);
    if (call) holdBack(call.get(), platform::makeString(kPromptTitle));
    return;
  }
  NotificationState& n = state();
  n.reInserting = true;
  // Taken before the inserts: each comes back once, and what arrives after
  // starts a new summary.
  Retained held = std::move(n.heldBack);
  for (UInteger i = 0, count = platform::arrayCount(held.get()); i < count; ++i) {
    id entry = platform::arrayObjectAt(held.get(), i);
    send<BOOL>(self, kInsert, platform::objectForKey(entry, "request"),
               platform::objectForKey(entry, "notification"));
  }
  id summaryPath = send<id>(self, kIndexPathOfKavelinCell);
  if (summaryPath != nullptr) {
    send<void>(self, kRemove, send<id>(self, kRequestAt, summaryPath), id{nullptr});
  }
  dropSummary();
  n.reInserting = false;
}

id kavelinCell(id, SEL) {
  return state().summaryCell.get();
}

id indexPathOfKavelinCell(id self, SEL) {
  id cell = state().summaryCell.get();
  if (cell == nullptr) return nullptr;
  id collectionView = send<id>(self, kCollectionView);
  Integer rows = send<Integer>(self, kNumberOfItems, collectionView, Integer{0});
  for (Integer row = 0; row < rows; ++row) {
    id path = indexPath(row, 0);
    if (send<id>(self, kCellForItem, collectionView, path) == cell) return path;
  }
  return nullptr;
}

}  // namespace kv::springboard
