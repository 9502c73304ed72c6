// KavelinController, SpringBoard's coordinator, as the runtime knows it: the
// target of the messaging centre and of the notifications start-up observes.
#pragma once

#include "platform/objc.h"

namespace kv::core {

// Registers the class (once).
void defineKavelinController();

// The shared controller, created on first use.
id controller();

}  // namespace kv::core
