// SpringBoard as the simulated device runs it: its apps and folders, what is
// in front, the lock, the screen and the biometric sensor. The classes that
// the library intercepts or calls are defined over this model; scenario
// actions enter through those classes' own methods.
#pragma once

#include <string>
#include <vector>

#include "platform/objc.h"

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
};
SpringBoardState& springBoard();

// The SBApplication for a bundle identifier, or nil.
id applicationNamed(const std::string& bundleIdentifier);

// Brings an app to the front (or the home screen for "home"), recording it.
void bringToFront(const std::string& bundleIdentifier);

// The platform's own paths, entered by scenario actions and by replays.
void launchThroughWorkspace(id application, const char* eventLabel);  // iOS 10 and later
void activateThroughTransaction(id application);                      // before iOS 10

// Presses the lock button the way this version's hardware does.
void pressLockButton();

// The shared instance of a simulated SpringBoard class (created on first use).
id sharedOf(const char* className);

void defineSpringBoardApps();
void defineSpringBoardWorkspace();
void defineSpringBoardLock();
void defineSpringBoardBiometrics();
void startSpringBoard();

}  // namespace kv::sim::frameworks
