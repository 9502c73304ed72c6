// Zandor: a switch panel of its own, whose buttons know their switch by
// "switchID" and flip it when tapped.
#include <map>

#include "sim/extensions/extension.h"

namespace kv::sim::extensions {

namespace {

using platform::Value;

std::map<id, std::string>& switchOf() {
  static auto* table = new std::map<id, std::string>();
  return *table;
}

id switchID(id self, SEL) {
  return platform::makeString(switchOf()[self]);
}

void tapped(id self, SEL) {
  host::logEvent("zandor", switchOf()[self] + " flipped");
}

// zandor-tap ID: tap the panel's button of switch ID.
Value tapAction(const host::ActionRequest& request, std::string*) {
  static auto* buttons = new std::map<std::string, id>();
  id& button = (*buttons)[request.args[0]];
  if (button == nullptr) {
    button = newInstance("ZandorFlipswitchButton");
    switchOf()[button] = request.args[0];
  }
  platform::send<void>(button, platform::Sel("tapped"));
  return {};
}

__attribute__((constructor)) void loadZandor() {
  defineClass("ZandorFlipswitchButton", "NSObject",
              {{"switchID", imp(switchID), "@@:"}, {"tapped", imp(tapped), "v@:"}});
  host::registerAction("zandor-tap", tapAction);
}

}  // namespace

}  // namespace kv::sim::extensions
