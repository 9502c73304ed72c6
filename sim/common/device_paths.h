// Where a path of the device's file system lives on this machine.
#pragma once

#include <string>
#include <string_view>

namespace kv::sim {

// Returns the real path of device path `path` under the device root `root`:
// /var and /tmp follow the device's links into /private/var, and /private,
// /Library, /bootstrap and /System/Library live under the root. Relative
// paths, paths already under the root and all others come back unchanged.
std::string mapDevicePath(std::string_view root, std::string_view path);

}  // namespace kv::sim
