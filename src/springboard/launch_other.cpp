// The other ways an app comes to the front.
#include "springboard/launch_other.h"

#include "platform/hook.h"
#include "platform/invocation.h"
#include "platform/runtime.h"
#include "settings/settings.h"
#include "springboard/gate.h"

namespace kv::springboard {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kPlistRepresentation("plistRepresentation");
const platform::Sel kBundleIdentifier("bundleIdentifier");
const platform::Sel kApplication("application");
const platform::Sel kDisplayIdentifier("displayIdentifier");
const platform::Sel kNextDisplayItem("nextDisplayItem");
const platform::Sel kSharedController("sharedController");
const platform::Sel kDeviceHasPasscodeSet("deviceHasPasscodeSet");

using platform::Integer;
using platform::Retained;
using platform::send;
using platform::sendIfResponds;

constexpr const char* kPhotos = "com.apple.mobileslideshow";

bool guards(id identifier) {
  return isProtectedApp(identifier) && gatePasses();
}

// The switcher's own launches are guarded here only while the switcher as a
// whole is not (then opening it already asked).
bool switcherGuards(id identifier) {
  return !settings::current().protectSwitcher && guards(identifier);
}

// Holds back a call of `cmd` on `self` with `args`, kept or not.
template <typename... A>
bool holdBackCall(bool keep, id title, id self, SEL cmd, A... args) {
  Retained call = platform::invocationOf(self, cmd, args...);
  if (keep) platform::retainArguments(call.get());
  return holdBack(call.get(), title);
}

// The display identifier of the last item of a display layout.
id layoutIdentifier(id layout) {
  id plist = sendIfResponds<id>(layout, kPlistRepresentation);
  id items = platform::objectForKey(plist, "SBDisplayLayoutDisplayItemsPlistKey");
  platform::UInteger count = platform::arrayCount(items);
  if (count == 0) return nullptr;
  return platform::objectForKey(platform::arrayObjectAt(items, count - 1),
                                "SBDisplayItemDisplayIdentifierPlistKey");
}

// The application argument of the switcher: an app, or its identifier.
id applicationIdentifier(id application) {
  if (platform::isKindOf(application, "NSString")) return application;
  return sendIfResponds<id>(application, kBundleIdentifier);
}

}  // namespace

void shortcutActivate(id self, SEL cmd, id contentView, id item, Integer index) {
  id identifier = sendIfResponds<id>(sendIfResponds<id>(self, kApplication), kBundleIdentifier);
  if (guards(identifier) && holdBackCall(false, identifier, self, cmd, contentView, item, index))
    return;
  platform::Hook<&shortcutActivate>::original(self, cmd, contentView, item, index);
}

void quickLaunch(id self, SEL cmd, id bundleIdentifier, id url) {
  if (guards(bundleIdentifier) &&
      holdBackCall(true, bundleIdentifier, self, cmd, bundleIdentifier, url))
    return;
  platform::Hook<&quickLaunch>::original(self, cmd, bundleIdentifier, url);
}

void switcherActivateLayout(id self, SEL cmd, id switcher, id layout, id urls, id actions) {
  id identifier = layoutIdentifier(layout);
  if (switcherGuards(identifier) &&
      holdBackCall(false, identifier, self, cmd, switcher, layout, urls, actions)) {
    return;
  }
  platform::Hook<&switcherActivateLayout>::original(self, cmd, switcher, layout, urls, actions);
}

void switcherActivateApplication(id self, SEL cmd, id switcher, id application) {
  id identifier = applicationIdentifier(application);
  if (switcherGuards(identifier) &&
      holdBackCall(false, identifier, self, cmd, switcher, application))
    return;
  platform::Hook<&switcherActivateApplication>::original(self, cmd, switcher, application);
}

void switcherSelectedItem(id self, SEL cmd, id contentController, id item) {
  id identifier = sendIfResponds<id>(item, kDisplayIdentifier);
  if (switcherGuards(identifier) &&
      holdBackCall(true, identifier, self, cmd, contentController, item))
    return;
  platform::Hook<&switcherSelectedItem>::original(self, cmd, contentController, item);
}

// The gesture names where it goes only by a flag: the item is the
// transaction's own. Both flags are stored, so that the replay goes where
// the gesture went; no transition request now.
id forcePressTransition(id self, SEL cmd, BOOL commitment, BOOL toNextDisplayItem) {
  id next = toNextDisplayItem != 0 ? sendIfResponds<id>(self, kNextDisplayItem) : nullptr;
  id identifier = sendIfResponds<id>(next, kDisplayIdentifier);
  if (guards(identifier) &&
      holdBackCall(false, identifier, self, cmd, commitment, toNextDisplayItem))
    return nullptr;
  return platform::Hook<&forcePressTransition>::original(self, cmd, commitment, toNextDisplayItem);
}

// Without a device passcode the lock-screen camera would open the photo
// library on a locked device.
void lockScreenImageWell(id self, SEL cmd, id sender) {
  id lock =
      platform::sendClass<id>(platform::classNamed("SBDeviceLockController"), kSharedController);
  bool noPasscode = sendIfResponds<BOOL>(lock, kDeviceHasPasscodeSet) == 0;
  platform::AutoreleasePool pool;
  id photos = platform::makeString(kPhotos);
  if (noPasscode && guards(photos) && holdBackCall(true, photos, self, cmd, sender)) return;
  platform::Hook<&lockScreenImageWell>::original(self, cmd, sender);
}

}  // namespace kv::springboard
