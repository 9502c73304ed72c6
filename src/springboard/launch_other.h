// The other ways an app comes to the front: the home-screen shortcut menu,
// Control Center's quick launch, the app switcher (while the switcher
// itself is not guarded), the force-press switch to the previous app, and
// the lock-screen camera's photo well of older systems.
#pragma once

#include "platform/foundation.h"
#include "platform/objc.h"

namespace kv::springboard {

// -[SBApplicationShortcutMenu menuContentView:activateShortcutItem:index:]
void shortcutActivate(id self, SEL cmd, id contentView, id item, platform::Integer index);
// -[SBCCQuickLaunchSectionController _activateAppWithBundleId:url:]
void quickLaunch(id self, SEL cmd, id bundleIdentifier, id url);
// -[SBUIController appSwitcher:wantsToActivateDisplayLayout:displayIDsToURLs:displayIDsToActions:]
void switcherActivateLayout(id self, SEL cmd, id switcher, id layout, id urls, id actions);
// -[SBUIController appSwitcher:wantsToActivateApplication:]
void switcherActivateApplication(id self, SEL cmd, id switcher, id application);
// -[SBMainSwitcherViewController switcherContentController:selectedItem:]
void switcherSelectedItem(id self, SEL cmd, id contentController, id item);
// -[SBSwitcherForcePressSystemGestureTransaction
//   _transitionRequestForPresentationWithCommitment:toNextDisplayItem:]
id forcePressTransition(id self, SEL cmd, BOOL commitment, BOOL toNextDisplayItem);
// -[PLCameraView _imageWellTapped:] in SpringBoard
void lockScreenImageWell(id self, SEL cmd, id sender);

}  // namespace kv::springboard
