// What is protected and when authentication is due.
#include "core/policy.h"

#include <algorithm>
#include <cstring>

#include "base/flags.h"
#include "base/hardware.h"
#include "base/session.h"
#include "core/state.h"
#include "core/wifi.h"
#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/runtime.h"
#include "settings/settings.h"

namespace kv::core {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kArray("array");
const platform::Sel kIconLists("iconLists");
const platform::Sel kIcons("icons");
const platform::Sel kApplicationBundleID("applicationBundleID");
const platform::Sel kAddObject("addObject:");
const platform::Sel kDictionary("dictionary");
const platform::Sel kSetObjectForKey("setObject:forKey:");
const platform::Sel kDisplayName("displayName");
const platform::Sel kSharedInstance("sharedInstance");
const platform::Sel kRootFolder("rootFolder");
const platform::Sel kFolderIcons("folderIcons");
const platform::Sel kFolder("folder");

using platform::send;
using settings::Note;

constexpr const char* kNewsstand = "newsstand";

bool contains(const settings::ItemList& list, std::string_view item) {
  return list.contains(item);
}

bool inProtectedFolders(id name) {
  auto text = platform::stringOf(name);
  return text && contains(settings::current().protectedFolders, *text);
}

bool isNewsstand(id folder) {
  return folder != nullptr && std::strcmp(platform::classNameOf(folder), "SBNewsstandFolder") == 0;
}

// The bundle identifiers of the apps on a folder's pages.
id folderBundleIdentifiers(id folder) {
  id identifiers = platform::sendClass<id>(platform::classNamed("NSMutableArray"), kArray);
  id lists = platform::respondsTo(folder, kIconLists) ? send<id>(folder, kIconLists) : nullptr;
  for (platform::UInteger l = 0; l < platform::arrayCount(lists); ++l) {
    id list = platform::arrayObjectAt(lists, l);
    id icons = platform::respondsTo(list, kIcons) ? send<id>(list, kIcons) : nullptr;
    for (platform::UInteger i = 0; i < platform::arrayCount(icons); ++i) {
      id icon = platform::arrayObjectAt(icons, i);
      if (!platform::respondsTo(icon, kApplicationBundleID)) continue;
      id identifier = send<id>(icon, kApplicationBundleID);
      if (identifier != nullptr) send<void>(identifiers, kAddObject, identifier);
    }
  }
  return identifiers;
}

// One folder as the settings pane lists it.
id folderEntry(id folder) {
  id entry = platform::sendClass<id>(platform::classNamed("NSMutableDictionary"), kDictionary);
  auto put = [entry](const char* key, id value) {
    if (value != nullptr) send<void>(entry, kSetObjectForKey, value, platform::makeString(key));
  };
  put("displayName", isNewsstand(folder) ? platform::makeString(kNewsstand)
                                         : platform::valueForKeyIfPresent(folder, "displayName"));
  put("defaultDisplayName", platform::valueForKeyIfPresent(folder, "defaultDisplayName"));
  put("folderType", platform::valueForKeyIfPresent(folder, "folderType"));
  id identifiers = folderBundleIdentifiers(folder);
  if (platform::arrayCount(identifiers) > 0) put("bundleIdentifiers", identifiers);
  return entry;
}

// The permissions, each with the notification that carries it to the process that asked.
constexpr Permission kPermissions[] = {
    {"allowPrefsEnter", Note::kAllowedToEnter},
    {"allowPrefsEnter11", Note::kAllowedToEnter11},
    {"allowPrefsEnteriPad", Note::kAllowedToEnteriPad},
    {"allowWiFiEnter", Note::kAllowedToEnterWiFi},
    {"allowAirplaneModeInPreferences", Note::kAllowedAirplane},
    {"allowResetIcons", Note::kAllowedResetIcons},
    {"allowToDeleteAppInPreferences", Note::kAllowedToDelete},
    {"allowLanguageRestart", Note::kAllowedLanguageRestart},
    {"allowCameraIOS11", Note::kAllowedInCamPhotos11},
    {"resetPasscode", Note::kPasscodeReset},
};

}  // namespace

bool requiresAuthenticationForIdentifier(std::string_view identifier) {
  return contains(settings::current().protectedApps, identifier);
}

bool requiresAuthenticationForOpeningFolder(id folder) {
  if (folder == nullptr) return false;
  // The Newsstand folder goes by its fixed entry.
  if (isNewsstand(folder) && contains(settings::current().protectedFolders, kNewsstand))
    return true;
  // Its display name, else its default display name.
  return folderNameProtected(folder);
}

bool folderNameProtected(id folder) {
  return inProtectedFolders(platform::sendIfResponds<id>(folder, kDisplayName)) ||
         inProtectedFolders(platform::valueForKeyIfPresent(folder, "defaultDisplayName"));
}

bool isOnTrustedWiFi() {
  // The trusted networks, fresh from the domain.
  const std::vector<settings::TrustedNetwork>& trusted = settings::readAllowedWiFis();
  if (trusted.empty()) return false;
  // The network the device is on.
  id manager = platform::sendClass<id>(platform::classNamed("SBWiFiManager"), kSharedInstance);
  id network = platform::ivar<id>(manager, "_currentNetwork").value_or(nullptr);
  if (network == nullptr) return false;
  // Its BSSID, through the Wi-Fi framework.
  WiFiNetworkGetPropertyFn getProperty = wifiNetworkGetProperty();
  if (getProperty == nullptr) return false;
  platform::AutoreleasePool pool;
  auto bssid = platform::stringOf(
      platform::ns(getProperty(network, platform::cf(platform::makeString("BSSID")))));
  if (!bssid) return false;
  // Only the BSSID decides; the stored name is for the settings pane.
  return std::any_of(trusted.begin(), trusted.end(),
                     [&](const settings::TrustedNetwork& n) { return n.bssid == *bssid; });
}

id foldersRepresentation() {
  id folders = platform::sendClass<id>(platform::classNamed("NSMutableArray"), kArray);
  id controller =
      platform::sendClass<id>(platform::classNamed("SBIconController"), kSharedInstance);
  id root =
      platform::respondsTo(controller, kRootFolder) ? send<id>(controller, kRootFolder) : nullptr;
  id icons = platform::respondsTo(root, kFolderIcons) ? send<id>(root, kFolderIcons) : nullptr;
  for (platform::UInteger i = 0; i < platform::arrayCount(icons); ++i) {
    id icon = platform::arrayObjectAt(icons, i);
    id folder = platform::respondsTo(icon, kFolder) ? send<id>(icon, kFolder) : nullptr;
    if (folder != nullptr) send<void>(folders, kAddObject, folderEntry(folder));
  }
  return folders;
}

bool wayToAuthenticate() {
  if (!settings::current().biometricsInUse) return settings::current().passcode.has_value();
  return base::enrolledIdentities() > 0;
}

bool sessionExists() {
  return settings::current().keepSession && base::sessionUnlocked();
}

bool relockRequired() {
  const base::SpringBoardFlags& sb = base::springBoardFlags();
  return !sb.identitiesPresent && sb.devicePasscodeSet;
}

std::span<const Permission> permissions() {
  return kPermissions;
}

bool grantPermission(const char* selector) {
  for (const auto& p : kPermissions) {
    if (std::strcmp(p.selector, selector) != 0) continue;
    // The language-change respring is let through by the restart guard.
    if (p.note == Note::kAllowedLanguageRestart) state().languageRestartAllowed = true;
    settings::post(p.note);
    return true;
  }
  return false;
}

void allowPhotoLibraryAccess(int value) {
  settings::publish(Note::kPhotoLibraryAuthorized, static_cast<uint32_t>(value));
}

}  // namespace kv::core
