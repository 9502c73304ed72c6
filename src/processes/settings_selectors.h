// The selectors the Settings-app guards send, each written once.
#pragma once

#include "platform/runtime.h"

namespace kv::processes::sel {

using platform::Sel;

// The messaging centre.
inline const Sel kCenterNamed("centerNamed:");
inline const Sel kSendAndReply("sendMessageAndReceiveReplyName:userInfo:");
inline const Sel kSendOneWay("sendMessageName:userInfo:");

// Specifiers and their cells.
inline const Sel kProperties("properties");
inline const Sel kPropertyForKey("propertyForKey:");
inline const Sel kIdentifier("identifier");
inline const Sel kName("name");
inline const Sel kSpecifier("specifier");
inline const Sel kSpecifierForID("specifierForID:");
inline const Sel kSetSelected("setSelected:");
inline const Sel kSetOn("setOn:");
inline const Sel kReloadSpecifiers("reloadSpecifiers");

// Navigation.
inline const Sel kShowControllerFromSpecifier("_showControllerFromSpecifier:");
inline const Sel kPush("pushViewController:animated:");
inline const Sel kPop("popViewControllerAnimated:");
inline const Sel kSetViewControllers("setViewControllers:animated:");
inline const Sel kTopViewController("topViewController");
inline const Sel kChildViewControllers("childViewControllers");
inline const Sel kNavigationController("navigationController");
inline const Sel kSplitViewController("splitViewController");
inline const Sel kPopToSignin("popToSigninControllerAnimated:");
inline const Sel kCount("count");
inline const Sel kLastObject("lastObject");
inline const Sel kCopy("copy");

// The application.
inline const Sel kSharedApplication("sharedApplication");
inline const Sel kRootController("rootController");
inline const Sel kRootListController("rootListController");
inline const Sel kIsSuspended("isSuspended");

// The actions the guards repeat.
inline const Sel kSetAirplaneMode("setAirplaneMode:specifier:");
inline const Sel kResetIconPositions("resetIconPositions:");

// Alerts.
inline const Sel kAlertWithTitle("alertControllerWithTitle:message:preferredStyle:");
inline const Sel kActionWithTitle("actionWithTitle:style:handler:");
inline const Sel kAddAction("addAction:");
inline const Sel kPresent("presentViewController:animated:completion:");

// Objects.
inline const Sel kDescription("description");
inline const Sel kAlloc("alloc");
inline const Sel kInit("init");
inline const Sel kSharedInstance("sharedInstance");

}  // namespace kv::processes::sel
