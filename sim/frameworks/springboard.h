// SpringBoard as the simulated device runs it: its apps and folders, what is
// in front, the lock, the screen and the biometric sensor. The classes that
// the library intercepts or calls are defined over this model; scenario
// actions enter through those classes' own methods.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/objc.h"

namespace kv::sim::host {
class ClassBuilder;
}

namespace kv::sim::frameworks {

// One installed app.
struct AppInfo {
  const char* bundleIdentifier;
  const char* displayName;
  std::vector<const char*> urlSchemes;
};

// The apps on the device, in home-screen order.
const std::vector<AppInfo>& installedApps();

// A folder on the home screen.
struct FolderInfo {
  const char* displayName;
  std::vector<const char*> apps;  // bundle identifiers
  bool newsstand;                 // the Newsstand folder (iOS 8)
};
const std::vector<FolderInfo>& homeFolders();

// What SpringBoard shows and how the device stands.
struct SpringBoardState {
  std::string front = "home";  // the front app's bundle identifier, or "home"
  std::string openFolder;      // display name of the open folder, or ""
  bool locked = false;
  bool screenOn = true;
  std::vector<std::string> recents;  // apps that came to the front, most recent first
  bool switcherVisible = false;
  std::string shortcutMenu;  // the app whose shortcut menu shows, or ""
};
SpringBoardState& springBoard();

// The SBApplication for a bundle identifier, or nil.
id applicationNamed(const std::string& bundleIdentifier);
// The home screen's icon of an app, or nil.
id appIconNamed(const std::string& bundleIdentifier);
// The home screen's first folder icon of that display name, or nil.
id folderIconNamed(const std::string& displayName);

// True iff a visible alert (the Kavelin prompt or any other) takes a touch
// meant for the home screen: its window lies over the icons, so `what` does
// not reach them, as on a device. The timeline says where the touch went.
bool alertTakesTouch(const std::string& what);

// Brings an app to the front (or the home screen for "home"), recording it
// and, for an app, putting it first among the recent apps. The switcher and
// a shortcut menu close.
void bringToFront(const std::string& bundleIdentifier);

// ---- The platform's own paths, entered by scenario actions and by replays ----

// A new main-workspace transition request labelled `eventLabel` for
// `application` (nil for none), iOS 10 and later; the caller owns it. When it
// runs, the app comes to the front, then `then` runs.
id newWorkspaceRequest(const char* eventLabel, id application,
                       std::function<void()> then = nullptr);
// Sets a request as the main workspace's current transaction: it runs.
void runWorkspaceRequest(id request);
// A new request, run at once.
void runWorkspaceRequest(const char* eventLabel, id application,
                         std::function<void()> then = nullptr);
// An app-to-app transaction from the front app to `application` (before
// iOS 10). A transaction whose init answers nil makes no transition.
void activateThroughTransaction(id application);
// Brings `application` to the front as this version's workspace does: a
// request labelled `eventLabel` from iOS 10 on, an app-to-app transaction
// before.
void activate(id application, const char* eventLabel);

// What an open-application request from another process asks for.
struct OpenRequest {
  std::string bundleIdentifier;
  bool suspended = false;  // "__ActivateSuspended": launch in the background
  std::string origin;      // "__LaunchOrigin" (iOS 10 and later), "" for none
};
// Delivers an open-application request to SpringBoard's workspace, as
// FrontBoard's system service does, with a reply block.
void requestOpenApplication(const OpenRequest& request);

// A force press on an app's icon: its shortcut menu shows unless something
// holds the presentation back. False with *error where there is no 3D Touch
// or no icon to press.
bool forceTouchIcon(const std::string& bundleIdentifier, std::string* error);

// Posts "com.apple.springboard.screenchanged" when what the screen shows
// has changed: its state 0 dark, 1 an app, 2 the home screen, 3 the lock screen.
void noteScreenChanged();

// Sets the screen's brightness through SBBacklightController, with the
// source's type of this version.
void setBacklightLevel(float factor, int source);

// Asks SBLockScreenManager to unlock, with the method's return type of this
// version; true iff it says it unlocked (always before iOS 10).
bool askUnlock(id manager, int source);

// Presses the lock button the way this version's hardware does.
void pressLockButton();

// Closes the switcher or a shortcut menu without anything coming to the
// front (the lock screen covers them); true iff one was showing.
bool closeSwitcher();
bool closeShortcutMenu();
// The home button pressed while the switcher shows: it closes to the home screen.
void pressHomeInSwitcher();
// The switcher's item of class `className` (SBDisplayLayout, SBDisplayItem) for an app.
id switcherItemFor(const char* className, const std::string& bundleIdentifier);

// The switcher's cards: made (or reused) for the recent apps as it shows,
// let go as it closes. A tap on a card zooms it up first where the platform
// has a zoom-up; true when the zoom-up itself opened the app (Brindle).
void showSwitcherCards();
void hideSwitcherCards();
bool zoomUpToCard(const std::string& bundleIdentifier);
void defineSwitcherCards();

// ---- Helpers of the SpringBoard modules ----

// The shared instance of a simulated SpringBoard class (created on first use).
id sharedOf(const char* className);
// A class method that answers the receiving class's shared instance.
id sharedInstanceOf(id cls, SEL);

// A reply block (void (^)(id error)) that a platform method must call once:
// the first call logs "reply WHAT" (with " failed" for an error), any later
// one a "fault" event. The block lives on the heap; this handle holds one
// reference, and whoever keeps the call keeps its own.
class ReplyBlock {
 public:
  explicit ReplyBlock(const std::string& what);
  ~ReplyBlock();
  ReplyBlock(const ReplyBlock&) = delete;
  ReplyBlock& operator=(const ReplyBlock&) = delete;
  id get() const { return block_; }

 private:
  id block_;
};

// ---- Class definitions, in SpringBoard's order (springboard.cpp) ----

void defineSpringBoardApps();
void defineSpringBoardServices();
// Gives SBIconController's instance its icon model ("_iconModel").
void giveIconControllerItsModel(id iconController);
void defineSpringBoardLock();
void defineSpringBoardWorkspace();
void defineSpringBoardOpenRequests();
void defineSpringBoardBulletins();
void defineSpringBoardSwitcher();
void defineSpringBoardShortcuts();
void defineSpringBoardLaunchers();
void defineSpringBoardBiometrics();
void defineSpringBoardPower();
void defineSpringBoardSystem();
void defineSpringBoardControlCenter();
void defineSpringBoardEventQueue();
// SpringBoard's own frontDisplayDidChange:, added to its class.
void addFrontDisplayChange(host::ClassBuilder& springBoardClass);
// SpringBoard tells itself the new front display (an app, or nil for home).
void announceFrontDisplay(const std::string& bundleIdentifier);
void startSpringBoard();

// Methods that modules give the classes several of them share, before
// springboard.cpp builds those classes.
void addHomeButton(host::ClassBuilder& springBoardClass);
void addLockButtons(host::ClassBuilder& springBoardClass);
void addURLOpens(host::ClassBuilder& springBoardClass);
void addApplicationLaunch(host::ClassBuilder& springBoardClass);
void addActivations(host::ClassBuilder& uiController);
void addSwitcherControls(host::ClassBuilder& uiController);
void addTransactions(host::ClassBuilder& mainWorkspace);
void addOpenRequests(host::ClassBuilder& mainWorkspace);
void addSystemOpens(host::ClassBuilder& userAgent);
void addBulletinLaunches(host::ClassBuilder& userAgent);
void addForceTouchIconView(host::ClassBuilder& iconController);
void addPowerActions(host::ClassBuilder& springBoardClass);
void addBatteryState(host::ClassBuilder& uiController);
void addIconEditing(host::ClassBuilder& iconController);
void addReturnToHomeScreen(host::ClassBuilder& springBoardClass);

// ---- What the home button and the home screen ask of other modules ----

// Siri goes away; true iff it showed.
bool closeSiri();
// Icon editing ends through the icon controller; true iff it was on.
bool endIconEditing();
// Launches a web bookmark's icon; false when `icon` is no bookmark.
bool launchBookmarkIcon(id icon);
// Takes the app's icon off the home screen; false when there is none.
bool removeAppIcon(const std::string& bundleIdentifier);
// A view of the home screen's icon of `name` (a bundle identifier or a
// folder's name), kept for the life of the process.
id iconViewNamed(const std::string& name);

}  // namespace kv::sim::frameworks
