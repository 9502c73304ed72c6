// Libraries that load after start-up: another extension's library, or a
// platform bundle loaded late. Loading one defines its classes, then tells
// every image-added callback, as the dynamic loader does on a device.
#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/foundation.h"
#include "platform/runtime.h"
#include "sim/host/actions.h"
#include "sim/host/classes.h"
#include "sim/host/fs_redirect.h"
#include "sim/host/link.h"
#include "sim/host/profile.h"

namespace kv::sim::host {

void announceImageAdded();

namespace {

using platform::Value;

const char* describeSelf(id self, SEL) {
  return platform::classNameOf(self);
}

// The images a scenario can load whose classes the host defines itself;
// any other name is an extension's library (loadExtensionLibrary).
const std::map<std::string, std::function<void()>>& images() {
  static const auto* table = new std::map<std::string, std::function<void()>>{
      {"SimTestImage",
       [] {
         ClassBuilder("SimTestImageClass", "NSObject")
             .instance("whoAmI", imp(describeSelf), "r*@:")
             .build();
       }},
  };
  return *table;
}

std::map<std::string, bool>& loaded() {
  static auto* set = new std::map<std::string, bool>();
  return *set;
}

// Another extension's own library, built beside this host: its
// constructor defines its classes. False with *error when there is none.
bool loadExtensionLibrary(const std::string& name, std::string* error) {
  char self[PATH_MAX];
  ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
  if (n <= 0) {
    *error = "cannot find the host's own directory";
    return false;
  }
  std::string path(self, static_cast<size_t>(n));
  path = path.substr(0, path.find_last_of('/') + 1) + "libextension-" + name + ".so";
  // The loader opens the file itself: asking libc first would see the path
  // through the device's file system, and a build kept under /tmp would
  // then be looked for inside the device.
  if (dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL) == nullptr) {
    const char* why = dlerror();
    std::string reason = why != nullptr ? why : "unknown";
    *error = reason.find("No such file") != std::string::npos
                 ? "no image " + name + " on this device"
                 : "image " + name + " did not load: " + reason;
    return false;
  }
  return true;
}

// load-image NAME: the image's classes appear, then the callbacks run.
Value loadImage(const ActionRequest& request, std::string* error) {
  if (request.args.size() != 1) {
    *error = "load-image needs NAME";
    return {};
  }
  const std::string& name = request.args[0];
  if (loaded()[name]) return Value::string("already loaded");
  auto it = images().find(name);
  if (it != images().end()) {
    it->second();
  } else if (!loadExtensionLibrary(name, error)) {
    return {};
  }
  loaded()[name] = true;
  logEvent("image", "loaded " + name);
  announceImageAdded();
  return {};
}

}  // namespace

// The injection framework loads a process's extensions in the order of
// their file names, so one whose name sorts before the library's is there
// when the library starts. The extensions the device models all hook
// SpringBoard; a file on the device with no library behind it (a marker
// the library only looks for) loads nothing.
void loadExtensionsBeforeLibrary() {
  static const std::string kLibraryName = "Kavelin";
  if (profile().processName != "SpringBoard") return;
  std::error_code ec;
  std::filesystem::directory_iterator folder(
      realPathForDevicePath("/Library/MobileSubstrate/DynamicLibraries"), ec);
  std::vector<std::string> names;
  for (const auto& entry : ec ? std::filesystem::directory_iterator() : folder) {
    if (entry.path().extension() == ".dylib") names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  for (const auto& name : names) {
    if (name >= kLibraryName) break;
    std::string error;
    if (!loadExtensionLibrary(name, &error)) continue;
    loaded()[name] = true;
    logEvent("image", "loaded " + name + " before the library");
  }
}

void registerImageActions() {
  registerAction("load-image", loadImage);
}

}  // namespace kv::sim::host
