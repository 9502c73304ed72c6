// Libraries that load after start-up: another extension's library, or a
// platform bundle loaded late. Loading one defines its classes, then tells
// every image-added callback, as the dynamic loader does on a device.
#include <functional>
#include <map>
#include <string>

#include "platform/foundation.h"
#include "platform/runtime.h"
#include "sim/host/actions.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::host {

void announceImageAdded();

namespace {

using platform::Value;

const char* describeSelf(id self, SEL) { return platform::classNameOf(self); }

// The images a scenario can load, and the classes each one defines. The
// extensions the library integrates with add their rows here.
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

// load-image NAME: the image's classes appear, then the callbacks run.
Value loadImage(const ActionRequest& request, std::string* error) {
  if (request.args.size() != 1) {
    *error = "load-image needs NAME";
    return {};
  }
  const std::string& name = request.args[0];
  auto it = images().find(name);
  if (it == images().end()) {
    *error = "no image " + name + " on this device";
    return {};
  }
  if (loaded()[name]) return Value::string("already loaded");
  loaded()[name] = true;
  it->second();
  logEvent("image", "loaded " + name);
  announceImageAdded();
  return {};
}

}  // namespace

void registerImageActions() { registerAction("load-image", loadImage); }

}  // namespace kv::sim::host
