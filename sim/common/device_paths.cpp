// Where a path of the device's file system lives on this machine.
#include "sim/common/device_paths.h"

namespace kv::sim {

namespace {

struct Mapping {
  std::string_view devicePrefix;
  std::string_view rootPrefix;
};

// The device's top-level folders and where each lives under the root.
constexpr Mapping kMappings[] = {
    {"/var", "/private/var"},
    {"/tmp", "/private/var/tmp"},
    {"/private", "/private"},
    {"/Library", "/Library"},
    {"/bootstrap", "/bootstrap"},
    {"/System/Library", "/System/Library"},
};

// True iff `path` is `prefix` or lies below it (whole components only).
bool under(std::string_view path, std::string_view prefix) {
  return path.substr(0, prefix.size()) == prefix &&
         (path.size() == prefix.size() || path[prefix.size()] == '/');
}

}  // namespace

std::string mapDevicePath(std::string_view root, std::string_view path) {
  if (root.empty() || path.empty() || path[0] != '/') return std::string(path);
  size_t slashes = 0;
  while (slashes + 1 < path.size() && path[slashes + 1] == '/') ++slashes;
  std::string_view clean = path.substr(slashes);
  if (under(clean, root)) return std::string(path);
  for (const auto& m : kMappings) {
    if (under(clean, m.devicePrefix)) {
      std::string out(root);
      out += m.rootPrefix;
      out += clean.substr(m.devicePrefix.size());
      return out;
    }
  }
  return std::string(path);
}

}  // namespace kv::sim
