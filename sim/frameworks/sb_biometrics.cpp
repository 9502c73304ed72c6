// The biometric sensor as SpringBoard sees it: BiometricKit, the event
// monitor and kit interface of older systems, the biometric resource of
// iOS 11, the lock screen's own matching, and the "finger", "face" and
// "biometric" actions that put a finger on the sensor or a face before it.
#include <vector>

#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/host/actions.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

// What the sensor reports for one finger or face, by hardware and version.
struct Sequence {
  const char* hardware;  // "touchid" or "faceid"
  int firstMajor;
  int lastMajor;
  bool match;
  std::vector<long> codes;
};
// Before iOS 11 a finger is detected (1) and matched (3) or not (10). On
// iOS 11 a recognised finger or face is also reported to the lock screen as
// matched (4); an unrecognised finger ends its presence (2), an unrecognised
// face asks for a fresh attempt (14); a face is detected as 12.
const std::vector<Sequence> kSequences = {
    {"touchid", 8, 10, true, {1, 3}},     {"touchid", 8, 10, false, {1, 10}},
    {"touchid", 11, 11, true, {1, 3, 4}}, {"touchid", 11, 11, false, {1, 2}},
    {"faceid", 11, 11, true, {12, 3, 4}}, {"faceid", 11, 11, false, {12, 14}},
};
// On the lock screen of a device without passcode the system does not match;
// BiometricKit asked to match by itself reports its own statuses: a
// recognised finger is 2 before iOS 10 and 1 from iOS 10, an unrecognised
// one 10.
const std::vector<Sequence> kKitSequences = {
    {"touchid", 8, 9, true, {2}},
    {"touchid", 10, 11, true, {1}},
    {"touchid", 8, 11, false, {10}},
};

// BiometricKit was asked to match by itself since the device locked.
bool gKitMatchingWhileLocked = false;

std::string describe(const std::vector<long>& codes) {
  std::string out;
  for (long c : codes) out += (out.empty() ? "" : " ") + std::to_string(c);
  return out;
}

// ---- Observers: an ordered list kept in the object's "_observers" ----

id observersOf(id obj) {
  auto* slot = static_cast<id*>(platform::ivarAddress(obj, "_observers"));
  if (slot == nullptr) return nullptr;
  if (*slot == nullptr) {
    *slot = platform::Retained(
                platform::sendClass<id>(platform::classNamed("NSMutableArray"), Sel("array")))
                .take();
  }
  return *slot;
}
void addObserver(id self, SEL, id observer) {
  id list = observersOf(self);
  if (observer != nullptr && !send<BOOL>(list, Sel("containsObject:"), observer)) {
    send<void>(list, Sel("addObject:"), observer);
  }
}
void removeObserver(id self, SEL, id observer) {
  send<void>(observersOf(self), Sel("removeObject:"), observer);
}
// The observers by class, in order, as a developer asks for them.
id observerNames(id self, SEL) {
  id names = platform::sendClass<id>(platform::classNamed("NSMutableArray"), Sel("array"));
  id list = observersOf(self);
  for (platform::UInteger i = 0; i < platform::arrayCount(list); ++i) {
    id observer = platform::arrayObjectAt(list, i);
    const char* name = class_isMetaClass(object_getClass(observer))
                           ? class_getName(reinterpret_cast<Class>(observer))
                           : platform::classNameOf(observer);
    send<void>(names, Sel("addObject:"), platform::makeString(name));
  }
  return names;
}
std::vector<Retained> snapshot(id list) {
  std::vector<Retained> out;
  for (platform::UInteger i = 0; i < platform::arrayCount(list); ++i) {
    out.emplace_back(platform::arrayObjectAt(list, i));
  }
  return out;
}
bool flag(id obj, const char* ivar) {
  return platform::ivar<BOOL>(obj, ivar).value_or(0) != 0;
}
void setFlag(id obj, const char* ivar, bool value) {
  if (auto* slot = static_cast<BOOL*>(platform::ivarAddress(obj, ivar))) *slot = value ? 1 : 0;
}

// ---- Before iOS 11: the event monitor (and on iOS 10 the kit interface) ----

void monitorSetMatchingEnabled(id self, SEL, BOOL enabled) {
  setFlag(self, "_matchingEnabled", enabled);
}
BOOL monitorIsMatchingEnabled(id self, SEL) {
  return flag(self, "_matchingEnabled") ? 1 : 0;
}
void monitorStartMatching(id self, SEL) {
  setFlag(self, "_isMatching", true);
}
void monitorStopMatching(id self, SEL) {
  setFlag(self, "_isMatching", false);
}
id monitorBiometricKit(id, SEL) {
  return sharedOf("BiometricKit");
}

// The monitor hands each event to its observers, in the order they came.
void monitorDeliver(id monitor, long code) {
  for (auto& observer : snapshot(observersOf(monitor))) {
    if (platform::respondsTo(observer.get(), Sel("biometricEventMonitor:handleBiometricEvent:"))) {
      send<void>(observer.get(), Sel("biometricEventMonitor:handleBiometricEvent:"), monitor, code);
    }
  }
}
void interfaceHandleEvent(id self, SEL, id, long code) {
  monitorDeliver(self, code);
}
id interfaceDelegate(id self, SEL) {
  auto* slot = static_cast<id*>(platform::ivarAddress(self, "_delegate"));
  return slot == nullptr ? nullptr : *slot;
}
void interfaceSetDelegate(id self, SEL, id delegate) {
  if (auto* slot = static_cast<id*>(platform::ivarAddress(self, "_delegate"))) *slot = delegate;
}

// ---- iOS 11: the biometric resource ----

struct AssertionState {
  bool valid = true;
};
int gActiveAssertions = 0;

id acquireAssertion(id, SEL, unsigned long mode, id reason) {
  id assertion = host::newObject(platform::classNamed("SBUIBiometricMatchingAssertion"));
  ++gActiveAssertions;
  host::logEvent("biometric", "matching assertion mode " + std::to_string(mode) + " for \"" +
                                  platform::toString(reason) + "\"");
  return send<id>(assertion, Sel("autorelease"));
}
void assertionInvalidate(id self, SEL) {
  if (!stateOf<AssertionState>(self).valid) return;
  stateOf<AssertionState>(self).valid = false;
  --gActiveAssertions;
  host::logEvent("biometric", "matching assertion invalidated");
}
BOOL resourceMatchingEnabled(id self, SEL) {
  return flag(self, "_isMatchingEnabled") ? 1 : 0;
}
BOOL resourceMatchingAllowed(id self, SEL) {
  return flag(self, "_isMatchingAllowed") ? 1 : 0;
}
BOOL resourceCapability(id, SEL) {
  return system().identities > 0 ? 1 : 0;
}

void resourceDeliver(id resource, long code) {
  for (auto& observer : snapshot(observersOf(resource))) {
    if (platform::respondsTo(observer.get(), Sel("biometricResource:observeEvent:"))) {
      send<void>(observer.get(), Sel("biometricResource:observeEvent:"), resource, code);
    }
  }
}

// ---- BiometricKit ----

struct KitState {
  Retained delegate;
};
// The fingers or faces enrolled now: the device's at start, then as the
// owner removes them in this process.
int& enrolled() {
  static int count = system().identities;
  return count;
}
id kitIdentities(id, SEL, id) {
  id list = platform::sendClass<id>(platform::classNamed("NSMutableArray"), Sel("array"));
  for (int i = 0; i < enrolled(); ++i) {
    id identity = host::newObject(platform::classNamed("BiometricKitIdentity"));
    send<void>(list, Sel("addObject:"), identity);
    send<void>(identity, Sel("release"));
  }
  return list;
}
id kitDelegate(id self, SEL) {
  return stateOf<KitState>(self).delegate.get();
}
void kitSetDelegate(id self, SEL, id delegate) {
  stateOf<KitState>(self).delegate.reset(delegate);
}
id kitMatchWithMode(id, SEL, unsigned long mode, id) {
  host::logEvent("biometric", "BiometricKit match mode " + std::to_string(mode));
  return send<id>(host::newObject(platform::classNamed("BiometricKitMatchOperation")),
                  Sel("autorelease"));
}
// The kit answers a status; 0 is success.
int kitDetectFinger(id, SEL, id) {
  host::logEvent("biometric", "BiometricKit detects a finger");
  return 0;
}
int kitMatchWithOptions(id, SEL, id, id) {
  host::logEvent("biometric", "BiometricKit match with options");
  if (springBoard().locked && !system().passcode) gKitMatchingWhileLocked = true;
  return 0;
}
void kitRecord(id self, SEL cmd, BOOL) {
  host::logEvent("call",
                 std::string(platform::classNameOf(self)) + " -" + platform::selectorName(cmd));
}
int kitEnableBackgroundFdet(id self, SEL cmd, BOOL on) {
  kitRecord(self, cmd, on);
  return 0;
}
BOOL kitEnableBackgroundDetection(id self, SEL cmd, BOOL on, id) {
  kitRecord(self, cmd, on);
  return 1;
}
// From iOS 11 the kit tells the system when the enrolment changed.
void enrolmentChanged() {
  if (atLeast(11)) notify_post("com.apple.BiometricKit.enrollmentChanged");
}
void kitRemoveIdentity(id, SEL, id) {
  if (enrolled() > 0) --enrolled();
  host::logEvent("biometric", "identity removed; " + std::to_string(enrolled()) + " enrolled");
  enrolmentChanged();
}
void kitUpdateIdentity(id, SEL, id) {
  host::logEvent("biometric", "identity updated; " + std::to_string(enrolled()) + " enrolled");
  enrolmentChanged();
}
// The owner's change in the enrolment screen reaches the kit's manager.
Value identityAction(const char* selector, std::string* error) {
  if (system().biometrics == "none") {
    *error = "this device has no biometric hardware";
    return {};
  }
  platform::AutoreleasePool pool;
  id kit = platform::sendClass<id>(platform::classNamed("BiometricKit"), Sel("manager"));
  id identities = send<id>(kit, Sel("identities:"), id{nullptr});
  id first = platform::arrayObjectAt(identities, 0);
  send<void>(kit, platform::selector(selector), first);
  return {};
}

void operationCancel(id, SEL) {
  host::logEvent("biometric", "match operation cancelled");
}

// ---- The lock screen matches while the device is locked ----

// Only with a device passcode: without one the system matches no finger.
void lockScreenMonitorEvent(id self, SEL, id, long code) {
  if (code == 3 && springBoard().locked && system().passcode)
    send<void>(self, Sel("_bioAuthenticated:"), id{nullptr});
}
void lockScreenResourceEvent(id, SEL, id, long code) {
  if (code == 4 && springBoard().locked && system().passcode) {
    send<void>(sharedOf("SBLockScreenManager"), Sel("_bioAuthenticated:"), id{nullptr});
  }
}

// ---- Delivering what the sensor saw ----

// Whether anything is listening: the monitor's matching before iOS 11, an
// assertion or the locked lock screen on iOS 11.
bool sensorActive() {
  if (atLeast(11)) {
    return gActiveAssertions > 0 || (springBoard().locked && system().passcode);
  }
  return flag(sharedOf("SBUIBiometricEventMonitor"), "_matchingEnabled");
}

void deliver(long code) {
  if (atLeast(11)) {
    resourceDeliver(sharedOf("SBUIBiometricResource"), code);
  } else if (atLeast(10)) {
    id interface = sharedOf("_SBUIBiometricKitInterface");
    id delegate = interfaceDelegate(interface, nullptr);
    send<void>(delegate, Sel("biometricKitInterface:handleEvent:"), interface, code);
  } else {
    monitorDeliver(sharedOf("SBUIBiometricEventMonitor"), code);
  }
}

Value presentAction(const char* hardware, const host::ActionRequest& request, std::string* error) {
  if (system().biometrics != hardware) {
    *error = std::string("this device has no ") +
             (std::string(hardware) == "faceid" ? "face camera" : "fingerprint sensor");
    return {};
  }
  bool match = request.args[0] == "match";
  if (enrolled() == 0) match = false;  // nothing enrolled matches nothing
  bool kitAlone = springBoard().locked && !system().passcode &&
                  (atLeast(11) ? gActiveAssertions > 0 : gKitMatchingWhileLocked);
  for (const auto& s : kitAlone ? kKitSequences : kSequences) {
    if (hardware != std::string(s.hardware) || s.match != match || system().major < s.firstMajor ||
        system().major > s.lastMajor) {
      continue;
    }
    if (!sensorActive()) {
      host::logEvent("biometric",
                     std::string(hardware) + " " + request.args[0] + ": nothing is matching");
      return {};
    }
    host::logEvent("biometric",
                   std::string(hardware) + " " + request.args[0] + ": events " + describe(s.codes));
    for (long code : s.codes) deliver(code);
    return {};
  }
  *error = "no biometric sequence for this device";
  return {};
}

Value rawEventAction(const host::ActionRequest& request, std::string*) {
  long code = std::stol(request.args[0]);
  host::logEvent("biometric", "event " + std::to_string(code));
  deliver(code);
  return {};
}

}  // namespace

// BiometricKit, in every process: the enrolled identities and matching.
void defineBiometricKit() {
  ClassBuilder("BiometricKit", "NSObject")
      .classMethod("manager", imp(sharedInstanceOf), "@@:")
      .instance("identities:", imp(kitIdentities), "@@:@")
      .instance("removeIdentity:", imp(kitRemoveIdentity), "v@:@")
      .instance("updateIdentity:", imp(kitUpdateIdentity), "v@:@")
      .instance("delegate", imp(kitDelegate), "@@:")
      .instance("setDelegate:", imp(kitSetDelegate), "v@:@")
      .instance("matchWithMode:andCredentialSet:", imp(kitMatchWithMode), "@@:Q@")
      .instance("match:withOptions:", imp(kitMatchWithOptions), "i@:@@")
      .instance("detectFingerWithOptions:", imp(kitDetectFinger), "i@:@")
      .instance("enableBackgroundFdet:", imp(kitEnableBackgroundFdet), "i@:C")
      .instance("enableBackgroundFingerDetection:error:", imp(kitEnableBackgroundDetection),
                "C@:C^@")
      .build();
  ClassBuilder("BiometricKitIdentity", "NSObject").build();
  ClassBuilder("BiometricKitMatchOperation", "NSObject")
      .instance("cancel", imp(operationCancel), "v@:")
      .build();
}

void defineSpringBoardBiometrics() {
  if (atLeast(11)) {
    ClassBuilder("SBUIBiometricResource", "NSObject")
        .ivar("_observers")
        .ivar("_isMatchingEnabled", "C")
        .ivar("_isMatchingAllowed", "C")
        .classMethod("sharedInstance", imp(sharedInstanceOf), "@@:")
        .instance("addObserver:", imp(addObserver), "v@:@")
        .instance("removeObserver:", imp(removeObserver), "v@:@")
        .instance("observerNames", imp(observerNames), "@@:")
        .instance("acquireMatchingAssertionWithMode:reason:", imp(acquireAssertion), "@@:Q@")
        .instance("isMatchingEnabled", imp(resourceMatchingEnabled), "C@:")
        .instance("isMatchingAllowed", imp(resourceMatchingAllowed), "C@:")
        .instance("hasBiometricAuthenticationCapabilityEnabled", imp(resourceCapability), "C@:")
        .build();
    ClassBuilder("SBUIBiometricMatchingAssertion", "NSObject")
        .instance("invalidate", imp(assertionInvalidate), "v@:")
        .build();
    ClassBuilder("SBLockScreenMesaCoordinator", "NSObject")
        .classMethod("sharedInstance", imp(sharedInstanceOf), "@@:")
        .instance("biometricResource:observeEvent:", imp(lockScreenResourceEvent), "v@:@Q")
        .build();
  } else {
    ClassBuilder("SBUIBiometricEventMonitor", "NSObject")
        .ivar("_observers")
        .ivar("_matchingEnabled", "C")
        .ivar("_isMatching", "C")
        .classMethod("sharedInstance", imp(sharedInstanceOf), "@@:")
        .instance("addObserver:", imp(addObserver), "v@:@")
        .instance("removeObserver:", imp(removeObserver), "v@:@")
        .instance("observerNames", imp(observerNames), "@@:")
        .instance("_setMatchingEnabled:", imp(monitorSetMatchingEnabled), "v@:C")
        .instance("isMatchingEnabled", imp(monitorIsMatchingEnabled), "C@:")
        .instance("_startMatching", imp(monitorStartMatching), "v@:")
        .instance("_stopMatching", imp(monitorStopMatching), "v@:")
        .instance("biometricKit", imp(monitorBiometricKit), "@@:")
        .instance("biometricKitInterface:handleEvent:", imp(interfaceHandleEvent), "v@:@Q")
        .build();
    class_addMethod(platform::classNamed("SBLockScreenManager"),
                    Sel("biometricEventMonitor:handleBiometricEvent:"), imp(lockScreenMonitorEvent),
                    "v@:@Q");
    if (atLeast(10)) {
      ClassBuilder("_SBUIBiometricKitInterface", "NSObject")
          .ivar("_delegate")
          .classMethod("sharedInstance", imp(sharedInstanceOf), "@@:")
          .instance("delegate", imp(interfaceDelegate), "@@:")
          .instance("setDelegate:", imp(interfaceSetDelegate), "v@:@")
          .build();
    }
  }
  host::registerAction("finger", [](const host::ActionRequest& r, std::string* e) {
    return presentAction("touchid", r, e);
  });
  host::registerAction("face", [](const host::ActionRequest& r, std::string* e) {
    return presentAction("faceid", r, e);
  });
  host::registerAction("biometric", rawEventAction);
  host::registerAction("remove-identity", [](const host::ActionRequest&, std::string* e) {
    return identityAction("removeIdentity:", e);
  });
  host::registerAction("update-identity", [](const host::ActionRequest&, std::string* e) {
    return identityAction("updateIdentity:", e);
  });
}

// The sensor's observers as SpringBoard sets them up at start: the lock
// screen listens (on iOS 11 while it is up); the monitor matches while the
// device is locked.
void startSpringBoardBiometrics() {
  if (atLeast(11)) {
    if (springBoard().locked) {
      send<void>(sharedOf("SBUIBiometricResource"), Sel("addObserver:"),
                 sharedOf("SBLockScreenMesaCoordinator"));
    }
    return;
  }
  id monitor = sharedOf("SBUIBiometricEventMonitor");
  send<void>(monitor, Sel("addObserver:"), sharedOf("SBLockScreenManager"));
  if (atLeast(10)) {
    id interface = sharedOf("_SBUIBiometricKitInterface");
    send<void>(interface, Sel("setDelegate:"), monitor);
  }
}

// Locking hands the sensor to the lock screen (on a device with a passcode);
// unlocking takes it back.
void lockScreenWantsMatching(bool wanted) {
  gKitMatchingWhileLocked = false;
  if (atLeast(11)) {
    send<void>(sharedOf("SBUIBiometricResource"),
               wanted ? Sel("addObserver:") : Sel("removeObserver:"),
               sharedOf("SBLockScreenMesaCoordinator"));
    return;
  }
  wanted = wanted && system().passcode;
  send<void>(sharedOf("SBUIBiometricEventMonitor"), Sel("_setMatchingEnabled:"),
             static_cast<BOOL>(wanted ? 1 : 0));
}

}  // namespace kv::sim::frameworks
