// SpringBoard's second start-up stage, run inside the replacement of
// SBUIController's init once SpringBoard builds its UI controller.
#pragma once

#include "platform/objc.h"

namespace kv::startup {

// The replacement of -[SBUIController init].
id uiControllerInit(id self, SEL cmd);

}  // namespace kv::startup
