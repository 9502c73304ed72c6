// Control Center: the connectivity round buttons, module buttons and module
// expansion of iOS 11, and the push buttons of iOS 10 and earlier. A
// protected toggle changes only after authentication.
#pragma once

#include "platform/objc.h"

namespace kv::springboard {

// -[CCUIRoundButton touchesEnded:withEvent:] (iOS 11)
void roundButtonTouchesEnded(id self, SEL cmd, id touches, id event);
// -[CCUIButtonModuleView touchesEnded:withEvent:] (iOS 11)
void moduleButtonTouchesEnded(id self, SEL cmd, id touches, id event);
// -[CCUIContentModuleContainerViewController
//   _previewInteraction:viewControllerPresentationForPresentingViewController:] (iOS 11)
id moduleExpansion(id self, SEL cmd, id interaction, id presentingController);
// -[CCUIControlCenterPushButton _pressAction] (iOS 10)
void pushButtonPress(id self, SEL cmd);
// -[SBControlCenterButton _pressAction]
void controlCenterButtonPress(id self, SEL cmd);
// -[SBUIControlCenterButton _pressAction]
void uiControlCenterButtonPress(id self, SEL cmd);

}  // namespace kv::springboard
