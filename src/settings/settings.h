// The settings snapshot: every key of the preference domain with its type
// and default, loaded as one process-wide snapshot and replaced on reload.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace kv::settings {

// The preference domain the companion settings pane writes.
inline constexpr const char* kDomain = "net.quorvan.kavelin";

// A protected list as the settings pane stored it: its entries in order
// (replies and write-backs keep the order) and a hash of them, so that a
// guard's question costs the same with ten entries as with ten thousand.
class ItemList {
 public:
  ItemList() = default;
  ItemList(std::vector<std::string> items)  // NOLINT(google-explicit-constructor)
      : items_(std::move(items)), index_(items_.begin(), items_.end()) {}

  // True iff an entry equals `item` exactly.
  bool contains(std::string_view item) const { return index_.find(item) != index_.end(); }

  const std::vector<std::string>& items() const { return items_; }
  operator const std::vector<std::string>&() const { return items_; }  // NOLINT
  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }
  bool empty() const { return items_.empty(); }
  size_t size() const { return items_.size(); }
  void clear() {
    items_.clear();
    index_.clear();
  }
  bool operator==(const std::vector<std::string>& other) const { return items_ == other; }

 private:
  // Looked up by a view of the text, so that a question makes no copy.
  struct Hash {
    using is_transparent = void;
    size_t operator()(std::string_view s) const { return std::hash<std::string_view>()(s); }
  };
  std::vector<std::string> items_;
  std::unordered_set<std::string, Hash, std::equal_to<>> index_;
};

struct Settings {
  bool onlyPasscode = false;
  std::optional<std::string> passcode;
  bool shouldShowExperimentalAlert = true;
  bool enabled = true;
  bool callerNameProtected = false;
  bool hideCallerAfterLifting = true;
  int iconColor = 4;
  bool iconColorFlag = false;  // the face camera is present or IconColor is above 2
  bool vibrateOnError = false;
  bool hapticSetting = true;
  int haptic = 2;
  bool keepSession = false;
  bool protectSwitcher = false;
  bool protectPowerDown = true;
  bool protectPowerDownOnCriticalBattery = false;
  bool protectRespring = true;
  bool blurAppSwitcher = true;
  bool showKavelinedText = true;
  bool protectSIMUnlock = false;
  bool protectMovingApps = false;
  bool unlockUsingTouchID = false;
  bool closeProtectedFoldersAfterLaunchingApp = true;
  bool quitProtectedAppsOnDeviceLock = true;
  bool showProtectedItemName = true;
  bool appsInFoldersAreStillProtected = false;
  bool biometricsInUse = false;  // derived: biometric hardware present and not passcode-only
  bool protectSiri = false;
  ItemList protectedApps;  // "protected"
  ItemList protectedNotifications;
  ItemList protectedSettings;
  ItemList protectedSwitches;
  ItemList protectedFolders;
  ItemList protectedCCItems;
  ItemList protectedCCSettingsItems;

  // The haptic level in effect: `haptic` when haptics are on, else 0.
  int effectiveHaptic() const { return hapticSetting ? haptic : 0; }
};

// The snapshot as last loaded (defaults before the first load).
const Settings& current();

// Loads the whole domain into the snapshot, applying the derived rules, and
// sets and posts the states the load is responsible for.
void load();

// Stores the hardware test's answer that start-up makes before the first load.
void setBiometricsInUse(bool inUse);

// Writes `shouldShowExperimentalAlert` false to the domain and the snapshot.
void disableExperimentalAlert();

// Writes `protectedFolders` to the domain and the snapshot.
void storeProtectedFolders(std::vector<std::string> folders);

// One key read from the domain now, after a synchronise, for code that must
// not depend on the snapshot; a value of another type reads as absent.
std::optional<int> storedInteger(const char* key);
std::optional<std::string> storedString(const char* key);
std::optional<bool> storedBool(const char* key);

// One trusted network as the settings pane stores it.
struct TrustedNetwork {
  std::string ssid;
  std::string bssid;
};

// Reads `allowedWiFis` from the domain now, after a synchronise (the list
// parsed last is reused while the domain hands out the same value). Absent or
// of another type reads as an empty list; entries without a string "bssid"
// are left out. Valid until the next call.
const std::vector<TrustedNetwork>& readAllowedWiFis();

}  // namespace kv::settings
