// Where a path of the device's file system lives on this machine.
#pragma once

#include <string>
#include <string_view>

namespace kv::sim {

// One of the device's top-level folders and where it lives under the root.
struct DeviceFolder {
  std::string_view device;  // the folder as the device names it
  std::string_view real;    // where it lives under the root
};

// The device's top-level folders; /var and /tmp follow the device's links
// into /private/var.
inline constexpr DeviceFolder kDeviceFolders[] = {
    {"/var", "/private/var"}, {"/tmp", "/private/var/tmp"}, {"/private", "/private"},
    {"/Library", "/Library"}, {"/bootstrap", "/bootstrap"}, {"/System/Library", "/System/Library"},
};

// True iff `path` is `prefix` or lies below it, comparing whole components.
constexpr bool isUnderFolder(std::string_view path, std::string_view prefix) {
  return path.substr(0, prefix.size()) == prefix &&
         (path.size() == prefix.size() || path[prefix.size()] == '/');
}

// Returns the real path of device path `path` under the device root `root`:
// /var and /tmp follow the device's links into /private/var, and /private,
// /Library, /bootstrap and /System/Library live under the root. Relative
// paths, paths already under the root and all others come back unchanged.
std::string mapDevicePath(std::string_view root, std::string_view path);

}  // namespace kv::sim
