// The companion settings bundle ("KavelinPrefs.bundle"): where it is, and
// the texts and files the library reads from it.
#pragma once

#include <string>

#include "platform/objc.h"

namespace kv::settings {

// The bundle's path: the /bootstrap one when that exists, else the
// /Library one. Decided afresh on every call.
std::string bundlePath();

// The NSBundle at bundlePath() (nil when nothing is there).
id bundle();

// The bundle's English text for `key` (Localizable table), or `fallback`
// when the bundle or the key is missing. Autoreleased NSString.
id localized(const char* key, const char* fallback);

// The same as a C++ string.
std::string localizedText(const char* key, const char* fallback);

}  // namespace kv::settings
