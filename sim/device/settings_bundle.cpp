// The companion settings bundle on the simulated device.
#include "sim/device/settings_bundle.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>

#include "platform/value.h"
#include "sim/common/device_paths.h"
#include "sim/common/plist.h"
#include "sim/render/art.h"

namespace kv::sim {

namespace {

using platform::Value;

// The bundle's own English texts: worded unlike the library's defaults, so
// a scenario sees which one the library used.
struct Text {
  const char* key;
  const char* text;
};
constexpr Text kTexts[] = {
    {"PLEASE_ENTER_PASSCODE", "Enter your Kavelin passcode"},
    {"PLEASE_AUTHENTICATE", "Authenticate with your fingerprint"},
    {"AUTHENTICATION_FAILED", "Not recognised"},
    {"TRY_CLEANING", "Clean your fingertip and the home button, then try again"},
    {"CANCEL", "Cancel"},
    {"OKAY", "OK"},
    {"ADDED_FIRST_FINGERPRINT_AFTER_REBOOT",
     "A fingerprint was added while a passcode was on. Locking in %d seconds to start afresh."},
    {"AIRPLANE_MODE", "Airplane Mode"},
    {"WIFI", "Wi-Fi"},
    {"RESET_ICONS_LABEL", "Reset Home Screen Layout"},
};

// Marketing names by machine identifier, for the exception log's device line.
constexpr Text kDevices[] = {
    {"iPhone5,2", "iPhone 5"},
    {"iPhone8,1", "iPhone 6s"},
    {"iPhone10,3", "iPhone X"},
    {"iPad6,3", "iPad Pro (9.7-inch)"},
};

// The images the prompt and the summary notification load by name.
constexpr const char* kImages[] = {"thumb-black",  "thumb-white", "thumb-red", "circle-white",
                                   "circle-black", "circle-gold", "Icon"};

// A short silent AIFF: the sound played for a held-back notification.
std::string silentAiff() {
  auto be32 = [](uint32_t v) {
    return std::string{char(v >> 24), char(v >> 16), char(v >> 8), char(v)};
  };
  std::string comm = "COMM" + be32(18) + std::string("\x00\x01", 2) + be32(0) +
                     std::string("\x00\x10", 2) +
                     std::string("\x40\x0e\xac\x44\x00\x00\x00\x00\x00\x00", 10);  // 44100 Hz
  std::string ssnd = "SSND" + be32(8) + be32(0) + be32(0);
  std::string body = "AIFF" + comm + ssnd;
  return "FORM" + be32(static_cast<uint32_t>(body.size())) + body;
}

// The bundle's images, drawn once per process and kept: every device of a
// run gets the same files.
const std::string& imagePng(const char* name, double scale) {
  static auto* drawn = new std::map<std::pair<std::string, double>, std::string>();
  auto [it, fresh] = drawn->try_emplace({name, scale});
  if (fresh) it->second = render::bundleImagePng(name, scale);
  return it->second;
}

bool writeBytes(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary);
  out << bytes;
  return static_cast<bool>(out);
}

bool writeBundle(const std::filesystem::path& dir) {
  std::error_code ec;
  std::filesystem::create_directories(dir / "en.lproj", ec);
  bool ok = !ec;
  ok &= writePlistFile(
      (dir / "Info.plist").string(),
      Value::dictionary({{"CFBundleIdentifier", Value::string("net.quorvan.kavelinprefs")},
                         {"CFBundleName", Value::string("KavelinPrefs")},
                         {"CFBundleDevelopmentRegion", Value::string("en")}}),
      PlistFormat::kXml);
  std::string strings;
  for (const auto& t : kTexts) strings += "\"" + std::string(t.key) + "\" = \"" + t.text + "\";\n";
  ok &= writeBytes(dir / "en.lproj" / "Localizable.strings", strings);
  Value::Dictionary devices;
  for (const auto& d : kDevices) devices[d.key] = Value::string(d.text);
  ok &= writePlistFile((dir / "devices.plist").string(), Value::dictionary(devices),
                       PlistFormat::kXml);
  for (const char* image : kImages) {
    ok &= writeBytes(dir / (std::string(image) + ".png"), imagePng(image, 1));
    ok &= writeBytes(dir / (std::string(image) + "@2x.png"), imagePng(image, 2));
  }
  ok &= writeBytes(dir / "incoming.aiff", silentAiff());
  return ok;
}

}  // namespace

bool installSettingsBundle(const std::string& root, BundlePlace place) {
  const std::filesystem::path library =
      mapDevicePath(root, "/Library/PreferenceBundles/KavelinPrefs.bundle");
  const std::filesystem::path bootstrap =
      mapDevicePath(root, "/bootstrap/Library/PreferenceBundles/KavelinPrefs.bundle");
  std::error_code ec;
  std::filesystem::remove_all(library, ec);
  std::filesystem::remove_all(bootstrap, ec);
  bool ok = true;
  if (place == BundlePlace::kLibrary || place == BundlePlace::kBoth) ok &= writeBundle(library);
  if (place == BundlePlace::kBootstrap || place == BundlePlace::kBoth) ok &= writeBundle(bootstrap);
  return ok;
}

std::string settingsBundleText(const std::string& key) {
  for (const auto& t : kTexts) {
    if (key == t.key) return t.text;
  }
  return "";
}

}  // namespace kv::sim
