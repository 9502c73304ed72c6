// Pennac: a long press on an app's icon shows a sheet of actions on that
// app. "Open" (button 0) launches it, "Open in Background" (1) launches it
// suspended, "Share with Messages" (2) launches Messages.
#include <cstdlib>
#include <map>

#include "sim/extensions/extension.h"

namespace kv::sim::extensions {

namespace {

using platform::Integer;
using platform::Sel;
using platform::Value;

constexpr const char* kMessages = "com.apple.MobileSMS";

std::map<id, std::string>& applicationOf() {
  static auto* table = new std::map<id, std::string>();
  return *table;
}

id application(id self, SEL) {
  return platform::makeString(applicationOf()[self]);
}

void clicked(id self, SEL, id, Integer index) {
  const std::string app = index == 2 ? kMessages : applicationOf()[self];
  host::logEvent("pennac", "button " + std::to_string(index) + " for " + applicationOf()[self]);
  id springBoard =
      platform::sendClass<id>(platform::classNamed("SpringBoard"), Sel("sharedApplication"));
  platform::send<BOOL>(springBoard, Sel("launchApplicationWithIdentifier:suspended:"),
                       platform::makeString(app), static_cast<BOOL>(index == 1 ? 1 : 0));
}

// pennac BUNDLE-ID BUTTON: long-press the app's icon and tap the sheet's BUTTON.
Value sheetAction(const host::ActionRequest& request, std::string* error) {
  Integer index = std::atol(request.args[1].c_str());
  if (index < 0 || index > 2) {
    *error = "the sheet has buttons 0 to 2";
    return {};
  }
  id owner = newInstance("PennacSheetOwner");  // one per sheet; kept while a click may wait
  applicationOf()[owner] = request.args[0];
  platform::send<void>(owner, Sel("actionSheet:clickedButtonAtIndex:"), id{nullptr}, index);
  return {};
}

__attribute__((constructor)) void loadPennac() {
  defineClass("PennacSheetOwner", "NSObject",
              {{"application", imp(application), "@@:"},
               {"actionSheet:clickedButtonAtIndex:", imp(clicked), "v@:@q"}});
  host::registerAction("pennac", sheetAction);
}

}  // namespace

}  // namespace kv::sim::extensions
