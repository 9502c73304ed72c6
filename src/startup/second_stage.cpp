// SpringBoard's second start-up stage.
#include "startup/second_stage.h"

#include <spawn.h>

#include "base/flags.h"
#include "core/controller.h"
#include "core/device.h"
#include "core/messages.h"
#include "core/policy.h"
#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/hook.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "settings/notifications.h"
#include "settings/settings.h"

namespace kv::startup {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kCenterNamed("centerNamed:");
const platform::Sel kRunServerOnCurrentThread("runServerOnCurrentThread");
const platform::Sel kRegisterForMessageNameTargetSelector(
    "registerForMessageName:target:selector:");
const platform::Sel kHandleMessageNamedUserInfo("handleMessageNamed:userInfo:");

using platform::send;
using platform::sendClass;

bool gCenterCreated = false;

// The messaging centre, with every message name aimed at the controller.
void createMessagingCenter() {
  platform::AutoreleasePool pool;
  id center = sendClass<id>(platform::classNamed("CPDistributedMessagingCenter"), kCenterNamed,
                            platform::makeString(core::kCenterName));
  send<void>(center, kRunServerOnCurrentThread);
  id target = core::controller();
  for (const char* name : core::messageNames()) {
    send<void>(center, kRegisterForMessageNameTargetSelector, platform::makeString(name), target,
               kHandleMessageNamedUserInfo);
  }
}

// The media server is restarted without waiting; one of the two paths
// exists on a given device and failures do not matter.
void restartMediaServer() {
  for (const char* killall : {"/bootstrap/usr/bin/killall", "/usr/bin/killall"}) {
    char* argv[] = {const_cast<char*>(killall), const_cast<char*>("-9"),
                    const_cast<char*>("mediaserverd"), nullptr};
    pid_t pid = 0;
    posix_spawn(&pid, killall, nullptr, nullptr, argv, platform::environment());
  }
}

}  // namespace

id uiControllerInit(id self, SEL cmd) {
  id result = platform::Hook<&uiControllerInit>::original(self, cmd);
  // The messaging centre once, and the media server's restart with it.
  if (!gCenterCreated) {
    gCenterCreated = true;
    createMessagingCenter();
    restartMediaServer();
  }
  base::SpringBoardFlags& sb = base::springBoardFlags();
  sb.devicePasscodeSet = core::devicePasscodeSet();
  settings::load();
  // Whether someone can authenticate is judged on the settings just loaded:
  // a stored Kavelin passcode on a device whose sensor has nothing enrolled
  // counts, as the loader itself has it. Published on every call.
  sb.identitiesPresent = core::wayToAuthenticate();
  settings::publish(settings::Note::kIdentities, sb.identitiesPresent ? 1 : 0);
  return result;
}

}  // namespace kv::startup
