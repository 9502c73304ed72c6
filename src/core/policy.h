// What is protected and when authentication is due: the protected lists,
// folders, the trusted Wi-Fi exemption, the session, the relock answer, and
// the one-shot permissions granted to other processes.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "platform/objc.h"
#include "settings/notifications.h"

namespace kv::core {

// True iff the "protected" list holds `identifier` (exact equality). Asks
// nothing else: not the master switch, the session nor the network.
bool requiresAuthenticationForIdentifier(std::string_view identifier);

// True iff opening `folder` (an SBFolder) needs authentication: the
// Newsstand folder by "newsstand", else its display name, else its default
// display name, in the protected folders.
bool requiresAuthenticationForOpeningFolder(id folder);

// True iff `folder`'s display name or, failing that, its default display
// name is in the protected folders (a folder with neither is not protected).
bool folderNameProtected(id folder);

// True iff the device is associated with a network whose BSSID is one of
// "allowedWiFis", read from the domain on every call.
bool isOnTrustedWiFi();

// The home screen's folders as the settings pane lists them: one dictionary
// per folder with "displayName", "defaultDisplayName", "folderType" and
// "bundleIdentifiers", each where it has a value. Autoreleased NSArray.
id foldersRepresentation();

// True iff the user has a way to authenticate: with biometrics in use at
// least one enrolled identity, otherwise a stored Kavelin passcode.
bool wayToAuthenticate();

// True iff a successful authentication keeps items unlocked now:
// "keepSession" is on and the session flag is set.
bool sessionExists();

// True iff protection is configured on a device with a passcode but the
// user has nothing left to authenticate with.
bool relockRequired();

// A one-shot permission: the method SpringBoard runs after a successful
// authentication asked for by another process, and what it posts there.
struct Permission {
  const char* selector;
  settings::Note note;
};
std::span<const Permission> permissions();

// Runs the permission named `selector` (false when there is none).
bool grantPermission(const char* selector);

// allowPhotoLibraryAccess: posts the request's value as the state of
// "net.quorvan.kavelin.photoLibraryAuthorized".
void allowPhotoLibraryAccess(int value);

}  // namespace kv::core
