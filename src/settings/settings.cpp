// The settings loader: reads the preference domain key by key, in the order
// the keys are listed, and applies the rules that derive values from them.
#include "settings/settings.h"

#include <algorithm>

#include "base/flags.h"
#include "base/hardware.h"
#include "base/session.h"
#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "settings/notifications.h"

namespace kv::settings {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kBoolValue("boolValue");
const platform::Sel kIntValue("intValue");
const platform::Sel kStringValue("stringValue");

using platform::Retained;

Settings& snapshot() {
  static Settings s;
  return s;
}

// Made once and kept: every guard decision names the domain twice.
id domainName() {
  static const platform::Retained* name = [] {
    platform::AutoreleasePool pool;
    return new platform::Retained(platform::makeString(kDomain));
  }();
  return name->get();
}

// The stored value of `key`, owned by the returned handle (nil when absent).
Retained copyValue(const char* key) {
  platform::AutoreleasePool pool;
  return Retained::adopt(platform::ns(CFPreferencesCopyAppValue(
      platform::cf(platform::makeString(key)), platform::cf(domainName()))));
}

// A stored value of the wrong kind is read the way the platform would read
// it wherever it can answer, so that a bad value never switches protection
// off: a string answers boolValue and intValue, a number its decimal text,
// a list keeps its strings. What cannot answer (a dictionary where a flag
// belongs) counts as absent. Each repair is said once in the log.
void logRepair(const char* key, const char* what) {
  platform::AutoreleasePool pool;
  NSLog(platform::makeString("%@"),
        platform::makeString(std::string("Kavelin: the setting \"") + key + "\" " + what));
}

std::optional<bool> readBool(const char* key) {
  Retained v = copyValue(key);
  if (v && platform::isKindOf(v.get(), "NSString")) {
    logRepair(key, "is text; read as its boolValue");
  } else if (v && !platform::isKindOf(v.get(), "NSNumber")) {
    logRepair(key, "is neither a number nor text; ignored");
    return std::nullopt;
  }
  if (!v) return std::nullopt;
  return platform::send<BOOL>(v.get(), kBoolValue) != 0;
}
std::optional<int> readInt(const char* key) {
  Retained v = copyValue(key);
  if (v && platform::isKindOf(v.get(), "NSString")) {
    logRepair(key, "is text; read as its intValue");
  } else if (v && !platform::isKindOf(v.get(), "NSNumber")) {
    logRepair(key, "is neither a number nor text; ignored");
    return std::nullopt;
  }
  if (!v) return std::nullopt;
  return platform::send<int>(v.get(), kIntValue);
}
std::optional<std::string> readString(const char* key) {
  Retained v = copyValue(key);
  if (!v) return std::nullopt;
  if (auto text = platform::stringOf(v.get())) return text;
  if (platform::isKindOf(v.get(), "NSNumber")) {
    logRepair(key, "is a number; read as its decimal text");
    if (auto whole = platform::integerOf(v.get());
        whole && platform::realOf(v.get()) == static_cast<double>(*whole)) {
      return std::to_string(*whole);
    }
    return platform::toString(platform::send<id>(v.get(), kStringValue));
  }
  logRepair(key, "is neither text nor a number; ignored");
  return std::nullopt;
}
std::optional<std::vector<std::string>> readList(const char* key) {
  Retained v = copyValue(key);
  if (!v) return std::nullopt;
  if (!platform::isKindOf(v.get(), "NSArray")) {
    logRepair(key, "is not a list; ignored");
    return std::nullopt;
  }
  std::vector<std::string> out;
  bool dropped = false;
  for (platform::UInteger i = 0; i < platform::arrayCount(v.get()); ++i) {
    auto item = platform::stringOf(platform::arrayObjectAt(v.get(), i));
    if (item) {
      out.push_back(std::move(*item));
    } else {
      dropped = true;
    }
  }
  if (dropped) logRepair(key, "holds entries that are not text; they are left out");
  return out;
}

// The plain flags, with their defaults, in the order they are read (the
// haptic level is read between the two groups).
struct BoolKey {
  const char* key;
  bool Settings::*slot;
  bool fallback;
};
const BoolKey kFlagsBeforeHaptic[] = {
    {"VibrateOnError", &Settings::vibrateOnError, false},
    {"hapticSetting", &Settings::hapticSetting, true},
};
const BoolKey kFlagsAfterHaptic[] = {
    {"keepSession", &Settings::keepSession, false},
    {"protectSwitcher", &Settings::protectSwitcher, false},
    {"protectPowerDown", &Settings::protectPowerDown, true},
    {"protectPowerDownOnCriticalBattery", &Settings::protectPowerDownOnCriticalBattery, false},
    {"protectRespring", &Settings::protectRespring, true},
    {"blurAppSwitcher", &Settings::blurAppSwitcher, true},
    {"showKavelinedText", &Settings::showKavelinedText, true},
    {"protectSIMUnlock", &Settings::protectSIMUnlock, false},
    {"protectMovingApps", &Settings::protectMovingApps, false},
    {"unlockUsingTouchID", &Settings::unlockUsingTouchID, false},
    {"CloseProtectedFoldersAfterLaunchingApp", &Settings::closeProtectedFoldersAfterLaunchingApp,
     true},
    {"QuitProtectedAppsOnDeviceLock", &Settings::quitProtectedAppsOnDeviceLock, true},
    {"showProtectedItemName", &Settings::showProtectedItemName, true},
    {"appsInFoldersAreStillProtected", &Settings::appsInFoldersAreStillProtected, false},
};

// The protected lists: strings, empty when absent.
struct ListKey {
  const char* key;
  ItemList Settings::*slot;
};
const ListKey kLists[] = {
    {"protected", &Settings::protectedApps},
    {"protectedNotifications", &Settings::protectedNotifications},
    {"protectedSettings", &Settings::protectedSettings},
    {"protectedSwitches", &Settings::protectedSwitches},
    {"protectedFolders", &Settings::protectedFolders},
    {"protectedCCItems", &Settings::protectedCCItems},
    {"protectedCCSettingsItems", &Settings::protectedCCSettingsItems},
};

void readFlags(Settings& s, const BoolKey* begin, const BoolKey* end) {
  for (const BoolKey* k = begin; k != end; ++k)
    s.*(k->slot) = readBool(k->key).value_or(k->fallback);
}

bool contains(const ItemList& list, const std::string& item) {
  return list.contains(item);
}

void write(const char* key, id value) {
  platform::AutoreleasePool pool;
  CFPreferencesSetAppValue(platform::cf(platform::makeString(key)), value,
                           platform::cf(domainName()));
  CFPreferencesAppSynchronize(platform::cf(domainName()));
}

}  // namespace

const Settings& current() {
  return snapshot();
}

void load() {
  Settings& s = snapshot();
  const base::VersionFlags& f = base::flags();
  {
    platform::AutoreleasePool pool;
    CFPreferencesAppSynchronize(platform::cf(domainName()));
  }

  // The passcode first: passcode-only needs a passcode, and with no
  // enrolled finger or face a stored passcode is the only way.
  s.onlyPasscode = readBool("onlyPasscode").value_or(false);
  s.passcode = readString("passcode");
  s.shouldShowExperimentalAlert = readBool("shouldShowExperimentalAlert").value_or(true);
  s.onlyPasscode = s.onlyPasscode && s.passcode.has_value();
  if (s.passcode && base::enrolledIdentities() == 0) s.onlyPasscode = true;

  // The master switch; the caller's name can be protected only where a
  // sensor can unlock it during a call.
  s.enabled = readBool("Enabled").value_or(true);
  s.callerNameProtected = readBool("callerNameProtected").value_or(false) &&
                          base::biometricHardwareInUse(s.onlyPasscode) && f.isIOS8OrLater;
  if (f.isIOS10OrLater) {
    publish(Note::kCallerIdHandling, !s.enabled ? 0 : s.callerNameProtected ? 2 : 1);
  }
  s.hideCallerAfterLifting = readBool("HideCallerAfterLifting").value_or(true);

  // The glyph colour; the face camera decides when none is stored.
  if (auto color = readInt("IconColor")) {
    s.iconColor = *color;
  } else if (base::faceCameraPresent()) {
    s.iconColor = 5;
  }
  s.iconColorFlag = base::faceCameraPresent() || s.iconColor > 2;

  // The flags, the haptic level between them, then the hardware test.
  readFlags(s, std::begin(kFlagsBeforeHaptic), std::end(kFlagsBeforeHaptic));
  s.haptic = readInt("haptic").value_or(2);
  readFlags(s, std::begin(kFlagsAfterHaptic), std::end(kFlagsAfterHaptic));
  s.unlockUsingTouchID = s.unlockUsingTouchID && !f.isIOS11;
  s.biometricsInUse = base::biometricHardwareInUse(s.onlyPasscode);
  s.protectSiri = readBool("protectSiri").value_or(false);

  // The lists, and the camera's photo state with them; notifications are
  // held back on iOS 10 alone.
  for (const auto& list : kLists) {
    s.*(list.slot) = readList(list.key).value_or(std::vector<std::string>{});
    if (list.slot == &Settings::protectedApps) {
      setState(Note::kInCameraPhotosProtection,
               s.enabled && contains(s.protectedApps, "com.apple.mobileslideshow") ? 1 : 0);
    }
  }
  if (f.isIOS11) s.protectedNotifications.clear();

  // The grace period follows the session while sessions are kept.
  if (base::role() == base::Role::kSpringBoard) {
    publish(Note::kGracePeriod, s.keepSession && base::sessionUnlocked() ? 1 : 0);
  }

  // Without biometrics, a stored passcode is what "identities" means.
  if (!s.biometricsInUse) publish(Note::kIdentities, s.passcode ? 1 : 0);
}

std::optional<int> storedInteger(const char* key) {
  {
    platform::AutoreleasePool pool;
    CFPreferencesAppSynchronize(platform::cf(domainName()));
  }
  return readInt(key);
}

std::optional<std::string> storedString(const char* key) {
  {
    platform::AutoreleasePool pool;
    CFPreferencesAppSynchronize(platform::cf(domainName()));
  }
  return readString(key);
}

std::optional<bool> storedBool(const char* key) {
  {
    platform::AutoreleasePool pool;
    CFPreferencesAppSynchronize(platform::cf(domainName()));
  }
  return readBool(key);
}

void setBiometricsInUse(bool inUse) {
  snapshot().biometricsInUse = inUse;
}

void disableExperimentalAlert() {
  write("shouldShowExperimentalAlert", platform::makeBool(false));
  snapshot().shouldShowExperimentalAlert = false;
}

void storeProtectedFolders(std::vector<std::string> folders) {
  {
    // What the settings pane wrote last is read in before the list goes over it.
    platform::AutoreleasePool pool;
    CFPreferencesAppSynchronize(platform::cf(domainName()));
  }
  write("protectedFolders", platform::makeStringList(folders));
  snapshot().protectedFolders = std::move(folders);
}

const std::vector<TrustedNetwork>& readAllowedWiFis() {
  // The list as last read, and the stored value it was read from. The
  // preferences service hands out the same immutable value until the domain
  // changes, so a guard's every decision re-reads the list only after a
  // change (kept alive here, the value's identity cannot pass to another).
  static auto* readFrom = new Retained();
  static auto* networks = new std::vector<TrustedNetwork>();
  {
    platform::AutoreleasePool pool;
    CFPreferencesAppSynchronize(platform::cf(domainName()));
  }
  Retained stored = copyValue("allowedWiFis");
  if (stored && stored.get() == readFrom->get()) return *networks;
  networks->clear();
  platform::AutoreleasePool pool;
  for (platform::UInteger i = 0; i < platform::arrayCount(stored.get()); ++i) {
    id entry = platform::arrayObjectAt(stored.get(), i);
    auto bssid = platform::stringOf(platform::objectForKey(entry, "bssid"));
    if (!bssid) continue;
    networks->push_back({platform::toString(platform::objectForKey(entry, "ssid")), *bssid});
  }
  *readFrom = std::move(stored);
  return *networks;
}

}  // namespace kv::settings
