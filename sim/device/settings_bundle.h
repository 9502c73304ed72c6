// The companion settings bundle as the device carries it: texts of its own
// for the keys the library looks up, the "devices" dictionary, images and
// sounds. Kavelin only ever reads it.
#pragma once

#include <string>

namespace kv::sim {

enum class BundlePlace { kNone, kLibrary, kBootstrap, kBoth };

// Writes the bundle under the device root at /Library/PreferenceBundles,
// /bootstrap/Library/PreferenceBundles, both, or removes it (kNone).
bool installSettingsBundle(const std::string& root, BundlePlace place);

// The text the bundle's table holds for a key ("" for keys it lacks), so
// that tests can tell the bundle's text from a default.
std::string settingsBundleText(const std::string& key);

}  // namespace kv::sim
