// The companion settings bundle.
#include "settings/bundle.h"

#include "platform/foundation.h"
#include "platform/runtime.h"

namespace kv::settings {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kDefaultManager("defaultManager");
const platform::Sel kFileExistsAtPath("fileExistsAtPath:");
const platform::Sel kBundleWithPath("bundleWithPath:");
const platform::Sel kLocalizedStringForKeyValueTable("localizedStringForKey:value:table:");

constexpr const char* kBootstrapBundle = "/bootstrap/Library/PreferenceBundles/KavelinPrefs.bundle";
constexpr const char* kLibraryBundle = "/Library/PreferenceBundles/KavelinPrefs.bundle";

bool exists(const char* path) {
  id manager = platform::sendClass<id>(platform::classNamed("NSFileManager"), kDefaultManager);
  return platform::send<BOOL>(manager, kFileExistsAtPath, platform::makeString(path)) != 0;
}

}  // namespace

std::string bundlePath() {
  return exists(kBootstrapBundle) ? kBootstrapBundle : kLibraryBundle;
}

id bundle() {
  return platform::sendClass<id>(platform::classNamed("NSBundle"), kBundleWithPath,
                                 platform::makeString(bundlePath()));
}

id localized(const char* key, const char* fallback) {
  id fallbackText = platform::makeString(fallback);
  id found = platform::send<id>(bundle(), kLocalizedStringForKeyValueTable,
                                platform::makeString(key), fallbackText, id{nullptr});
  return found == nullptr ? fallbackText : found;
}

std::string localizedText(const char* key, const char* fallback) {
  platform::AutoreleasePool pool;
  return platform::toString(localized(key, fallback));
}

}  // namespace kv::settings
