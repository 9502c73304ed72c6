// SpringBoard's second start-up stage.
#include "startup/second_stage.h"

#include <spawn.h>

#include "core/controller.h"
#include "core/messages.h"
#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/hook.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "settings/notifications.h"
#include "settings/settings.h"
#include "startup/flags.h"

extern char** environ;

namespace kv::startup {

namespace {

using platform::Sel;
using platform::send;
using platform::sendClass;

bool gCenterCreated = false;

// The messaging centre, with every message name aimed at the controller.
void createMessagingCenter() {
  platform::AutoreleasePool pool;
  id center = sendClass<id>(platform::classNamed("CPDistributedMessagingCenter"),
                            Sel("centerNamed:"), platform::makeString(core::kCenterName));
  send<void>(center, Sel("runServerOnCurrentThread"));
  id target = core::kavelinController();
  for (const char* name : core::messageNames()) {
    send<void>(center, Sel("registerForMessageName:target:selector:"), platform::makeString(name),
               target, Sel("handleMessageNamed:userInfo:"));
  }
}

// The media server is restarted without waiting; one of the two paths
// exists on a given device and failures do not matter.
void restartMediaServer() {
  for (const char* killall : {"/bootstrap/usr/bin/killall", "/usr/bin/killall"}) {
    char* argv[] = {const_cast<char*>(killall), const_cast<char*>("-9"),
                    const_cast<char*>("mediaserverd"), nullptr};
    pid_t pid = 0;
    posix_spawn(&pid, killall, nullptr, nullptr, argv, environ);
  }
}

// Whether a Kavelin passcode is stored, read from the domain itself: this
// runs before the stage loads the settings, and the answer must not depend
// on whether an earlier load happened.
bool passcodeStored() {
  platform::AutoreleasePool pool;
  id domain = platform::makeString(settings::kDomain);
  CFPreferencesAppSynchronize(platform::cf(domain));
  platform::Retained value = platform::Retained::adopt(platform::ns(CFPreferencesCopyAppValue(
      platform::cf(platform::makeString("passcode")), platform::cf(domain))));
  return platform::isKindOf(value.get(), "NSString");
}

bool identitiesEnrolled() {
  platform::AutoreleasePool pool;
  id kit = sendClass<id>(platform::classNamed("BiometricKit"), Sel("manager"));
  return platform::arrayCount(send<id>(kit, Sel("identities:"), id{nullptr})) > 0;
}

bool deviceHasPasscode() {
  if (flags().isIOS10OrLater) {
    id connection =
        sendClass<id>(platform::classNamed("MCProfileConnection"), Sel("sharedConnection"));
    return send<BOOL>(connection, Sel("isPasscodeSet")) != 0;
  }
  id controller =
      sendClass<id>(platform::classNamed("SBDeviceLockController"), Sel("sharedController"));
  return send<BOOL>(controller, Sel("deviceHasPasscodeSet")) != 0;
}

}  // namespace

id uiControllerInit(id self, SEL cmd) {
  // 1. The platform's own init.
  id result = platform::Hook<&uiControllerInit>::original(self, cmd);
  // 2. The messaging centre, once, and the media server's restart with it.
  if (!gCenterCreated) {
    gCenterCreated = true;
    createMessagingCenter();
    restartMediaServer();
  }
  // 3-4. Whether the user can authenticate, and whether the device has a passcode.
  SpringBoardFlags& sb = springBoardFlags();
  sb.identitiesPresent =
      settings::current().biometricsInUse ? identitiesEnrolled() : passcodeStored();
  sb.devicePasscodeSet = deviceHasPasscode();
  // 5. The settings.
  settings::load();
  // 6. The identities state, on every call.
  settings::publish(settings::Note::kIdentities, sb.identitiesPresent ? 1 : 0);
  return result;
}

}  // namespace kv::startup
