// SimProbe: a developer's tool class present in every simulated host, so
// that scenarios can drive the platform's C functions directly ("send
// SimProbe post: [...]") and see what another process makes of them.
#include <dlfcn.h>

#include <csignal>
#include <cstdlib>

#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/runtime.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"
#include "sim/host/run_loop.h"

namespace kv::sim::host {

using platform::Sel;
using platform::send;
using platform::Value;

namespace {

int tokenFor(id name) {
  int token = -1;
  notify_register_check(platform::toString(name).c_str(), &token);
  return token;
}

// Loses `bytes` of memory on purpose: a leak for the sanitizer run to find.
// Written through a volatile slot, so that the compiler keeps the
// allocation and the only pointer to it is really lost.
void* volatile gLastLeak = nullptr;
void leak(id, SEL, id bytes) {
  auto n = platform::integerOf(bytes).value_or(0);
  gLastLeak = std::malloc(static_cast<size_t>(n > 0 ? n : 1));
  gLastLeak = nullptr;
}

void setPreference(id, SEL, id key, id value, id domain) {
  CFPreferencesSetAppValue(platform::cf(key), value, platform::cf(domain));
}
BOOL synchronize(id, SEL, id domain) {
  return CFPreferencesAppSynchronize(platform::cf(domain));
}
id preference(id, SEL, id key, id domain) {
  id value = platform::ns(CFPreferencesCopyAppValue(platform::cf(key), platform::cf(domain)));
  return value == nullptr ? nullptr : send<id>(value, Sel("autorelease"));
}

void setState(id, SEL, id state, id name) {
  notify_set_state(tokenFor(name), static_cast<uint64_t>(platform::integerOf(state).value_or(0)));
}
id stateFor(id, SEL, id name) {
  uint64_t state = 0;
  notify_get_state(tokenFor(name), &state);
  return platform::makeInteger(static_cast<int64_t>(state));
}
void post(id, SEL, id name) {
  notify_post(platform::toString(name).c_str());
}

void observed(CFNotificationCenterRef, void*, CFNotificationName name, const void*,
              CFDictionaryRef) {
  logEvent("probe", "observed " + platform::toString(platform::ns(name)));
}
void observe(id, SEL, id name) {
  CFNotificationCenterAddObserver(CFNotificationCenterGetDarwinNotifyCenter(), nullptr, observed,
                                  platform::cf(name), nullptr,
                                  CFNotificationSuspensionBehaviorDeliverImmediately);
}

id center(id name) {
  return platform::sendClass<id>(platform::classNamed("CPDistributedMessagingCenter"),
                                 Sel("centerNamed:"), name);
}
void serveCenter(id cls, SEL, id centerName, id names) {
  id c = center(centerName);
  send<void>(c, Sel("runServerOnCurrentThread"));
  for (const auto& n : platform::stringListOf(names).value_or(std::vector<std::string>{})) {
    send<void>(c, Sel("registerForMessageName:target:selector:"), platform::makeString(n), cls,
               platform::selector("handleMessageNamed:userInfo:"));
  }
}
id handleMessage(id, SEL, id name, id userInfo) {
  logEvent("probe", "handling " + platform::toString(name));
  Value::Dictionary reply{{"name", Value::string(platform::toString(name))},
                          {"process", Value::string(processName())}};
  Value info = platform::valueOf(userInfo);
  if (!info.isNone()) reply["userInfo"] = info;
  return platform::makeObject(Value::dictionary(reply));
}
id sendMessage(id, SEL, id name, id centerName, id userInfo) {
  return send<id>(center(centerName), Sel("sendMessageAndReceiveReplyName:userInfo:"), name,
                  userInfo);
}
void sendOneWay(id, SEL, id name, id centerName, id userInfo) {
  send<BOOL>(center(centerName), Sel("sendMessageName:userInfo:"), name, userInfo);
}

void fired(id, SEL, id tag) {
  logEvent("probe", "fired " + platform::toString(tag));
}
void performLater(id cls, SEL, id tag, id delay) {
  send<void>(cls, Sel("performSelector:withObject:afterDelay:"), platform::selector("fired:"), tag,
             platform::realOf(delay).value_or(0));
}
void cancelLater(id cls, SEL, id tag) {
  send<void>(cls, Sel("cancelPreviousPerformRequestsWithTarget:selector:object:"), cls,
             platform::selector("fired:"), tag);
}
void dispatchLater(id, SEL, id tag, id delay) {
  std::string t = platform::toString(tag);
  double seconds = platform::realOf(delay).value_or(0);
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, static_cast<int64_t>(seconds * 1e9)),
                 dispatch_get_main_queue(), ^{
                   logEvent("probe", "dispatched " + t);
                 });
}
void timerFired(id, SEL, id timer) {
  logEvent("probe", "timer " + platform::toString(send<id>(timer, Sel("userInfo"))));
}
id startTimer(id cls, SEL, id tag, id interval, id repeats) {
  return platform::sendClass<id>(
      platform::classNamed("NSTimer"),
      Sel("scheduledTimerWithTimeInterval:target:selector:userInfo:repeats:"),
      platform::realOf(interval).value_or(1), cls, platform::selector("timerFired:"), tag,
      static_cast<BOOL>(platform::boolOf(repeats).value_or(false)));
}
id clock(id, SEL) {
  id date = platform::sendClass<id>(platform::classNamed("NSDate"), Sel("date"));
  return platform::makeObject(Value::dictionary(
      {{"absolute", Value::real(CFAbsoluteTimeGetCurrent())},
       {"date", Value::real(send<double>(date, Sel("timeIntervalSinceReferenceDate")))}}));
}
void crash(id, SEL) {
  std::raise(SIGSEGV);
}
// The process ends with `status` one second of device time later, from its
// own run loop: a death that comes while the scenario only lets time pass.
void exitWhenIdle(id, SEL, int status) {
  scheduleAfter(1.0, [status] { std::_Exit(status); });
}
void hang(id, SEL) {
  for (volatile bool forever = true; forever;) {
  }
}

void imageAdded(const struct mach_header*, intptr_t) {
  logEvent("probe", std::string("image callback; SimTestImageClass ") +
                        (platform::classNamed("SimTestImageClass") ? "present" : "absent"));
}
void watchImages(id, SEL) {
  _dyld_register_func_for_add_image(imageAdded);
}

id fileExists(id, SEL, id path) {
  id manager =
      platform::sendClass<id>(platform::classNamed("NSFileManager"), Sel("defaultManager"));
  return platform::makeBool(send<BOOL>(manager, Sel("fileExistsAtPath:"), path) != 0);
}
id localizedString(id, SEL, id key, id bundlePath) {
  id bundle =
      platform::sendClass<id>(platform::classNamed("NSBundle"), Sel("bundleWithPath:"), bundlePath);
  return send<id>(bundle, Sel("localizedStringForKey:value:table:"), key,
                  platform::makeString("(default)"), id{nullptr});
}

// SimProbe as one more observer of the biometric events, after those
// SpringBoard added at its start: the event monitor's before iOS 11, the
// biometric resource's on iOS 11.
void watchBiometrics(id cls, SEL) {
  for (const char* source : {"SBUIBiometricEventMonitor", "SBUIBiometricResource"}) {
    Class sourceClass = platform::classNamed(source);
    if (sourceClass == nullptr) continue;
    id shared = platform::sendClass<id>(sourceClass, Sel("sharedInstance"));
    send<void>(shared, Sel("addObserver:"), cls);
    return;
  }
}
void biometricEvent(id, SEL, id, long code) {
  logEvent("probe", "biometric event " + std::to_string(code));
}

// Other code asking the library to open a home-screen folder behind its
// prompt: the folder named NAME is handed to the controller's API.
void askToOpenFolder(id, SEL, id name) {
  Class icons = platform::classNamed("SBIconController");
  id root = send<id>(platform::sendClass<id>(icons, Sel("sharedInstance")), Sel("rootFolder"));
  id folderIcons = send<id>(root, Sel("folderIcons"));
  for (platform::UInteger i = 0; i < platform::arrayCount(folderIcons); ++i) {
    id folder = send<id>(platform::arrayObjectAt(folderIcons, i), Sel("folder"));
    if (platform::toString(send<id>(folder, Sel("displayName"))) != platform::toString(name))
      continue;
    id controller =
        platform::sendClass<id>(platform::classNamed("KavelinController"), Sel("sharedInstance"));
    send<void>(controller, Sel("authenticateForOpeningFolder:"), folder);
    return;
  }
  logEvent("probe", "no folder " + platform::toString(name));
}

// An alert whose delegate is SimProbe, to watch the platform's alert path.
void showAlert(id cls, SEL, id title, id message, id buttons) {
  auto names = platform::stringListOf(buttons).value_or(std::vector<std::string>{});
  id alert = send<id>(platform::sendClass<id>(platform::classNamed("UIAlertView"), Sel("alloc")),
                      Sel("initWithTitle:message:delegate:cancelButtonTitle:otherButtonTitles:"),
                      title, message, cls,
                      names.empty() ? id{nullptr} : platform::makeString(names[0]), id{nullptr});
  for (size_t i = 1; i < names.size(); ++i) {
    send<platform::Integer>(alert, Sel("addButtonWithTitle:"), platform::makeString(names[i]));
  }
  send<void>(alert, Sel("show"));
  send<void>(alert, Sel("release"));
}
void alertPresented(id, SEL, id) {
  logEvent("probe", "alert presented");
}
void alertClicked(id, SEL, id, platform::Integer index) {
  logEvent("probe", "alert clicked " + std::to_string(index));
}
void alertDismissed(id, SEL, id, platform::Integer index) {
  logEvent("probe", "alert dismissed " + std::to_string(index));
}

void lookUp(id, SEL, id name) {
  void* symbol = dlsym(RTLD_DEFAULT, platform::toString(name).c_str());
  logEvent("probe", platform::toString(name) + (symbol ? " found" : " absent"));
}

// Something of the platform's asks a block on the stack for its length, as
// it would a string or data: answered only where a class adds the method.
void askStackBlockLength(id, SEL) {
  int captured = 7;
  void (^onStack)(void) = ^{
    (void)captured;
  };
  id block = reinterpret_cast<id>(onStack);
  if (send<BOOL>(block, Sel("respondsToSelector:"), platform::selector("length")) == 0) {
    logEvent("probe", "stack block does not answer length");
    return;
  }
  logEvent("probe", "stack block length " + std::to_string(send<long long>(block, Sel("length"))));
}

}  // namespace

void defineProbe() {
  ClassBuilder("SimProbe", "NSObject")
      .classMethod("setPreference:value:domain:", imp(setPreference), "v@:@@@")
      .classMethod("synchronize:", imp(synchronize), "C@:@")
      .classMethod("preference:domain:", imp(preference), "@@:@@")
      .classMethod("setState:forName:", imp(setState), "v@:@@")
      .classMethod("stateForName:", imp(stateFor), "@@:@")
      .classMethod("post:", imp(post), "v@:@")
      .classMethod("observe:", imp(observe), "v@:@")
      .classMethod("serve:names:", imp(serveCenter), "v@:@@")
      .classMethod("handleMessageNamed:userInfo:", imp(handleMessage), "@@:@@")
      .classMethod("sendMessage:center:userInfo:", imp(sendMessage), "@@:@@@")
      .classMethod("sendOneWay:center:userInfo:", imp(sendOneWay), "v@:@@@")
      .classMethod("fired:", imp(fired), "v@:@")
      .classMethod("leak:", imp(leak), "v@:@")
      .classMethod("performLater:delay:", imp(performLater), "v@:@@")
      .classMethod("cancelLater:", imp(cancelLater), "v@:@")
      .classMethod("dispatchLater:delay:", imp(dispatchLater), "v@:@@")
      .classMethod("timerFired:", imp(timerFired), "v@:@")
      .classMethod("startTimer:interval:repeats:", imp(startTimer), "@@:@@@")
      .classMethod("clock", imp(clock), "@@:")
      .classMethod("crash", imp(crash), "v@:")
      .classMethod("hang", imp(hang), "v@:")
      .classMethod("exitWhenIdle:", imp(exitWhenIdle), "v@:i")
      .classMethod("watchImages", imp(watchImages), "v@:")
      .classMethod("lookUp:", imp(lookUp), "v@:@")
      .classMethod("askStackBlockLength", imp(askStackBlockLength), "v@:")
      .classMethod("showAlert:message:buttons:", imp(showAlert), "v@:@@@")
      .classMethod("didPresentAlertView:", imp(alertPresented), "v@:@")
      .classMethod("alertView:clickedButtonAtIndex:", imp(alertClicked), "v@:@q")
      .classMethod("alertView:didDismissWithButtonIndex:", imp(alertDismissed), "v@:@q")
      .classMethod("fileExists:", imp(fileExists), "@@:@")
      .classMethod("watchBiometrics", imp(watchBiometrics), "v@:")
      .classMethod("askToOpenFolder:", imp(askToOpenFolder), "v@:@")
      .classMethod("biometricEventMonitor:handleBiometricEvent:", imp(biometricEvent), "v@:@q")
      .classMethod("biometricResource:observeEvent:", imp(biometricEvent), "v@:@Q")
      .classMethod("localizedString:bundle:", imp(localizedString), "@@:@@")
      .build();
}

}  // namespace kv::sim::host
