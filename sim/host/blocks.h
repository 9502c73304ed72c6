// Blocks as Objective-C objects in a host process, as on a device.
#pragma once

namespace kv::sim::host {

// Makes the blocks runtime's class words the classes __NSStackBlock__,
// __NSMallocBlock__ and __NSGlobalBlock__ (subclasses of NSObject), so that
// blocks answer messages: retain, release, copy, autorelease, and NSObject's
// own. Call once, before any block is messaged.
void installBlockClasses();

}  // namespace kv::sim::host
