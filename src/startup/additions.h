// Methods the library adds to platform classes at start-up.
#pragma once

#include "platform/objc.h"

namespace kv::startup {

// NSArray -_kv_objectOfClass: answers the first element that is a kind of
// `cls`, or nil.
id objectOfClass(id self, SEL cmd, id cls);

// __NSStackBlock__ -length answers 0: on iOS 11 a stack block asked for its
// length (as a string or data would be) then answers instead of raising.
long long stackBlockLength(id self, SEL cmd);

}  // namespace kv::startup
