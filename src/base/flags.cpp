// The process-wide facts start-up settles once.
#include "base/flags.h"

#include <initializer_list>

#include "platform/foundation.h"
#include "platform/runtime.h"

namespace kv::base {

namespace {

struct FlagRule {
  VersionFlag flag;
  bool VersionFlags::*slot;
  std::initializer_list<const char*> substrings;
};

// Each flag and the substrings of the version string that make it true.
const FlagRule kRules[] = {
    {VersionFlag::kIOS11, &VersionFlags::isIOS11, {"Version 11."}},
    {VersionFlag::kIOS10OrLater, &VersionFlags::isIOS10OrLater, {"Version 10.", "Version 11."}},
    {VersionFlag::kIOS102OrLater,
     &VersionFlags::isIOS102OrLater,
     {"Version 10.2", "Version 10.3", "Version 11."}},
    {VersionFlag::kIOS92OrLater,
     &VersionFlags::isIOS92OrLater,
     {"Version 9.2", "Version 9.3", "Version 10.", "Version 11."}},
    {VersionFlag::kIOS9OrLater,
     &VersionFlags::isIOS9OrLater,
     {"Version 9.", "Version 10.", "Version 11."}},
    {VersionFlag::kIOS8OrLater,
     &VersionFlags::isIOS8OrLater,
     {"Version 8.", "Version 9.", "Version 10.", "Version 11."}},
};

// True iff the version string, read now, contains `text`.
bool versionContains(const char* text) {
  static const platform::Sel kProcessInfo("processInfo");
  static const platform::Sel kVersionString("operatingSystemVersionString");
  platform::AutoreleasePool pool;
  id info = platform::sendClass<id>(platform::classNamed("NSProcessInfo"), kProcessInfo);
  return platform::toString(platform::send<id>(info, kVersionString)).find(text) !=
         std::string::npos;
}

Role gRole = Role::kOther;

}  // namespace

VersionFlags& flags() {
  static VersionFlags f;
  return f;
}

void computeFlag(VersionFlag flag) {
  for (const auto& rule : kRules) {
    if (rule.flag != flag) continue;
    bool value = false;
    for (const char* text : rule.substrings) {
      if (versionContains(text)) {
        value = true;
        break;
      }
    }
    flags().*rule.slot = value;
  }
}

SpringBoardFlags& springBoardFlags() {
  static SpringBoardFlags f;
  return f;
}

Role role() {
  return gRole;
}
void setRole(Role role) {
  gRole = role;
}

}  // namespace kv::base
