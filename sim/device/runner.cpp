// Runs scenarios against a simulated device.
#include "sim/device/runner.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <regex>
#include <sstream>

#include "sim/common/json.h"
#include "sim/device/device.h"
#include "sim/device/pictures.h"
#include "sim/device/profiles.h"

namespace kv::sim {

namespace {

constexpr const char* kDomain = "net.quorvan.kavelin";
constexpr const char* kPrefsChanged = "net.quorvan.kavelin.prefsChanged";

// The platform's private functions the library looks up by name; each is on
// the device unless a scenario says it is missing.
constexpr const char* kPrivateFunctions[] = {"WiFiNetworkGetProperty", "WiFiNetworkCopyPassword",
                                             "FigVibratorInitialize",
                                             "FigVibratorPlayVibrationWithDictionary"};

// ---- Actions: performed inside a host ----

struct ActionSpec {
  const char* process;  // where it is performed; "*" for any process
  const char* name;
  int minArgs;
  int maxArgs;  // -1: any number
  const char* usage;
  const char* help;
};

const ActionSpec kActions[] = {
    {"*", "send", 2, -1, "send TARGET SELECTOR [ARGS]",
     "send any message: TARGET is a class name (class method) or shared:CLASS (its shared "
     "instance); ARGS is a JSON array of the arguments"},
    {"*", "load-image", 1, 1, "load-image NAME",
     "a library loads after start-up (another extension's, a late platform bundle): its classes "
     "appear, then the image-added callbacks run; the extensions Flipswitch, Zandor, Activator, "
     "Orrel, Mevrick, Pellum, Pennac, Tamsin and Veskel are libraries of their own"},
    {"SpringBoard", "switch-press", 1, 2, "switch-press ID [private]",
     "press the Flipswitch button of switch ID (private: a button of Flipswitch's own panel); "
     "needs load-image Flipswitch"},
    {"SpringBoard", "switch-hold", 1, 2, "switch-hold ID [private]",
     "hold the Flipswitch button of switch ID: its settings open; needs load-image Flipswitch"},
    {"SpringBoard", "zandor-tap", 1, 1, "zandor-tap ID",
     "tap Zandor's button of switch ID; needs load-image Zandor"},
    {"SpringBoard", "activator", 2, 2, "activator EVENT LISTENER",
     "the Activator event EVENT happens (a gesture, libactivator.fingerprint-sensor.press.single, "
     "...) with LISTENER assigned: an app's bundle identifier, switch-flip.ID or "
     "net.quorvan.kavelin.switch, libactivator.system.show-switcher; needs load-image Activator"},
    {"SpringBoard", "orrel-open", 0, 0, "orrel-open",
     "Orrel's gesture opens its switcher; needs load-image Orrel"},
    {"SpringBoard", "orrel-tap", 1, 1, "orrel-tap BUNDLE-ID",
     "tap the app's icon in Orrel's bar: the app launches; needs load-image Orrel"},
    {"SpringBoard", "orrel-close", 0, 0, "orrel-close",
     "a tap outside Orrel's switcher closes it; needs load-image Orrel"},
    {"SpringBoard", "veskel-open", 0, -1, "veskel-open [BUNDLE-ID...]",
     "Veskel's gesture opens its quick switcher: a list of the icons of the apps given (the "
     "ones it saw used lately, newest first; the previous ones when none is given); needs "
     "load-image Veskel"},
    {"SpringBoard", "veskel-tap", 1, 1, "veskel-tap BUNDLE-ID",
     "a finger on the app's icon in Veskel's open quick switcher: the switcher closes and the "
     "app launches; a list that cannot be seen takes no touch; needs load-image Veskel"},
    {"SpringBoard", "veskel-close", 0, 0, "veskel-close",
     "a tap outside the list closes Veskel's quick switcher; needs load-image Veskel"},
    {"SpringBoard", "mevrick-open", 0, 0, "mevrick-open",
     "Mevrick's gesture pulls its app switcher fully open; needs load-image Mevrick"},
    {"SpringBoard", "mevrick-button", 0, 0, "mevrick-button",
     "Mevrick's button opens its app switcher; needs load-image Mevrick"},
    {"SpringBoard", "mevrick-card", 1, 1, "mevrick-card BUNDLE-ID",
     "Mevrick's switcher draws the app's card with its last snapshot; needs load-image Mevrick"},
    {"SpringBoard", "mevrick-select", 1, 1, "mevrick-select BUNDLE-ID",
     "choose the app in Mevrick's open switcher: it launches; needs load-image Mevrick"},
    {"SpringBoard", "pellum", 1, 1, "pellum BUNDLE-ID",
     "Pellum's gesture back to the previous app, which it shows as BUNDLE-ID: its "
     "\"ActivatePellum\" event goes through SpringBoard's workspace event queue; needs "
     "load-image Pellum"},
    {"SpringBoard", "pennac", 2, 2, "pennac BUNDLE-ID BUTTON",
     "long-press the app's icon and tap button BUTTON of Pennac's sheet: 0 Open, 1 Open in "
     "Background, 2 Share with Messages; needs load-image Pennac"},
    {"SpringBoard", "tamsin-call", 1, 1, "tamsin-call NAME",
     "a call from NAME comes in: Tamsin's call screen takes the current calls' info and shows "
     "the caller; needs load-image Tamsin"},
    {"SpringBoard", "tamsin-contacts", 0, 0, "tamsin-contacts",
     "tap the Contacts button of Tamsin's call screen; needs load-image Tamsin"},
    {"*", "log-line", 1, -1, "log-line TEXT",
     "code in the process writes TEXT through the library's line writer (to /tmp/syslog)"},
    {"*", "hold", 2, 2, "hold CLASS SELECTOR",
     "keep the next call of that instance method instead of running it, as a guard keeps a "
     "call for after authentication (arguments retained, blocks copied; the caller gets zero)"},
    {"*", "replay", 0, 1, "replay [ARGUMENTS]",
     "invoke the kept call now, through the same method; with ARGUMENTS, every argument after "
     "the first ARGUMENTS is nil or zero, as in a stored call that carries fewer"},
    {"SpringBoard", "tap", 1, 1, "tap BUNDLE-ID", "tap the app's icon on the home screen"},
    {"SpringBoard", "tap-folder", 1, 1, "tap-folder NAME", "tap a folder icon by display name"},
    {"SpringBoard", "rename-folder", 2, 2, "rename-folder NAME NEW-NAME",
     "edit a folder's name on the home screen (iOS 8 and 9)"},
    {"SpringBoard", "peek", 1, 1, "peek BUNDLE-ID|NAME",
     "force-press an app's or a folder's icon to peek (iPhone, iOS 10 and later)"},
    {"SpringBoard", "open-url", 1, 3, "open-url URL [in BUNDLE-ID]",
     "an URL open handled by SpringBoard, in the app owning its scheme or in the app given (a "
     "link an app opens in a particular app)"},
    {"SpringBoard", "ui-activate", 1, 1, "ui-activate BUNDLE-ID",
     "SpringBoard's UI controller activates the app with this version's one-argument method "
     "(_activateApplicationFromAccessibility:, activateApplication: or "
     "activateApplicationAnimated:), as a stored call does"},
    {"SpringBoard", "open-app", 1, 4, "open-app BUNDLE-ID [suspended] [origin NAME]",
     "another process asks SpringBoard to open an app (suspended: in the background; origin: "
     "the request's launch origin, such as __SBLaunchOriginShortcutItem)"},
    {"SpringBoard", "system-open", 1, 2, "system-open BUNDLE-ID [URL]",
     "the system opens an app (a clock alarm, Siri): SBUserAgent through iOS 10, an "
     "open-application request on iOS 11; the screen stays as it is"},
    {"SpringBoard", "bulletin", 2, 4, "bulletin BUNDLE-ID TEXT [feed N]",
     "a notification bulletin of that app arrives, reading TEXT; from iOS 10 it reaches the "
     "notification source with feed N (bits: 1 banner, 2 alert, 4 notification list, 8 lock "
     "screen, 16 sound; default every bit)"},
    {"SpringBoard", "notification-list", 1, 1, "notification-list show|hide",
     "the notification list (iOS 10 and later) appears over the lock screen or the home screen, "
     "or goes"},
    {"SpringBoard", "tap-summary", 0, 0, "tap-summary",
     "tap the summary notification of held-back notifications on the lock screen"},
    {"SpringBoard", "clear-summary", 0, 0, "clear-summary",
     "clear the summary notification of held-back notifications on the lock screen"},
    {"SpringBoard", "tap-bulletin", 1, 1, "tap-bulletin BUNDLE-ID|INDEX",
     "tap the app's latest notification (or by index among those not yet tapped, oldest 0): on "
     "the lock screen while locked, else in the notification centre"},
    {"SpringBoard", "force-touch", 1, 1, "force-touch BUNDLE-ID",
     "force-press the app's icon: its shortcut menu shows (iPhone, iOS 9 and later)"},
    {"SpringBoard", "shortcut", 1, 2, "shortcut BUNDLE-ID [INDEX]",
     "choose item INDEX (0 \"New\", 1 \"Search\") of the app's shortcut menu, force-pressing "
     "its icon first unless the menu shows"},
    {"SpringBoard", "cc-launch", 1, 1, "cc-launch BUNDLE-ID",
     "a quick-launch button of Control Center (com.apple.mobiletimer, com.apple.calculator, "
     "com.apple.camera)"},
    {"SpringBoard", "switcher", 0, 0, "switcher",
     "double-press home: the app switcher shows the recent apps, or closes back to the app it "
     "was opened over"},
    {"SpringBoard", "switcher-select", 1, 1, "switcher-select BUNDLE-ID",
     "tap the app's card in the switcher (on iOS 11 a fluid switcher transaction to the app)"},
    {"SpringBoard", "swipe-up-switcher", 0, 0, "swipe-up-switcher",
     "the system gesture that pulls the app switcher up from the bottom edge (iOS 10 and "
     "later; on iOS 11 the fluid switcher takes it when the finger lifts)"},
    {"SpringBoard", "lock-camera", 0, 0, "lock-camera",
     "on the lock screen, open the camera (the lock screen's camera controller through iOS 9, "
     "the dashboard from iOS 10)"},
    {"SpringBoard", "force-press-switcher", 0, 0, "force-press-switcher",
     "force-press the screen's left edge: the previous app comes back (iOS 10 and later)"},
    {"SpringBoard", "lock-camera-image-well", 0, 0, "lock-camera-image-well",
     "in the camera opened from the lock screen (iOS 8), tap the last-photo thumbnail"},
    {"SpringBoard", "slide-up", 1, 1, "slide-up BUNDLE-ID",
     "on the lock screen, slide up to that app (iOS 8 and 9): it opens over the lock screen "
     "within the device passcode's grace period (a minute after the lock), else after the "
     "device passcode ('unlock')"},
    {"SpringBoard", "home", 0, 0, "home", "press the home button"},
    {"SpringBoard", "lock", 0, 0, "lock", "press the lock button"},
    {"SpringBoard", "unlock", 0, 0, "unlock",
     "unlock with the device passcode (or a swipe without one)"},
    {"SpringBoard", "screen", 1, 1, "screen on|off",
     "the display wakes (a touch) or sleeps (the idle timer) through the backlight; the lock "
     "stays as it is"},
    {"SpringBoard", "prompt", 2, 2, "prompt passcode DIGITS | prompt button N",
     "type digits into the Kavelin prompt's passcode field, or tap its button N "
     "(0 Cancel, 1 Enter passcode)"},
    {"*", "alert", 1, 2, "alert button N | alert dismiss",
     "tap button N of the topmost alert of any kind, or have the system take it down"},
    {"*", "nudge", 2, 4, "nudge CLASS move DX DY | nudge CLASS color RRGGBB | nudge CLASS hide",
     "a developer's change to the frontmost shown view of CLASS, through its own setters: moved, "
     "recoloured (text, glyph or background) or hidden; shows that 'expect looks' sees a look "
     "changed on purpose"},
    {"*", "message", 1, -1, "message NAME [JSON-OBJECT]",
     "send a messaging-centre message to \"net.quorvan.kavelin.center\" and wait for the "
     "reply, which becomes the last reply (see the predicate reply); any other JSON value is "
     "sent as it stands, as a hostile client could"},
    {"*", "message-oneway", 1, -1, "message-oneway NAME [JSON-OBJECT]",
     "send a messaging-centre message without waiting for a reply (any JSON value, as above)"},
    {"SpringBoard", "remove-identity", 0, 0, "remove-identity",
     "the owner removes an enrolled finger or face (BiometricKit removeIdentity:)"},
    {"SpringBoard", "update-identity", 0, 0, "update-identity",
     "the owner changes an enrolled finger or face (BiometricKit updateIdentity:)"},
    {"app", "request", 1, -1, "request NAME [JSON-OBJECT]",
     "an app started with 'start app BUNDLE-ID' uses the file channel: writes the request file "
     "(unless no object is given), sets the state of \"net.quorvan.kavelin.ipcoverride\" to the "
     "packed name and posts it"},
    {"app", "read-reply", 1, 1, "read-reply NAME",
     "the app reads and deletes the reply file of NAME, decoding it with NSKeyedUnarchiver; it "
     "becomes the last reply (none when there is no file)"},
    {"SpringBoard", "power-off", 0, 0, "power-off",
     "the person slides to power off: the power-down screen dims the display, then its "
     "request reaches SpringBoard"},
    {"SpringBoard", "reboot", 0, 0, "reboot",
     "the system asks for a reboot (SpringBoard through iOS 9, its restart manager later)"},
    {"SpringBoard", "respring-request", 0, 0, "respring-request",
     "the system asks for a respring, as a settings change does (SpringBoard through iOS 9, "
     "its restart manager with a reason later)"},
    {"SpringBoard", "backboard", 1, 1, "backboard restart|other",
     "SpringBoard sends backboard a set of actions: a restart action, or another one"},
    {"SpringBoard", "battery", 1, 1, "battery critical|normal",
     "the battery reaches (or leaves) its critical level; at it the system powers off (also "
     "the statement 'battery critical|normal')"},
    {"SpringBoard", "siri", 0, 0, "siri", "hold the home button: Siri"},
    {"SpringBoard", "cc", 1, 1, "cc ITEM",
     "tap Control Center's toggle ITEM (airplane, wifi, bluetooth, cellular, airdrop, hotspot, "
     "or a push button's identifier through iOS 10: do-not-disturb, rotation-lock, "
     "switch.reboot; on iOS 11 a module's identifier, such as "
     "com.apple.control-center.FlashlightModule)"},
    {"SpringBoard", "cc-expand", 1, 1, "cc-expand MODULE-ID",
     "long-press a Control Center module to expand it (iOS 11; "
     "com.apple.control-center.ConnectivityModule, ...FlashlightModule, ...DoNotDisturbModule)"},
    {"SpringBoard", "edit-icons", 0, 0, "edit-icons",
     "long-press an icon on the home screen: icons go into editing mode"},
    {"SpringBoard", "delete-icon", 1, 1, "delete-icon BUNDLE-ID",
     "tap the close box of the app's icon, in editing mode (the user's own apps have one)"},
    {"SpringBoard", "tap-bookmark", 1, 1, "tap-bookmark NAME",
     "tap a web bookmark's icon on the home screen (\"Quorvan News\"): it opens in Safari"},
    {"SpringBoard", "sim-locked", 0, 0, "sim-locked",
     "the SIM asks for its PIN: its lock-entry alert shows"},
    {"SpringBoard", "sim-pin", 1, 1, "sim-pin DIGITS",
     "type the SIM PIN into the lock-entry alert and tap its OK key"},
    {"SpringBoard", "passcode-entry", 1, 1, "passcode-entry DIGITS",
     "type DIGITS into a long numeric entry shown outside the SIM's lock-entry alert (a custom "
     "numeric passcode) and tap its OK key"},
    {"Preferences", "open-pane", 1, 1, "open-pane ID",
     "tap the settings row whose specifier id is ID"},
    {"Preferences", "back", 0, 0, "back", "the navigation bar's back button"},
    {"Preferences", "switch", 2, 2, "switch ID on|off",
     "flip the switch of the row whose specifier id is ID (for example AIRPLANE_MODE)"},
    {"Preferences", "reset-icons", 0, 0, "reset-icons",
     "\"Reset Home Screen Layout\" in Settings (General > Reset on top), confirmed"},
    {"Preferences", "delete-app", 0, 0, "delete-app",
     "\"Delete App\" in an app's storage pane (General > Storage > the app), confirmed"},
    {"Preferences", "set-language", 1, 1, "set-language CODE",
     "in Language & Region (General > Language & Region on top), pick the language CODE and "
     "confirm: the language setup applies it"},
    {"Preferences", "suspend", 0, 0, "suspend",
     "the Settings app leaves the front (home or lock button): it is suspended until it resumes"},
    {"Preferences", "resume", 0, 0, "resume", "the Settings app comes back to the front"},
    {"Preferences", "resume-from-lock", 0, 0, "resume-from-lock",
     "the Settings app comes back after the device was unlocked"},
    {"Preferences", "settings-url", 1, 1, "settings-url URL",
     "the Settings app is asked to open URL (prefs:root=ID shows that row's pane)"},
    {"Camera", "image-well", 1, 1, "image-well tap|press",
     "tap the camera's last-photo thumbnail (on iOS 11 the library opens as the finger leaves "
     "it) / long-press it: from iOS 9 a preview of the last photo peeks"},
    {"Camera", "close-library", 0, 0, "close-library",
     "leave the photo library (or the preview) for the viewfinder"},
};

const ActionSpec* actionSpec(const std::string& name) {
  for (const auto& a : kActions) {
    if (name == a.name) return &a;
  }
  return nullptr;
}

// ---- Predicates ----

class Runner;
using Evaluate = std::function<bool(Runner&, const Statement&, std::string* seen)>;

struct PredicateSpec {
  const char* name;
  int minArgs;
  int maxArgs;
  const char* usage;
  const char* help;
  Evaluate evaluate;
};

const std::vector<PredicateSpec>& predicates();

const PredicateSpec* predicateSpec(const std::string& name) {
  for (const auto& p : predicates()) {
    if (name == p.name) return &p;
  }
  return nullptr;
}

// Numbers compare by value (5 equals 5.0); everything else structurally.
bool sameValue(const Value& a, const Value& b) {
  bool numbers = (a.kind() == Value::Kind::kInteger || a.kind() == Value::Kind::kReal) &&
                 (b.kind() == Value::Kind::kInteger || b.kind() == Value::Kind::kReal);
  if (numbers) return a.asReal() == b.asReal();
  if (a.kind() == Value::Kind::kArray && b.kind() == Value::Kind::kArray) {
    if (a.asArray().size() != b.asArray().size()) return false;
    for (size_t i = 0; i < a.asArray().size(); ++i) {
      if (!sameValue(a.asArray()[i], b.asArray()[i])) return false;
    }
    return true;
  }
  if (a.kind() == Value::Kind::kDictionary && b.kind() == Value::Kind::kDictionary) {
    if (a.asDictionary().size() != b.asDictionary().size()) return false;
    for (const auto& [k, v] : a.asDictionary()) {
      if (!sameValue(v, b[k])) return false;
    }
    return true;
  }
  return a == b;
}

std::string firstWord(const std::string& s) {
  return s.substr(0, s.find(' '));
}

// The network a wifi statement describes.
Value networkOf(const Statement& s) {
  Value::Dictionary network{{"bssid", Value::string(s.name)}, {"ssid", Value::string(s.ssid)}};
  if (!s.password.empty()) network["password"] = Value::string(s.password);
  return Value::dictionary(std::move(network));
}

class Runner {
 public:
  explicit Runner(const RunOptions& options) : options_(options) {}

  bool run(const Scenario& scenario) {
    file_ = scenario.file;
    for (const auto& statement : scenario.statements) {
      std::string text =
          "  " + scenario.file + ":" + std::to_string(statement.line) + "  " + statement.text;
      if (!options_.json) std::fprintf(options_.out, "%s\n", text.c_str());
      if (options_.album != nullptr) options_.album->addLine(text);
      std::string failure;
      bool ok = execute(statement, &failure);
      if (ok && device_) device_->watchHosts();
      if (ok && device_ && !device_->fault().empty()) {
        ok = false;
        failure = device_->fault();
      }
      flush();
      if (!ok) {
        finish();
        std::fprintf(options_.out, "FAIL %s:%d: %s\n", scenario.file.c_str(), statement.line,
                     failure.c_str());
        return false;
      }
    }
    std::string ending = device_ ? device_->shutDown() : std::string();
    flush();
    finish();
    if (!ending.empty()) {
      std::fprintf(options_.out, "FAIL %s: at the end: %s\n", scenario.file.c_str(),
                   ending.c_str());
      return false;
    }
    std::fprintf(options_.out, "PASS %s\n", scenario.file.c_str());
    return true;
  }

  // The device as the statements so far describe it.
  DeviceOptions deviceOptions() const {
    DeviceOptions o;
    o.ipad = spec_.ipad;
    o.version = spec_.version;
    o.biometrics = spec_.biometrics == DeviceSpec::Biometrics::kNone     ? "none"
                   : spec_.biometrics == DeviceSpec::Biometrics::kFaceId ? "faceid"
                                                                         : "touchid";
    o.identities = spec_.identities;
    o.passcode = spec_.passcode;
    o.passKitLate = spec_.passKitLate;
    o.hostPath = options_.hostPath;
    o.libraryPath = options_.libraryPath;
    o.hostTimeoutMs = options_.hostTimeoutMs;
    o.settingsBundle = bundle_;
    o.extensions = extensions_;
    for (const char* fn : kPrivateFunctions) {
      if (std::find(missing_.begin(), missing_.end(), fn) == missing_.end()) {
        o.privateLibraries.push_back(options_.privateLibraryDir + "/libprivate-" + fn + ".so");
      }
    }
    return o;
  }

  Device& device() {
    if (!device_) device_ = std::make_unique<Device>(deviceOptions());
    return *device_;
  }

  // Applies a statement that describes the device (before the first start).
  bool describe(std::string* failure) {
    if (device_) device_->configure(deviceOptions());
    (void)failure;
    return true;
  }

  bool anyRunning() const { return running_; }

  // The reply of the last message or read-reply (none: nil, or none yet).
  const Value& lastReply() const { return lastReply_; }

  // Whether the screen matches the scenario's reference picture `name`.
  bool looks(const std::string& name, int line, std::string* seen) {
    std::string label = render::Album::fileName(file_, line, "looks");
    label.resize(label.size() - 4);  // without ".png"
    return looksLike(device(), referencePath(file_, name), label, options_.rewriteLooks, seen);
  }

  // Applies a statement that describes the device, outside a scenario run.
  bool describeWith(const Statement& s, std::string* failure) { return execute(s, failure); }

  // One statement of a run that goes step by step: as run() does it.
  bool step(const Statement& statement, std::string* failure) {
    if (!options_.json) std::fprintf(options_.out, "  %s\n", statement.text.c_str());
    bool ok = execute(statement, failure);
    if (ok && device_ && !device_->fault().empty()) {
      ok = false;
      *failure = device_->fault();
    }
    flush();
    return ok;
  }
  Device* existingDevice() { return device_.get(); }
  std::string end() {
    std::string ending = device_ ? device_->shutDown() : std::string();
    flush();
    return ending;
  }

 private:
  bool execute(const Statement& s, std::string* failure) {
    using K = Statement::Kind;
    switch (s.kind) {
      case K::kDevice:
        if (osProfile(s.device.version) == nullptr) {
          *failure = "no iOS " + s.device.version + " profile (see kavelin-sim help)";
          return false;
        }
        spec_ = s.device;
        return describe(failure);
      case K::kMissing:
        for (const auto& fn : s.names) {
          if (std::find(std::begin(kPrivateFunctions), std::end(kPrivateFunctions), fn) ==
              std::end(kPrivateFunctions)) {
            *failure = "no private function " + fn + " on this device";
            return false;
          }
          missing_.push_back(fn);
        }
        return describe(failure);
      case K::kBundle:
        bundle_ = s.names[0] == "none"        ? BundlePlace::kNone
                  : s.names[0] == "bootstrap" ? BundlePlace::kBootstrap
                  : s.names[0] == "both"      ? BundlePlace::kBoth
                                              : BundlePlace::kLibrary;
        return describe(failure);
      case K::kExtension:
        extensions_.insert(extensions_.end(), s.names.begin(), s.names.end());
        return describe(failure);
      case K::kPrefs:
      case K::kPrefsDelete:
        device().writePreference(kDomain, s.key, s.kind == K::kPrefs ? s.value : Value());
        if (running_) device().post(kPrefsChanged, std::nullopt, "settings pane");
        return true;
      case K::kWifi: device().setWifi(networkOf(s)); return true;
      case K::kWifiKnown: device().addKnownWifi(networkOf(s)); return true;
      case K::kWifiOff: device().setWifi(Value()); return true;
      case K::kNotify: device().post(s.name, s.state, "outside"); return true;
      case K::kFile:
        if (!device().writeFile(s.key, s.value)) {
          *failure = "could not write " + s.key;
          return false;
        }
        return true;
      case K::kStart:
        for (const auto& p : s.processes) {
          if (!device().start(p, failure)) return false;
          running_ = true;
        }
        return true;
      case K::kAction: {
        Value result;
        if (!device().action(s.process, s.action, s.args, s.rest, &result, failure)) return false;
        if (result["replied"].asBool()) lastReply_ = result["reply"];
        return true;
      }
      case K::kRespring: return device().respring(failure);
      case K::kKill: return device().kill(s.name, failure);
      case K::kFileRaw:
        if (!device().writeRawFile(s.key, s.bytes)) {
          *failure = "could not write " + s.key;
          return false;
        }
        return true;
      case K::kFinger:
      case K::kFace:
        return device().action("SpringBoard", s.kind == K::kFinger ? "finger" : "face",
                               {s.match ? "match" : "nomatch"}, "", nullptr, failure);
      case K::kBiometric:
        return device().action("SpringBoard", "biometric", {std::to_string(s.code)}, "", nullptr,
                               failure);
      case K::kAdvance: device().advance(s.seconds); return true;
      case K::kMark: device().log().mark(); return true;
      case K::kPhone: return ring(s, failure);
      case K::kSnapshot:
        if (options_.album == nullptr) return true;  // no pictures asked for: it costs nothing
        return takeSnapshot(device(), *options_.album, options_.pictureScale, file_, s.line, s.name,
                            failure);
      case K::kExpect: {
        const PredicateSpec* p = predicateSpec(s.predicate);
        std::string seen;
        bool holds = p != nullptr && p->evaluate(*this, s, &seen);
        if (holds != s.negated) return true;
        *failure = "expected " + std::string(s.negated ? "not " : "") + s.predicate +
                   (s.predicateRest.empty() ? "" : " " + s.predicateRest) +
                   (seen.empty() ? "" : "; " + seen);
        return false;
      }
    }
    *failure = "unknown statement";
    return false;
  }

  // The phone's statements reach SpringBoard's and the in-call screen's
  // telephony alike, SpringBoard's first, as the call centre tells both.
  bool ring(const Statement& s, std::string* failure) {
    std::vector<std::string> args{s.action};
    args.insert(args.end(), s.args.begin(), s.args.end());
    std::string what = s.action;
    for (const auto& a : s.args) what += " " + a;
    device().note("phone", "call", what);
    bool any = false;
    for (const char* process : {"SpringBoard", "InCallService"}) {
      if (!device().running(process)) continue;
      any = true;
      if (!device().action(process, "call", args, "", nullptr, failure)) return false;
    }
    if (!any) *failure = "neither SpringBoard nor InCallService is running to take the call";
    return any;
  }

  void flush() {
    if (!device_ || options_.json) return;
    const auto& events = device_->log().events();
    for (; printed_ < events.size(); ++printed_) {
      std::string line = EventLog::line(events[printed_]);
      std::fprintf(options_.out, "%s\n", line.c_str());
      if (options_.album != nullptr) options_.album->addLine(line);
    }
  }

  void finish() {
    if (options_.json && device_) std::fprintf(options_.out, "%s\n", device_->log().json().c_str());
  }

  RunOptions options_;
  std::string file_;  // the scenario being run
  DeviceSpec spec_;
  std::vector<std::string> missing_;
  std::vector<std::string> extensions_;
  BundlePlace bundle_ = BundlePlace::kLibrary;
  std::unique_ptr<Device> device_;
  bool running_ = false;
  size_t printed_ = 0;
  Value lastReply_;
};

// The events of the current window whose kind is `kind`.
std::vector<const Event*> windowOf(Runner& r, const std::string& kind) {
  std::vector<const Event*> out;
  for (const Event* e : r.device().log().window()) {
    if (e->kind == kind) out.push_back(e);
  }
  return out;
}

bool postedHolds(Runner& r, const Statement& s, std::string* seen) {
  const std::string& name = s.predicateArgs[0];
  std::optional<uint64_t> state;
  if (s.predicateArgs.size() == 3) state = std::stoull(s.predicateArgs[2], nullptr, 0);
  std::string states;
  for (const Event* e : windowOf(r, "posted")) {
    if (firstWord(e->details) != name) continue;
    if (!state) return true;
    auto at = e->details.find(" state=");
    uint64_t got = at == std::string::npos ? 0 : std::stoull(e->details.substr(at + 7));
    if (got == *state) return true;
    states += (states.empty() ? "" : ", ") + std::to_string(got);
  }
  *seen = states.empty() ? name + " was not posted in this window"
                         : name + " was posted with state " + states;
  return false;
}

bool sentHolds(Runner& r, const Statement& s, std::string* seen) {
  for (const Event* e : windowOf(r, "sent")) {
    if (e->process == s.predicateArgs[0] && firstWord(e->details) == s.predicateArgs[1])
      return true;
  }
  *seen = s.predicateArgs[0] + " did not send " + s.predicateArgs[1] + " in this window";
  return false;
}

bool logHolds(Runner& r, const Statement& s, std::string* seen) {
  const std::string& text = s.predicateArgs[0];
  for (const Event* e : r.device().log().window()) {
    if ((e->process + " " + e->kind + " " + e->details).find(text) != std::string::npos)
      return true;
  }
  *seen = "no event of this window contains \"" + text + "\"";
  return false;
}

bool prefHolds(Runner& r, const Statement& s, std::string* seen) {
  const std::string& key = s.predicateArgs[0];
  auto rest = s.predicateRest.substr(s.predicateRest.find(key) + key.size());
  auto expected = parseJson(rest);
  Value actual = r.device().readPreference(kDomain, key);
  if (expected && sameValue(actual, *expected)) return true;
  *seen = key + " is " + (actual.isNone() ? std::string("absent") : actual.describe());
  return false;
}

// Asks SpringBoard; a failure to answer is what was seen.
std::optional<Value> askSpringBoard(Runner& r, const char* query, std::string* seen) {
  std::string error;
  auto answer = r.device().query("SpringBoard", query, {}, &error);
  if (!answer) *seen = error;
  return answer;
}

bool frontHolds(Runner& r, const Statement& s, std::string* seen) {
  auto front = askSpringBoard(r, "front", seen);
  if (!front) return false;
  if (front->asString() == s.predicateArgs[0]) return true;
  *seen = "in front: " + front->asString();
  return false;
}

bool folderOpenHolds(Runner& r, const Statement& s, std::string* seen) {
  auto folder = askSpringBoard(r, "folder", seen);
  if (!folder) return false;
  if (folder->asString() == s.predicateArgs[0]) return true;
  *seen = folder->asString().empty() ? "no folder is open" : "open: " + folder->asString();
  return false;
}

bool launchedHolds(Runner& r, const Statement& s, std::string* seen) {
  std::string fronts;
  for (const Event* e : windowOf(r, "front")) {
    if (e->details == s.predicateArgs[0]) return true;
    fronts += (fronts.empty() ? "" : ", ") + e->details;
  }
  *seen =
      fronts.empty() ? "nothing came to the front in this window" : "came to the front: " + fronts;
  return false;
}

// switcher / switcher BUNDLE-ID...: it shows (exactly these items, most recent first).
bool switcherHolds(Runner& r, const Statement& s, std::string* seen) {
  auto switcher = askSpringBoard(r, "switcher", seen);
  if (!switcher) return false;
  std::string items;
  for (const auto& item : (*switcher)["items"].asArray()) {
    items += (items.empty() ? "" : " ") + item.asString();
  }
  *seen = (*switcher)["visible"].asBool() ? "the switcher shows: " + items : "no switcher shows";
  if (!(*switcher)["visible"].asBool()) return false;
  std::string wanted;
  for (const auto& a : s.predicateArgs) wanted += (wanted.empty() ? "" : " ") + a;
  return s.predicateArgs.empty() || wanted == items;
}

// covered BUNDLE-ID [text]: the switcher shows that app's card hidden (with
// the text over its blur).
bool coveredHolds(Runner& r, const Statement& s, std::string* seen) {
  std::string error;
  auto looks = r.device().query("SpringBoard", "covered", {s.predicateArgs[0]}, &error);
  if (!looks) {
    *seen = error;
    return false;
  }
  if (!(*looks)["card"].asBool()) {
    *seen = "the switcher shows no card of " + s.predicateArgs[0];
    return false;
  }
  *seen = "card " + s.predicateArgs[0] + ": " + (*looks)["details"].asString();
  bool wantText = s.predicateArgs.size() > 1;
  return (*looks)["covered"].asBool() && (!wantText || (*looks)["text"].asBool());
}

// shown BUNDLE-ID N: the notification list in view shows N of that app.
bool shownHolds(Runner& r, const Statement& s, std::string* seen) {
  std::string error;
  auto count = r.device().query("SpringBoard", "shown", {s.predicateArgs[0]}, &error);
  if (!count) {
    *seen = error;
    return false;
  }
  *seen = std::to_string(count->asInteger()) + " of " + s.predicateArgs[0] + " shown";
  return std::to_string(count->asInteger()) == s.predicateArgs[1];
}

// summary ["TEXT"]: the summary is on the lock screen (reading TEXT).
bool summaryHolds(Runner& r, const Statement& s, std::string* seen) {
  std::string error;
  auto message = r.device().query("SpringBoard", "summary", {}, &error);
  if (!message) {
    *seen = error;
    return false;
  }
  if (message->isNone()) {
    *seen = "no summary on the lock screen";
    return false;
  }
  *seen = "the summary reads " + message->asString();
  return s.predicateArgs.empty() ||
         message->asString().find(s.predicateArgs[0]) != std::string::npos;
}

// siri / editing: SpringBoard answers the query of that name.
bool springBoardFlagHolds(Runner& r, const Statement& s, std::string* seen) {
  auto shows = askSpringBoard(r, s.predicate.c_str(), seen);
  if (!shows) return false;
  *seen = s.predicate == "siri"
              ? (shows->asBool() ? "Siri shows" : "Siri does not show")
              : (shows->asBool() ? "icons are in editing mode" : "icons are not in editing mode");
  return shows->asBool();
}

// cc ITEM on|off: the toggle is so, and its button shows it so.
bool ccHolds(Runner& r, const Statement& s, std::string* seen) {
  std::string error;
  auto answer = r.device().query("SpringBoard", "cc", {s.predicateArgs[0]}, &error);
  if (!answer) {
    *seen = error;
    return false;
  }
  if (answer->isNone()) {
    *seen = "Control Center has no toggle " + s.predicateArgs[0];
    return false;
  }
  bool want = s.predicateArgs[1] == "on";
  bool on = (*answer)["on"].asBool();
  bool shows = (*answer)["shows"].asBool();
  *seen = s.predicateArgs[0] + " is " + (on ? "on" : "off") + ", its button shows " +
          (shows ? "on" : "off");
  return on == want && shows == want;
}

// power off|reboot|respring: the device did it in the current window.
bool powerHolds(Runner& r, const Statement& s, std::string* seen) {
  std::string done;
  for (const Event* e : windowOf(r, "power")) {
    if (e->details == s.predicateArgs[0]) return true;
    done += (done.empty() ? "" : ", ") + e->details;
  }
  *seen = done.empty() ? "no power action in this window" : "power: " + done;
  return false;
}

bool looksHolds(Runner& r, const Statement& s, std::string* seen) {
  return r.looks(s.predicateArgs[0], s.line, seen);
}

bool lockedHolds(Runner& r, const Statement&, std::string* seen) {
  auto locked = askSpringBoard(r, "locked", seen);
  if (!locked) return false;
  *seen = locked->asBool() ? "locked" : "unlocked";
  return locked->asBool();
}

// prompt / prompt title "TEXT" / prompt message "TEXT" / prompt passcode-field
bool promptHolds(Runner& r, const Statement& s, std::string* seen) {
  auto prompt = askSpringBoard(r, "prompt", seen);
  if (!prompt) return false;
  if (!(*prompt)["visible"].asBool()) {
    *seen = "no Kavelin prompt is visible";
    return false;
  }
  if (s.predicateArgs.empty()) return true;
  const std::string& aspect = s.predicateArgs[0];
  if (aspect == "passcode-field") {
    *seen = "the passcode field is hidden";
    return (*prompt)["passcodeField"].asBool();
  }
  const std::string& want = s.predicateArgs[1];
  if (aspect == "title") {
    *seen = "the item line reads \"" + (*prompt)["title"].asString() + "\"";
    return (*prompt)["title"].asString() == want;
  }
  *seen = "the message is \"" + (*prompt)["message"].asString() + "\"";
  return (*prompt)["message"].asString().find(want) != std::string::npos;
}

// The text after the first word of `rest`, which may be a quoted string.
std::string afterFirstWord(const std::string& rest) {
  size_t start = rest.find_first_not_of(" \t");
  if (start == std::string::npos) return {};
  if (rest[start] != '"') {
    size_t end = rest.find_first_of(" \t", start);
    return end == std::string::npos ? std::string() : rest.substr(end);
  }
  size_t end = rest.find('"', start + 1);
  return end == std::string::npos ? std::string() : rest.substr(end + 1);
}

// reply none / reply KEY JSON
bool replyHolds(Runner& r, const Statement& s, std::string* seen) {
  const Value& reply = r.lastReply();
  *seen = reply.isNone() ? "the last reply was nil" : "the last reply was " + reply.describe();
  if (s.predicateArgs[0] == "none") return reply.isNone();
  const std::string& key = s.predicateArgs[0];
  auto expected = parseJson(afterFirstWord(s.predicateRest));
  return expected && reply.kind() == Value::Kind::kDictionary && !reply[key].isNone() &&
         sameValue(reply[key], *expected);
}

// The system alerts (not the Kavelin prompt) every running process shows.
std::vector<Value> systemAlerts(Runner& r) {
  std::vector<Value> out;
  for (const char* process : {"SpringBoard", "Preferences", "Camera", "InCallService"}) {
    if (!r.device().running(process)) continue;
    std::string error;
    auto alerts = r.device().query(process, "alerts", {}, &error);
    if (!alerts) continue;
    for (const auto& a : alerts->asArray()) {
      if (a["class"].asString() != "KavelinAlertView") out.push_back(a);
    }
  }
  return out;
}

// alert [title "TEXT"] [message "TEXT"]
bool alertHolds(Runner& r, const Statement& s, std::string* seen) {
  std::string shown;
  for (const Value& a : systemAlerts(r)) {
    bool matches = true;
    for (size_t i = 0; i + 1 < s.predicateArgs.size(); i += 2) {
      const std::string& want = s.predicateArgs[i + 1];
      if (s.predicateArgs[i] == "title") matches &= a["title"].asString() == want;
      if (s.predicateArgs[i] == "message")
        matches &= a["message"].asString().find(want) != std::string::npos;
    }
    if (matches) return true;
    shown += (shown.empty() ? "" : "; ") + a["title"].asString() + ": " + a["message"].asString();
  }
  *seen = shown.empty() ? "no system alert is visible" : "visible: " + shown;
  return false;
}

// installed CLASS SELECTOR [late]: SpringBoard's install report has the row
// installed (when the class came after start-up, with "late").
bool installedHolds(Runner& r, const Statement& s, std::string* seen) {
  auto report = askSpringBoard(r, "hooks", seen);
  if (!report) return false;
  std::string row = s.predicateArgs[0] + " " + s.predicateArgs[1];
  bool late = false;
  bool once = false;
  for (size_t i = 2; i < s.predicateArgs.size(); ++i) {
    late = late || s.predicateArgs[i] == "late";
    once = once || s.predicateArgs[i] == "once";
  }
  int times = 0;
  bool wanted = false;
  std::stringstream lines(report->asString());
  std::string line, found;
  while (std::getline(lines, line)) {
    if (line.find(" " + row) == std::string::npos) continue;
    found += (found.empty() ? "" : "; ") + line;
    ++times;
    bool installed = line.rfind("installed " + row, 0) == 0 || line.rfind("added " + row, 0) == 0;
    wanted = wanted || (installed && (!late || line.find("(late") != std::string::npos));
  }
  *seen = found.empty() ? "the report does not name " + row : "the report says: " + found;
  return wanted && (!once || times == 1);
}

bool runningHolds(Runner& r, const Statement& s, std::string* seen) {
  *seen = s.predicateArgs[0] + " is not running";
  return r.device().running(s.predicateArgs[0]);
}

// Asks the in-call screen; a failure to answer is what was seen.
std::optional<Value> askInCall(Runner& r, std::string* seen) {
  std::string error;
  auto answer = r.device().query("InCallService", "caller", {}, &error);
  if (!answer) *seen = error;
  return answer;
}

// Asks the Settings app; a failure to answer is what was seen.
std::optional<Value> askPreferences(Runner& r, const char* query,
                                    const std::vector<std::string>& args, std::string* seen) {
  std::string error;
  auto answer = r.device().query("Preferences", query, args, &error);
  if (!answer) *seen = error;
  return answer;
}

bool callerHolds(Runner& r, const Statement& s, std::string* seen) {
  auto caller = askInCall(r, seen);
  if (!caller) return false;
  if (!(*caller)["screen"].asBool()) {
    *seen = "no call screen shows";
    return false;
  }
  *seen = "the name line reads \"" + (*caller)["name"].asString() + "\"";
  return (*caller)["name"].asString() == s.predicateArgs[0];
}

bool callerPhotoHolds(Runner& r, const Statement& s, std::string* seen) {
  auto caller = askInCall(r, seen);
  if (!caller) return false;
  bool shown = (*caller)["photo"].asBool();
  *seen = shown ? "the caller's photo shows" : "no caller photo shows";
  return shown == (s.predicateArgs[0] == "shown");
}

// photo-library / photo-preview: what the Camera app shows.
bool cameraHolds(Runner& r, const Statement& s, std::string* seen) {
  std::string error;
  auto camera = r.device().query("Camera", "camera", {}, &error);
  if (!camera) {
    *seen = error;
    return false;
  }
  bool library = s.predicate == "photo-library";
  bool shown = (*camera)[library ? "photoLibrary" : "preview"].asBool();
  *seen = std::string(library ? "the photo library" : "the preview") +
          (shown ? " shows" : " does not show");
  return shown;
}

bool paneHolds(Runner& r, const Statement& s, std::string* seen) {
  auto pane = askPreferences(r, "pane", {}, seen);
  if (!pane) return false;
  *seen = "on top: " + pane->asString();
  return pane->asString() == s.predicateArgs[0];
}

bool switchHolds(Runner& r, const Statement& s, std::string* seen) {
  auto on = askPreferences(r, "switch", {s.predicateArgs[0]}, seen);
  if (!on) return false;
  if (on->isNone()) {
    *seen = "no switch " + s.predicateArgs[0] + " on the pane showing";
    return false;
  }
  *seen = s.predicateArgs[0] + (on->asBool() ? " is on" : " is off");
  return on->asBool() == (s.predicateArgs[1] == "on");
}

bool airplaneHolds(Runner& r, const Statement& s, std::string* seen) {
  bool on = r.device().setting("airplane").asBool();
  *seen = std::string("airplane mode is ") + (on ? "on" : "off");
  return on == (s.predicateArgs[0] == "on");
}

// file PATH [exists | contains "TEXT" | matches "REGEX"]: the file exists
// (and its content holds TEXT, or a line of it matches REGEX whole).
bool fileHolds(Runner& r, const Statement& s, std::string* seen) {
  *seen = s.predicateArgs[0] + " does not exist";
  if (!r.device().fileExists(s.predicateArgs[0])) return false;
  if (s.predicateArgs.size() < 3) return true;
  std::ifstream in(r.device().realPath(s.predicateArgs[0]), std::ios::binary);
  std::stringstream content;
  content << in.rdbuf();
  const std::string text = content.str();
  *seen = s.predicateArgs[0] + " reads: " + text;
  if (s.predicateArgs[1] == "contains") return text.find(s.predicateArgs[2]) != std::string::npos;
  std::regex pattern(s.predicateArgs[2]);
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (std::regex_match(line, pattern)) return true;
  }
  return false;
}

// files DIR N [TEXT]: the device's folder DIR holds N entries (whose names
// contain TEXT).
bool filesHolds(Runner& r, const Statement& s, std::string* seen) {
  std::error_code ec;
  std::string names;
  int count = 0;
  std::string text = s.predicateArgs.size() > 2 ? s.predicateArgs[2] : "";
  for (const auto& entry :
       std::filesystem::directory_iterator(r.device().realPath(s.predicateArgs[0]), ec)) {
    std::string name = entry.path().filename().string();
    if (name.find(text) == std::string::npos) continue;
    ++count;
    names += (names.empty() ? "" : ", ") + name;
  }
  *seen = std::to_string(count) + " entries: " + names;
  return std::to_string(count) == s.predicateArgs[1];
}

const std::vector<PredicateSpec>& predicates() {
  static const std::vector<PredicateSpec> kPredicates = {
      {"posted", 1, 3, "posted NAME [state N]",
       "NAME was posted in the current window (with that state)", postedHolds},
      {"sent", 2, 2, "sent PROCESS NAME",
       "PROCESS sent messaging-centre message NAME in the current window", sentHolds},
      {"log", 1, 1, "log \"TEXT\"", "an event-log line of the current window contains TEXT",
       logHolds},
      {"pref", 2, -1, "pref KEY JSON",
       "the preference domain holds that value now (pref KEY null: absent)", prefHolds},
      {"front", 1, 1, "front BUNDLE-ID | front home",
       "that app is frontmost / the home screen shows", frontHolds},
      {"launched", 1, 1, "launched BUNDLE-ID",
       "that app was brought to front in the current window", launchedHolds},
      {"prompt", 0, 2, "prompt [title \"TEXT\" | message \"TEXT\" | passcode-field]",
       "a Kavelin prompt is visible (with that item line, message or passcode field)", promptHolds},
      {"locked", 0, 0, "locked", "the device is locked", lockedHolds},
      {"folder-open", 1, 1, "folder-open NAME", "that folder is open on the home screen",
       folderOpenHolds},
      {"looks", 1, 1, "looks NAME",
       "the screen now matches the reference picture NAME.png beside the scenario file, within a "
       "few pixels (kavelin-sim run --rewrite-looks writes it instead)",
       looksHolds},
      {"reply", 1, -1, "reply KEY JSON | reply none",
       "the last reply holds KEY with that value (booleans and numbers are told apart) / was nil",
       replyHolds},
      {"alert", 0, 4, "alert [title \"TEXT\"] [message \"TEXT\"]",
       "a system alert other than the Kavelin prompt is visible, with that title, and a message "
       "containing TEXT",
       alertHolds},
      {"file", 1, 3, "file PATH [exists | contains \"TEXT\" | matches \"REGEX\"]",
       "that file exists on the device (and its content contains TEXT / one of its lines "
       "matches the regular expression REGEX whole)",
       fileHolds},
      {"files", 2, 3, "files DIR N [\"TEXT\"]",
       "the device's folder DIR holds N entries (whose names contain TEXT)", filesHolds},
      {"running", 1, 1, "running PROCESS", "the process is alive", runningHolds},
      {"installed", 2, 4, "installed CLASS SELECTOR [late] [once]",
       "SpringBoard's install report has that row installed (late: when its class came after "
       "start-up, with the image that brought it; once: and names the row only once); SELECTOR "
       "as -sel or +sel",
       installedHolds},
      {"power", 1, 1, "power off|reboot|respring",
       "the device powered off, rebooted, or SpringBoard restarted, in the current window",
       powerHolds},
      {"siri", 0, 0, "siri", "Siri shows", springBoardFlagHolds},
      {"editing", 0, 0, "editing", "icons are in editing mode", springBoardFlagHolds},
      {"cc", 2, 2, "cc ITEM on|off",
       "Control Center's toggle ITEM is on or off, and its button shows it so", ccHolds},
      {"caller", 1, 1, "caller \"TEXT\"", "the in-call screen's name line reads TEXT", callerHolds},
      {"caller-photo", 1, 1, "caller-photo shown|hidden",
       "the in-call screen shows the caller's photo / does not", callerPhotoHolds},
      {"photo-library", 0, 0, "photo-library", "the photo library is showing in the Camera app",
       cameraHolds},
      {"photo-preview", 0, 0, "photo-preview",
       "the Camera app shows the preview of the last photo (a press on the image well)",
       cameraHolds},
      {"pane", 1, 1, "pane ID",
       "the Settings app shows the pane whose specifier id is ID on top (root: the list)",
       paneHolds},
      {"switch", 2, 2, "switch ID on|off", "the switch of that row shows on or off", switchHolds},
      {"airplane", 1, 1, "airplane on|off", "the device's airplane mode", airplaneHolds},
      {"shown", 2, 2, "shown BUNDLE-ID N",
       "the notification list in view (the notification list while it shows, else the lock "
       "screen's while locked) shows N notifications of that app",
       shownHolds},
      {"summary", 0, 1, "summary [\"TEXT\"]",
       "the summary notification is on the lock screen and its message contains TEXT",
       summaryHolds},
      {"covered", 1, 2, "covered BUNDLE-ID [text]",
       "the switcher shows that app's card hidden: under the blur cover (iOS 11; with text: the "
       "word \"Kavelined\" shows centred on it at full alpha), under a blurred copy of its "
       "snapshot (iOS 9 and 10), or with its launch image in place of its snapshot (iOS 8)",
       coveredHolds},
      {"switcher", 0, -1, "switcher [BUNDLE-ID...]",
       "the app switcher shows (with exactly these items, most recent first)", switcherHolds},
  };
  return kPredicates;
}

}  // namespace

std::optional<ParseError> validateScenario(const Scenario& scenario) {
  for (const auto& s : scenario.statements) {
    auto fail = [&](std::string message) {
      return ParseError{scenario.file, s.line, std::move(message)};
    };
    if (s.kind == Statement::Kind::kAction) {
      const ActionSpec* a = actionSpec(s.action);
      if (a == nullptr) return fail("unknown action '" + s.action + "' (see kavelin-sim help)");
      int n = static_cast<int>(s.args.size());
      if (n < a->minArgs || (a->maxArgs >= 0 && n > a->maxArgs)) {
        return fail("expected " + std::string(a->usage));
      }
      bool systemProcess = s.process == "SpringBoard" || s.process == "Preferences" ||
                           s.process == "Camera" || s.process == "InCallService";
      if (std::string(a->process) == "app") {
        if (systemProcess) return fail("'" + s.action + "' is an action of an app (start app ID)");
      } else if (std::string(a->process) != "*" && s.process != a->process) {
        return fail("'" + s.action + "' is an action of " + a->process);
      }
    }
    if (s.kind == Statement::Kind::kExpect) {
      const PredicateSpec* p = predicateSpec(s.predicate);
      if (p == nullptr)
        return fail("unknown predicate '" + s.predicate + "' (see kavelin-sim help)");
      int n = static_cast<int>(s.predicateArgs.size());
      if (n < p->minArgs || (p->maxArgs >= 0 && n > p->maxArgs)) {
        return fail("expected " + std::string(p->usage));
      }
      if (s.predicate == "posted" && n != 1 &&
          (n != 3 || s.predicateArgs[1] != "state" ||
           s.predicateArgs[2].find_first_not_of("0123456789xabcdefABCDEF") != std::string::npos)) {
        return fail("expected posted NAME [state N]");
      }
      if (s.predicate == "prompt" && n > 0 &&
          !((n == 1 && s.predicateArgs[0] == "passcode-field") ||
            (n == 2 && (s.predicateArgs[0] == "title" || s.predicateArgs[0] == "message")))) {
        return fail("expected " + std::string(p->usage));
      }
      if (s.predicate == "reply" && !(n == 1 && s.predicateArgs[0] == "none")) {
        std::string why;
        if (n < 2 || !parseJson(afterFirstWord(s.predicateRest), &why))
          return fail("expected reply KEY JSON | reply none" + (why.empty() ? "" : ": " + why));
      }
      if (s.predicate == "alert") {
        for (size_t i = 0; i < s.predicateArgs.size(); i += 2) {
          if (i + 1 >= s.predicateArgs.size() ||
              (s.predicateArgs[i] != "title" && s.predicateArgs[i] != "message"))
            return fail("expected " + std::string(p->usage));
        }
      }
      if (s.predicate == "covered" && n == 2 && s.predicateArgs[1] != "text") {
        return fail("expected " + std::string(p->usage));
      }
      if (s.predicate == "cc" && s.predicateArgs[1] != "on" && s.predicateArgs[1] != "off") {
        return fail("expected " + std::string(p->usage));
      }
      if (s.predicate == "caller-photo" && s.predicateArgs[0] != "shown" &&
          s.predicateArgs[0] != "hidden") {
        return fail("expected " + std::string(p->usage));
      }
      if (s.predicate == "file" &&
          ((n == 2 && s.predicateArgs[1] != "exists") ||
           (n == 3 && s.predicateArgs[1] != "contains" && s.predicateArgs[1] != "matches"))) {
        return fail("expected " + std::string(p->usage));
      }
      if (s.predicate == "file" && n == 3 && s.predicateArgs[1] == "matches") {
        try {
          std::regex pattern(s.predicateArgs[2]);
        } catch (const std::regex_error& e) {
          return fail(std::string("not a regular expression: ") + e.what());
        }
      }
      if (s.predicate == "pref") {
        const std::string& key = s.predicateArgs[0];
        std::string why;
        if (!parseJson(s.predicateRest.substr(s.predicateRest.find(key) + key.size()), &why)) {
          return fail("expected pref KEY JSON: " + why);
        }
      }
    }
  }
  return std::nullopt;
}

int printInstallReport(const std::string& process, const std::string& deviceLine,
                       const std::vector<std::string>& extensions, const RunOptions& options) {
  std::string text = "device " + deviceLine + "\n";
  for (const auto& e : extensions) text += "extension " + e + "\n";
  auto parsed = parseScenario(text, "--device");
  if (auto* error = std::get_if<ParseError>(&parsed)) {
    std::fprintf(stderr, "kavelin-sim hooks: %s\n", error->message.c_str());
    return 2;
  }
  Runner runner(options);
  std::string failure;
  for (const auto& s : std::get<Scenario>(parsed).statements) {
    if (!runner.describeWith(s, &failure)) {
      std::fprintf(stderr, "kavelin-sim hooks: %s\n", failure.c_str());
      return 2;
    }
  }
  ProcessProfile profile;
  if (!processProfile(process, &profile)) {
    std::fprintf(stderr, "kavelin-sim hooks: unknown process %s\n", process.c_str());
    return 2;
  }
  if (!runner.device().start(process, &failure)) {
    std::fprintf(stderr, "kavelin-sim hooks: %s\n", failure.c_str());
    return 1;
  }
  auto report = runner.device().query(profile.name, "hooks", {}, &failure);
  if (!report) {
    std::fprintf(stderr, "kavelin-sim hooks: %s\n", failure.c_str());
    return 1;
  }
  std::fputs(report->asString().c_str(), options.out);
  return 0;
}

namespace {

// A host's resident memory in kilobytes and its CPU time in seconds, as the
// kernel counts them; zeros when it cannot be read.
struct HostUse {
  long residentKb = 0;
  double cpuSeconds = 0;
};

HostUse hostUse(pid_t pid) {
  HostUse use;
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmRSS:", 0) == 0) use.residentKb = std::atol(line.c_str() + 6);
  }
  std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
  std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
  // The fields after the command name (which may hold spaces): utime is the 14th.
  std::istringstream fields(text.substr(text.rfind(')') + 2));
  std::vector<std::string> f{std::istream_iterator<std::string>(fields), {}};
  if (f.size() > 12) {
    use.cpuSeconds = static_cast<double>(std::atoll(f[11].c_str()) + std::atoll(f[12].c_str())) /
                     static_cast<double>(sysconf(_SC_CLK_TCK));
  }
  return use;
}

double wallSeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

int runPromptCycles(int count, int every, const std::string& deviceLine,
                    const RunOptions& options) {
  constexpr const char* kApp = "com.apple.MobileSMS";
  std::string text =
      "device " + deviceLine + "\nprefs protected [\"" + kApp + "\"]\nprefs passcode \"1234\"\n";
  auto parsed = parseScenario(text, "--device");
  if (auto* error = std::get_if<ParseError>(&parsed)) {
    std::fprintf(stderr, "kavelin-sim prompt-cycles: %s\n", error->message.c_str());
    return 2;
  }
  Runner runner(options);
  std::string failure;
  for (const auto& s : std::get<Scenario>(parsed).statements) {
    if (!runner.describeWith(s, &failure)) {
      std::fprintf(stderr, "kavelin-sim prompt-cycles: %s\n", failure.c_str());
      return 2;
    }
  }
  Device& device = runner.device();
  if (!device.start("SpringBoard", &failure)) {
    std::fprintf(stderr, "kavelin-sim prompt-cycles: %s\n", failure.c_str());
    return 1;
  }
  // One cycle: the tap is held for the prompt, which is cancelled; the
  // prompt's delayed work runs out before the next tap.
  auto cycle = [&]() {
    Value result;
    if (!device.action("SpringBoard", "tap", {kApp}, kApp, &result, &failure)) return false;
    device.advance(0.5);
    if (!device.action("SpringBoard", "prompt", {"button", "0"}, "button 0", &result, &failure)) {
      return false;
    }
    device.advance(2.5);
    return device.fault().empty() || (failure = device.fault(), false);
  };
  if (!cycle()) {
    std::fprintf(stderr, "kavelin-sim prompt-cycles: %s\n", failure.c_str());
    return 1;
  }
  pid_t pid = device.pidOf("SpringBoard");
  std::fprintf(options.out, "prompt cycles in SpringBoard on %s (tap %s, prompt, Cancel)\n",
               deviceLine.c_str(), kApp);
  std::fprintf(options.out, "%8s %12s %14s %16s\n", "cycles", "RSS (KB)", "ms a prompt",
               "host CPU ms");
  HostUse before = hostUse(pid);
  double started = wallSeconds();
  for (int done = 1; done <= count; ++done) {
    if (!cycle()) {
      std::fprintf(stderr, "kavelin-sim prompt-cycles: after %d cycles: %s\n", done - 1,
                   failure.c_str());
      return 1;
    }
    if (done % every != 0 && done != count) continue;
    int stretch = done % every == 0 ? every : done % every;
    HostUse now = hostUse(pid);
    double ended = wallSeconds();
    std::fprintf(options.out, "%8d %12ld %14.3f %16.3f\n", done, now.residentKb,
                 (ended - started) * 1000 / stretch,
                 (now.cpuSeconds - before.cpuSeconds) * 1000 / stretch);
    std::fflush(options.out);
    before = now;
    started = ended;
  }
  std::string ending = device.shutDown();
  if (!ending.empty()) {
    std::fprintf(stderr, "kavelin-sim prompt-cycles: at the end: %s\n", ending.c_str());
    return 1;
  }
  return 0;
}

class StepRunner::Impl : public Runner {
 public:
  using Runner::Runner;
  std::string file;
};

StepRunner::StepRunner(const RunOptions& options, std::string file) : impl_(new Impl(options)) {
  impl_->file = std::move(file);
}
StepRunner::~StepRunner() {
  delete impl_;
}

bool StepRunner::step(const Statement& statement, std::string* failure) {
  Scenario one{impl_->file, {statement}};
  if (auto error = validateScenario(one)) {
    *failure = error->message;
    return false;
  }
  return impl_->step(statement, failure);
}

Device* StepRunner::device() {
  return impl_->existingDevice();
}

std::string StepRunner::finish() {
  return impl_->end();
}

bool runScenario(const Scenario& scenario, const RunOptions& options) {
  Runner runner(options);
  return runner.run(scenario);
}

std::string helpText() {
  std::string out =
      "kavelin-sim: Kavelin on a simulated device\n\n"
      "usage:\n"
      "  kavelin-sim [--pictures DIR]     a short tour of a simulated iPhone; its pictures go\n"
      "                                   to build/tour-pictures (index.html) or to DIR\n"
      "  kavelin-sim run [--json] [--host-timeout SECONDS] [--pictures DIR] FILE...\n"
      "                                   run scenario files (exit 0 all held, 1 a failure,\n"
      "                                   2 a file that could not be parsed); a host that takes\n"
      "                                   longer than the time-out (20 s) for one step fails\n"
      "      --pictures DIR               take a picture of the screen at each snapshot line:\n"
      "                                   DIR/SCENARIO-LINE-NAME.png, and DIR/index.html showing\n"
      "                                   them in order beside the timeline\n"
      "      --picture-scale N            pixels a point of those pictures (default: the\n"
      "                                   device's own, 2 or 3)\n"
      "      --rewrite-looks              'expect looks NAME' writes NAME.png from the screen\n"
      "                                   instead of comparing (scripts/update-looks.sh)\n"
      "  kavelin-sim hooks PROCESS [--device \"DEVICE-LINE\"] [--extension NAME]...\n"
      "                                   start PROCESS on that device and print what the\n"
      "                                   library installs there: one line per row,\n"
      "                                   installed, added, skipped (why) or pending\n"
      "  kavelin-sim signatures TABLE     hold the library's rows and the simulated methods of\n"
      "                                   every version against the types iOS declares\n"
      "                                   (tests/platform-signatures.tsv); exit 1 on a difference\n"
      "  kavelin-sim prompt-cycles COUNT [--every N] [--device \"DEVICE-LINE\"]\n"
      "                                   tap a protected app, see the prompt, cancel it, COUNT\n"
      "                                   times; every N (1000) cycles print SpringBoard's\n"
      "                                   resident memory and a prompt's wall and CPU time\n"
      "  kavelin-sim help                 this text\n\n"
      "statements (one a line; # starts a comment):\n"
      "  device iphone|ipad ios VERSION [touchid|faceid|none] [identities N] "
      "[passcode|no-passcode] [passkit-late]\n"
      "                          passkit-late: SpringBoard loads PassKit only when its bundle\n"
      "                          is first loaded (by the prompt), announcing the image then\n"
      "  prefs KEY JSON / prefs-delete KEY\n"
      "  wifi BSSID [ssid NAME] [password PW] / wifi off\n"
      "                          join a network (the device knows it, with its password, from\n"
      "                          then on)\n"
      "  wifi-known BSSID [ssid NAME] [password PW]\n"
      "                          a network the device has joined before, not in range now\n"
      "  notify NAME [state N]\n"
      "  file PATH JSON / file-raw PATH HEX   a property-list file / these exact bytes\n"
      "  start PROCESS...        SpringBoard, Preferences, Camera, InCallService, app BUNDLE-ID\n"
      "  PROCESS: ACTION [ARGS]  an action inside a running process (below)\n"
      "  finger match|nomatch / face match|nomatch / biometric CODE\n"
      "  missing FUNCTION...     leave private functions off the device (before start):\n"
      "                          WiFiNetworkGetProperty WiFiNetworkCopyPassword\n"
      "                          FigVibratorInitialize FigVibratorPlayVibrationWithDictionary\n"
      "  bundle none|library|bootstrap|both   where the settings bundle is (default library)\n"
      "  extension NAME...       install another extension's library (its .dylib file);\n"
      "                          one whose name sorts before Kavelin's is loaded into\n"
      "                          SpringBoard before the library, as the injection\n"
      "                          framework loads by name (load-image brings the others)\n"
      "  advance SECONDS         virtual time passes (fractions allowed)\n"
      "  battery critical|normal the battery reaches (or leaves) its critical level\n"
      "  mark                    start a new window for posted, launched, log and sent\n"
      "  incoming-call NUMBER [name \"NAME\"] / outgoing-call NUMBER / answer / hang-up\n"
      "                          the phone: a call rings (from a contact with a photo when it\n"
      "                          has a name), is placed, answered (the ringing or waiting\n"
      "                          call), ended (the latest call); SpringBoard and InCallService\n"
      "                          see it\n"
      "  respring                SpringBoard's process ends and starts again (the library\n"
      "                          loads afresh); kill PROCESS: it dies at once, as in a crash;\n"
      "                          start PROCESS brings it back\n"
      "  snapshot NAME           a picture of the screen now, when the run takes pictures\n"
      "                          (--pictures); otherwise nothing\n"
      "  expect [not] PREDICATE\n\n"
      "actions:\n";
  for (const auto& a : kActions) {
    std::string process = a.process == std::string("*")     ? "PROCESS"
                          : a.process == std::string("app") ? "BUNDLE-ID"
                                                            : a.process;
    out += "  " + process + ": " + a.usage + "\n      " + a.help + "\n";
  }
  out += "\npredicates:\n";
  for (const auto& p : predicates())
    out += "  " + std::string(p.usage) + "\n      " + p.help + "\n";
  out += "\ndevice profiles (ios VERSION):\n ";
  for (const auto& p : osProfiles()) out += " " + std::string(p.version);
  out += "\n  iphone or ipad; touchid, faceid (iOS 11) or none\n";
  out +=
      "\nevery host also has the class SimProbe, a developer's tool for driving the platform's\n"
      "services directly, e.g. 'SpringBoard: send SimProbe post: [\"some.name\"]'.\n";
  return out;
}

}  // namespace kv::sim
