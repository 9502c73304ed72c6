// KavelinUnlockController: a finger unlocks a device that has no passcode.
#include "prompt/unlock_controller.h"

#include "base/flags.h"
#include "core/biometric_events.h"
#include "core/device.h"
#include "platform/classes.h"
#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"

namespace kv::prompt {

namespace {

using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendIfResponds;

const Sel kAlloc("alloc");
const Sel kInit("init");
const Sel kAddObserver("addObserver:");
const Sel kRemoveObserver("removeObserver:");
const Sel kAcquireAssertion("acquireMatchingAssertionWithMode:reason:");
const Sel kInvalidate("invalidate");
const Sel kIsMatchingEnabled("isMatchingEnabled");
const Sel kSetMatchingEnabled("_setMatchingEnabled:");
const Sel kStartMonitorMatching("_startMatching");
const Sel kBiometricKit("biometricKit");
const Sel kMatchWithOptions("match:withOptions:");
const Sel kUnlock("unlockUIFromSource:withOptions:");
const Sel kLockScreenViewController("lockScreenViewController");
const Sel kCameraIsVisible("cameraIsVisible");

constexpr unsigned long kAssertionMode = 5;
constexpr const char* kAssertionReason = "Kavelin Unlock";

struct UnlockMatching {
  id shared = nullptr;  // the one instance, kept for the life of SpringBoard
  bool isMatching = false;
  bool monitorWasEnabled = false;  // before iOS 11: the monitor's matching when we took it
  Retained assertion;              // iOS 11
};

UnlockMatching& matching() {
  static UnlockMatching m;
  return m;
}

bool ios10() {
  return base::flags().isIOS10OrLater;
}

id monitor() {
  return core::sharedInstanceOf("SBUIBiometricEventMonitor");
}

// The event that reports a recognised finger to this controller on this
// system, and the unlock source the platform gives such an unlock.
long matchEvent() {
  return ios10() ? core::kEventFingerOn : core::kEventPresenceEnded;
}
int unlockSource() {
  return ios10() ? 4 : 14;
}

// Takes the sensor: an assertion from the biometric resource on iOS 11; the
// event monitor's matching, and the kit's own, before it.
void startMatching(id self, SEL) {
  UnlockMatching& m = matching();
  if (m.isMatching || !core::biometricsInUse()) return;
  m.isMatching = true;
  platform::AutoreleasePool pool;
  if (base::flags().isIOS11) {
    id resource = core::sharedInstanceOf("SBUIBiometricResource");
    sendIfResponds(resource, kAddObserver, self);
    m.assertion.reset(sendIfResponds<id>(resource, kAcquireAssertion, kAssertionMode,
                                         platform::makeString(kAssertionReason)));
    return;
  }
  id source = monitor();
  m.monitorWasEnabled = sendIfResponds<BOOL>(source, kIsMatchingEnabled) != 0;
  sendIfResponds(source, kAddObserver, self);
  sendIfResponds(source, kSetMatchingEnabled, BOOL{1});
  sendIfResponds(source, kStartMonitorMatching);
  // Without a passcode the monitor's own matching finds no finger.
  if (!core::devicePasscodeSet()) {
    id kit = sendIfResponds<id>(source, kBiometricKit);
    id options = platform::makeDictionary({});
    sendIfResponds<int>(kit, kMatchWithOptions, id{nullptr}, options);
  }
}

// Gives the sensor back as it was found.
void stopMatching(id self, SEL) {
  UnlockMatching& m = matching();
  if (!m.isMatching) return;
  m.isMatching = false;
  if (base::flags().isIOS11) {
    sendIfResponds(core::sharedInstanceOf("SBUIBiometricResource"), kRemoveObserver, self);
    sendIfResponds(m.assertion.get(), kInvalidate);
    m.assertion.reset();
    return;
  }
  id source = monitor();
  sendIfResponds(source, kRemoveObserver, self);
  sendIfResponds(source, kSetMatchingEnabled, static_cast<BOOL>(m.monitorWasEnabled ? 1 : 0));
}

void handleEvent(id self, long code) {
  // A device with a passcode unlocks by the system's own matching.
  if (core::devicePasscodeSet()) return;
  id manager = core::sharedInstanceOf("SBLockScreenManager");
  if (!base::flags().isIOS8OrLater) {
    id lockScreen = sendIfResponds<id>(manager, kLockScreenViewController);
    if (sendIfResponds<BOOL>(lockScreen, kCameraIsVisible) != 0) return;
  }
  if (code != matchEvent()) return;
  Retained keep(self);
  if (platform::respondsTo(manager, kUnlock)) {
    // The manager's unlock answers a BOOL from iOS 10 on, nothing before.
    if (base::flags().isIOS10OrLater) {
      send<BOOL>(manager, kUnlock, unlockSource(), id{nullptr});
    } else {
      send<void>(manager, kUnlock, unlockSource(), id{nullptr});
    }
  }
  stopMatching(self, nullptr);
}

// ---- The runtime's view ----

id sharedInstance(id cls, SEL) {
  UnlockMatching& m = matching();
  if (m.shared == nullptr) m.shared = send<id>(send<id>(cls, kAlloc), kInit);
  return m.shared;
}
id sharedInstanceIfExists(id, SEL) {
  return matching().shared;
}
BOOL isMatching(id, SEL) {
  return matching().isMatching ? 1 : 0;
}
void monitorEvent(id self, SEL, id, long code) {
  handleEvent(self, code);
}

}  // namespace

void defineUnlockController() {
  if (platform::classNamed("KavelinUnlockController") != nullptr) return;
  using platform::method;
  platform::defineClass("KavelinUnlockController", "NSObject",
                        {
                            platform::classMethod("sharedInstance", sharedInstance),
                            platform::classMethod("sharedInstanceIfExists", sharedInstanceIfExists),
                            method("isMatching", isMatching),
                            method("startMatching", startMatching),
                            method("stopMatching", stopMatching),
                            method("biometricEventMonitor:handleBiometricEvent:", monitorEvent),
                            method("biometricKitInterface:handleEvent:", monitorEvent),
                            method("biometricResource:observeEvent:", monitorEvent),
                        });
}

}  // namespace kv::prompt
