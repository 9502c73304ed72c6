// The query messages: what other processes and the settings pane learn from
// SpringBoard. Booleans travel as numbers made from a bool, counts as
// numbers made from an int, each reply with exactly its keys.
#include <string>

#include "base/flags.h"
#include "base/hardware.h"
#include "core/device.h"
#include "core/message_handlers.h"
#include "core/policy.h"
#include "core/texts.h"
#include "core/wifi.h"
#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/runtime.h"
#include "settings/settings.h"

namespace kv::core {

namespace {

using platform::makeBool;
using platform::makeDictionary;
using platform::Sel;
using platform::send;
using platform::sendIfResponds;

constexpr const char* kPhoneSection = "com.apple.mobilephone";

const Sel kSavedSectionInfo("savedSectionInfo");
const Sel kSectionInfoForSectionIDEffective("_sectionInfoForSectionID:effective:");
const Sel kSetSectionInfo("setSectionInfo:forSectionID:");
const Sel kSetSectionInfoOld("_setSectionInfo:forSectionID:");
const Sel kShowsInLockScreen("showsInLockScreen");
const Sel kSetShowsInLockScreen("setShowsInLockScreen:");
const Sel kKnownNetworks("knownNetworks");
const Sel kIsEqual("isEqual:");
const Sel kVisibleIconIdentifiers("visibleIconIdentifiers");
const Sel kAllObjects("allObjects");
const Sel kArray("array");
const Sel kAddObject("addObject:");

// The bulletin server SpringBoard runs, where the platform lets us reach it.
id bulletinServer() {
  return sharedInstanceOf("BBServer");
}

// The Phone app's notification section, as the bulletin server keeps it.
id phoneSection(id server) {
  if (server == nullptr) return nullptr;
  id sectionID = platform::makeString(kPhoneSection);
  if (base::flags().isIOS10OrLater) {
    return platform::objectForKey(sendIfResponds<id>(server, kSavedSectionInfo), kPhoneSection);
  }
  return sendIfResponds<id>(server, kSectionInfoForSectionIDEffective, sectionID, BOOL{1});
}

bool enabled() {
  return settings::current().enabled;
}

}  // namespace

id replyCallerNameProtection(id, Channel) {
  return makeDictionary(
      {{"isEnabled", makeBool(enabled())},
       {"hasCallerNameProtected", makeBool(settings::current().callerNameProtected)}});
}

id replyTrustedWiFi(id, Channel) {
  return makeDictionary({{"onTrustedWiFi", makeBool(isOnTrustedWiFi())}});
}

id replyEnabled(id, Channel) {
  return makeDictionary({{"isEnabled", makeBool(enabled())}});
}

id replyProtectedApps(id, Channel) {
  return makeDictionary(
      {{"protectedApps", platform::makeStringList(settings::current().protectedApps)}});
}

id replyPhoneSectionShowsInLockScreen(id, Channel) {
  id section = phoneSection(bulletinServer());
  return makeDictionary(
      {{"showsInLockScreen", makeBool(sendIfResponds<BOOL>(section, kShowsInLockScreen) != 0)}});
}

id storePhoneSectionShowsInLockScreen(id userInfo, Channel channel) {
  // An app must not change how calls show on the lock screen.
  if (channel == Channel::kFileChannel) {
    systemLog("Kavelin: refused \"spsi\" from the file channel; nothing changed");
    return nullptr;
  }
  // A number made otherwise than from a bool reads as its truth, as the
  // platform's boolValue would.
  auto shows = platform::integerOf(platform::objectForKey(userInfo, "showsInLockScreen"));
  id server = bulletinServer();
  id section = phoneSection(server);
  if (!shows || section == nullptr) return nullptr;
  sendIfResponds(section, kSetShowsInLockScreen, static_cast<BOOL>(*shows != 0 ? 1 : 0));
  id sectionID = platform::makeString(kPhoneSection);
  sendIfResponds(server, base::flags().isIOS10OrLater ? kSetSectionInfo : kSetSectionInfoOld,
                 section, sectionID);
  return nullptr;
}

id replyAppEnabledAndProtected(id userInfo, Channel) {
  auto app = platform::stringOf(platform::objectForKey(userInfo, "appid"));
  if (!app) return nullptr;
  return makeDictionary({{"appEnabledAndProtected",
                          makeBool(enabled() && requiresAuthenticationForIdentifier(*app))}});
}

// The known networks in the manager's order. A password goes only to the
// messaging centre's clients: an app asking through the file channel gets
// the names alone, and the password is never read for it.
id replyKnownNetworks(id, Channel channel) {
  id list = platform::sendClass<id>(platform::classNamed("NSMutableArray"), kArray);
  WiFiNetworkGetPropertyFn getProperty = wifiNetworkGetProperty();
  WiFiNetworkCopyPasswordFn copyPassword =
      channel == Channel::kMessagingCentre ? wifiNetworkCopyPassword() : nullptr;
  id manager = sharedInstanceOf("SBWiFiManager");
  id networks = sendIfResponds<id>(manager, kKnownNetworks);
  id current = platform::ivar<id>(manager, "_currentNetwork").value_or(nullptr);
  for (platform::UInteger i = 0; getProperty != nullptr && i < platform::arrayCount(networks);
       ++i) {
    id network = platform::arrayObjectAt(networks, i);
    id ssid = platform::ns(getProperty(network, platform::cf(platform::makeString("SSID_STR"))));
    id bssid = platform::ns(getProperty(network, platform::cf(platform::makeString("BSSID"))));
    bool isCurrent = current != nullptr && send<BOOL>(current, kIsEqual, network) != 0;
    CFStringRef password = copyPassword != nullptr ? copyPassword(network) : nullptr;
    send<void>(list, kAddObject,
               makeDictionary({{"ssid", ssid},
                               {"bssid", bssid},
                               {"isCurrent", makeBool(isCurrent)},
                               {"password", platform::ns(password)}}));
    if (password != nullptr) CFRelease(password);
  }
  return makeDictionary({{"networks", list}});
}

id replyVisibleApps(id, Channel) {
  id iconController = sharedInstanceOf("SBIconController");
  id model = platform::ivar<id>(iconController, "_iconModel").value_or(nullptr);
  id identifiers = sendIfResponds<id>(model, kVisibleIconIdentifiers);
  if (platform::isKindOf(identifiers, "NSSet")) identifiers = send<id>(identifiers, kAllObjects);
  if (!platform::isKindOf(identifiers, "NSArray")) {
    identifiers = platform::sendClass<id>(platform::classNamed("NSArray"), kArray);
  }
  return makeDictionary({{"apps", identifiers}});
}

// With a sensor in use, the enrolled fingers or faces; without, whether a
// Kavelin passcode is stored.
id replyIdentities(id, Channel) {
  int count = biometricsInUse() ? static_cast<int>(base::enrolledIdentities())
                                : (settings::current().passcode ? 1 : 0);
  return makeDictionary({{"idsn", platform::makeInt(count)}});
}

id replyDevicePasscode(id, Channel) {
  return makeDictionary({{"hasPasscode", makeBool(devicePasscodeSet())}});
}

id replyRequiresRelock(id, Channel) {
  return makeDictionary({{"requiresRelock", makeBool(relockRequired())}});
}

// The key says "Touch ID" on every device, Face ID ones too: clients read it
// by that name.
id replyTouchID(id, Channel) {
  return makeDictionary({{"Touch ID", makeBool(enabled())}});
}

id replySessionExists(id, Channel) {
  return makeDictionary({{"sessionExists", makeBool(sessionExists())}});
}

id replyFolders(id, Channel) {
  return makeDictionary({{"foldersRepresentation", foldersRepresentation()}});
}

}  // namespace kv::core
