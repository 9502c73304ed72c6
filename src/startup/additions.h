// Methods the library adds to platform classes at start-up.
#pragma once

#include "platform/objc.h"

namespace kv::startup {

// NSArray -_kv_objectOfClass: answers the first element that is a kind of
// `cls`, or nil.
id objectOfClass(id self, SEL cmd, id cls);

}  // namespace kv::startup
