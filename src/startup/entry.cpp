// The library's one entry point: a load-time constructor that runs when the
// injection framework (or a simulated host) loads the library into a process.
#include "platform/runtime.h"

namespace kv::startup {

// Process roles, version flags and the interception table hang off this
// entry; until they are in place, loading the library changes nothing in
// its host.
__attribute__((constructor)) static void kavelinLoad() {}

}  // namespace kv::startup
