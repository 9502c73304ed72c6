// What other code asks of the coordinator directly: an app or a folder
// opened behind the prompt, and the device locked on request.
#pragma once

#include "platform/objc.h"

namespace kv::core {

// Holds back `launchApplicationWithIdentifier:suspended:` (not suspended) on
// the application object behind a prompt naming the app. The caller has
// decided that the app is protected.
void launchApplicationWithIdentifier(id bundleIdentifier);

// Opens `folder` behind a prompt, unless SpringBoard is covered, the folder
// is not on the visible page, or it is open already (each logged).
void authenticateForOpeningFolder(id folder);

// Presses the lock button, in SpringBoard only.
void lockDeviceFromNotification();

}  // namespace kv::core
