// The host's view of the device's file system: device paths handed to libc by any code in the
// process resolve inside the simulated device's root directory.
#pragma once

#include <string>

namespace kv::sim {

// Makes device paths resolve inside `root` (an absolute real directory; trailing slashes are
// dropped) for every file operation in this process from now on. An empty root turns the
// redirect off, which is the default. Call it before other threads touch the file system;
// a relative or over-long root throws std::invalid_argument.
void setDeviceRoot(const std::string& root);

// Returns the device root in effect, or "" when the redirect is off.
std::string deviceRoot();

// Returns the real path device path `path` resolves to, e.g. "/var/mobile/x" becomes
// root + "/private/var/mobile/x"; a path that is relative, already under the root or outside
// the device's folders comes back unchanged, as does every path while the redirect is off.
std::string realPathForDevicePath(const std::string& path);

}  // namespace kv::sim
