// Home-screen folders: opening a protected folder, peeking at a protected
// folder or app with a force press, and renaming a protected folder so that
// it stays protected under its new name.
#pragma once

#include "platform/foundation.h"
#include "platform/objc.h"

namespace kv::springboard {

// -[SBFolderIcon launchFromLocation:] (the location is an int there)
void folderLaunch(id self, SEL cmd, int location);
// -[SBFolderIcon launchFromLocation:context:]
void folderLaunchWithContext(id self, SEL cmd, int location, id context);
// -[SBFolderIcon launchFromLocation:context:activationSettings:actions:]
void folderLaunchWithSettings(id self, SEL cmd, platform::Integer location, id context, id settings,
                              id actions);
// -[SBUIIconForceTouchViewController presentAnimated:withCompletionHandler:]
BOOL peekPresent(id self, SEL cmd, BOOL animated, id completion);
// -[SBFolder setDisplayName:]
void folderRename(id self, SEL cmd, id name);

}  // namespace kv::springboard
