// What the Settings-app guards share: the held-back action waiting for
// SpringBoard's answer, the one-shot bypass flags, the questions put to
// SpringBoard over the messaging centre, and the protected-pane test.
#pragma once

#include "platform/objc.h"
#include "platform/retained.h"

namespace kv::processes {

// Which held-back action waits for SpringBoard's answer. There is one slot,
// as SpringBoard keeps one prompt: a newer request takes the older's place.
enum class Pending {
  kNone,
  kPush,        // a push: the navigation and the pushed controller
  kPane,        // a tapped row (iOS 11): the list controller and the specifier
  kWiFi,        // the Wi-Fi row: the list controller
  kPad,         // the controllers an iPad's setViewControllers: wanted
  kAirplane,    // the airplane-mode value
  kResetIcons,  // resetting the home-screen layout
  kLanguage,    // a language change
  kDelete,      // an app's deletion from the storage pane
};

// The Settings process's guard state, reset when the process starts.
struct SettingsGuardState {
  Pending pending = Pending::kNone;
  bool replaying = false;              // a cancelled navigation is being repeated
  platform::Retained listController;   // whose action was cancelled (or the navigation)
  platform::Retained specifier;        // the row that was tapped
  platform::Retained viewController;   // what a cancelled push wanted to show
  platform::Retained viewControllers;  // what a cancelled setViewControllers: wanted (iPad)
  BOOL animated = 0;                   // that call's animated flag
  platform::Retained airplaneValue;    // what a cancelled airplane switch wanted
  bool wifiAllowedOnce = false;
  bool airplaneAllowedOnce = false;
  bool resetAllowedOnce = false;
  bool languageAllowedOnce = false;
  bool deleteAllowedOnce = false;
  bool languageHookInstalled = false;
  platform::Retained languageController;  // the language setup whose change waits
  platform::Retained languageArgument;
  platform::Retained deleteController;  // the storage pane whose deletion waits
};
SettingsGuardState& guardState();

// Forgets every held-back action (the one-shot flags stay as they are).
void dropPending();

// Sets a flag for one scope and clears it after, however the scope ends.
class OnceFlag {
 public:
  explicit OnceFlag(bool& flag) : flag_(flag) { flag_ = true; }
  ~OnceFlag() { flag_ = false; }
  OnceFlag(const OnceFlag&) = delete;
  OnceFlag& operator=(const OnceFlag&) = delete;

 private:
  bool& flag_;
};

// SpringBoard's answers, asked synchronously; a SpringBoard that does not
// answer reads as nobody enrolled and no session, so the guards step aside.
int enrolledIdentities();  // "idsn"
bool sessionOpen();        // "sesx"
bool relockRequired();     // "rqrl"

// Sends SpringBoard an action message without waiting; `paneName` (an
// NSString, may be nil) travels as "settingsName" when given.
void askSpringBoard(const char* message, id paneName = nullptr);

// True iff protection is on at all here: someone enrolled and no session.
bool protectionInForce();

// The specifier's "id" property and its name.
id specifierId(id specifier);
id specifierName(id specifier);

// True iff `protectedSettings` names the specifier by "id" or by name.
bool listedAsProtected(id specifier);

// True iff `protectedSettings` holds `item` (an NSString).
bool listed(id item);

// True iff the specifier is the product's own pane (identifier "Kavelin").
bool isOwnPane(id specifier);

// Takes the tapped row's highlight away, so the table does not stay
// highlighted while the action waits.
void deselectRow(id specifier);

// The specifier of a controller about to be shown, or nil when it has none.
id specifierOf(id controller);

// True iff `controller` is a kind of the class named `className`.
bool isKind(id controller, const char* className);

// The list controller class of this version ("PrefsListController" on 8).
const char* listControllerClass();

}  // namespace kv::processes
