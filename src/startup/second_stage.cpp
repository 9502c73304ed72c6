// SpringBoard's second start-up stage.
#include "startup/second_stage.h"

#include <spawn.h>

#include "core/controller.h"
#include "core/device.h"
#include "core/hardware.h"
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
  id target = core::controller();
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
  sb.identitiesPresent = settings::current().biometricsInUse
                             ? core::enrolledIdentities() > 0
                             : settings::storedString("passcode").has_value();
  sb.devicePasscodeSet = core::devicePasscodeSet();
  // 5. The settings.
  settings::load();
  // 6. The identities state, on every call.
  settings::publish(settings::Note::kIdentities, sb.identitiesPresent ? 1 : 0);
  return result;
}

}  // namespace kv::startup
