// Where a path of the device's file system lives on this machine.
#include "sim/common/device_paths.h"

namespace kv::sim {

std::string mapDevicePath(std::string_view root, std::string_view path) {
  if (root.empty() || path.empty() || path[0] != '/') return std::string(path);
  size_t slashes = 0;
  while (slashes + 1 < path.size() && path[slashes + 1] == '/') ++slashes;
  std::string_view clean = path.substr(slashes);
  if (isUnderFolder(clean, root)) return std::string(path);
  for (const auto& folder : kDeviceFolders) {
    if (isUnderFolder(clean, folder.device)) {
      std::string out(root);
      out += folder.real;
      out += clean.substr(folder.device.size());
      return out;
    }
  }
  return std::string(path);
}

}  // namespace kv::sim
