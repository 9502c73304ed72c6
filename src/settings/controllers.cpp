// The settings' runtime classes and their notification handlers.
#include "settings/controllers.h"

#include <string>

#include "platform/classes.h"
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "settings/settings.h"

namespace kv::settings {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kInit("init");
const platform::Sel kAlloc("alloc");
const platform::Sel kSharedInstance("sharedInstance");
const platform::Sel kInitWithTitleMessageDelegateCancelButtonTitleOtherButtonTitles(
    "initWithTitle:message:delegate:cancelButtonTitle:otherButtonTitles:");
const platform::Sel kAddButtonWithTitle("addButtonWithTitle:");
const platform::Sel kShow("show");
const platform::Sel kRelease("release");
const platform::Sel kPerformSelectorWithObjectAfterDelay("performSelector:withObject:afterDelay:");
const platform::Sel kUpdateSettings("updateSettings");
const platform::Sel kKvShowExperimentalAlert("_kv_showExperimentalAlert");

using platform::send;

constexpr const char* kExperimentalTitle = "Kavelin-Experimental";
constexpr const char* kExperimentalMessage =
    "Since Photos.app is protected, Kavelin has blocked an attempt to open photo library by "
    "forcing the process to fail. Now that you have authenticated you are able to retry doing what "
    "got you here without failing.";

// A plain singleton: sharedInstance creates on first use, init records itself.
struct Singleton {
  const char* className;
  id shared = nullptr;
};
Singleton gUpdate{"KavelinPreferenceUpdateController"};
Singleton gExperimental{"KavelinExperimentalController"};

// The singleton of the class a message reached: sharedInstance is sent to
// the class, init to an instance.
Singleton& singletonOf(id self) {
  Class cls =
      platform::isClassObject(self) ? reinterpret_cast<Class>(self) : platform::classOf(self);
  return platform::className(cls) == std::string(gUpdate.className) ? gUpdate : gExperimental;
}

id singletonInit(id self, SEL) {
  self = platform::sendSuper<id>(platform::classNamed("NSObject"), self, kInit);
  singletonOf(self).shared = self;
  return self;
}

id singletonShared(id cls, SEL) {
  Singleton& s = singletonOf(cls);
  if (s.shared == nullptr) send<id>(send<id>(cls, kAlloc), kInit);
  return s.shared;
}

void updateSettings(id, SEL) {
  load();
}

id shared(Singleton& s) {
  return platform::sendClass<id>(platform::classNamed(s.className), kSharedInstance);
}

// The experimental alert: "Never show again" (index 0) turns it off.
void experimentalClicked(id, SEL, id, platform::Integer index) {
  if (index == 0) disableExperimentalAlert();
}

void showExperimentalAlert(id self, SEL) {
  id alert =
      send<id>(platform::sendClass<id>(platform::classNamed("UIAlertView"), kAlloc),
               kInitWithTitleMessageDelegateCancelButtonTitleOtherButtonTitles,
               platform::makeString(kExperimentalTitle), platform::makeString(kExperimentalMessage),
               self, platform::makeString("Never show again"), id{nullptr});
  // The other button is added, not listed: a list of titles is passed as
  // variadic arguments, which a typed send cannot do on every architecture.
  send<platform::Integer>(alert, kAddButtonWithTitle, platform::makeString("Okay"));
  send<void>(alert, kShow);
  send<void>(alert, kRelease);
}

}  // namespace

void defineSettingsControllers() {
  using platform::classMethod;
  using platform::method;
  platform::defineClass(gUpdate.className, "NSObject",
                        {
                            classMethod("sharedInstance", singletonShared),
                            method("init", singletonInit),
                            method("updateSettings", updateSettings),
                        });
  platform::defineClass(gExperimental.className, "NSObject",
                        {
                            classMethod("sharedInstance", singletonShared),
                            method("init", singletonInit),
                            method("alertView:clickedButtonAtIndex:", experimentalClicked),
                            method("_kv_showExperimentalAlert", showExperimentalAlert),
                        });
}

void settingsChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                     CFDictionaryRef) {
  load();
  send<void>(shared(gUpdate), kPerformSelectorWithObjectAfterDelay, kUpdateSettings, id{nullptr},
             0.5);
}

void experimentalAlertDisabled(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                               CFDictionaryRef) {
  disableExperimentalAlert();
}

void showExperimentalAlertIfNeeded(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                                   CFDictionaryRef) {
  if (!current().shouldShowExperimentalAlert) return;
  send<void>(shared(gExperimental), kPerformSelectorWithObjectAfterDelay, kKvShowExperimentalAlert,
             id{nullptr}, 0.3);
}

}  // namespace kv::settings
