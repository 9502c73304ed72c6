// System sounds: AudioToolbox's sound IDs for sound files, and BBSound, the
// sound a bulletin plays, made from a sound ID (through iOS 10) or from a
// tone alert configuration (iOS 10 and later).
#include <map>
#include <string>

#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/notification_center.h"
#include "sim/frameworks/state.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Sel;
using platform::send;

namespace {

constexpr OSStatus kUnspecifiedError = -1500;  // kAudioServicesSystemSoundUnspecifiedError

// The sound files of the IDs handed out and not yet disposed of.
std::map<SystemSoundID, std::string>& soundFiles() {
  static auto* files = new std::map<SystemSoundID, std::string>();
  return *files;
}

std::string pathOfURL(id url) {
  return platform::toString(platform::sendIfResponds<id>(url, Sel("path")));
}

bool fileExists(const std::string& path) {
  id manager =
      platform::sendClass<id>(platform::classNamed("NSFileManager"), Sel("defaultManager"));
  return send<BOOL>(manager, Sel("fileExistsAtPath:"), platform::makeString(path)) != 0;
}

std::string lastComponent(const std::string& path) {
  auto slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

struct SoundState {
  std::string file;  // the file it plays, "" for none
};

struct ToneState {
  std::string file;
};

id soundWithID(id self, SEL, unsigned soundID, unsigned long long, id) {
  auto found = soundFiles().find(soundID);
  stateOf<SoundState>(self).file = found == soundFiles().end() ? "" : found->second;
  return self;
}
id soundWithTone(id self, SEL, id configuration) {
  stateOf<SoundState>(self).file =
      configuration == nullptr ? "" : stateOf<ToneState>(configuration).file;
  return self;
}
id toneWithType(id self, SEL, long) {
  return self;
}
void toneSetFile(id self, SEL, id url) {
  stateOf<ToneState>(self).file = pathOfURL(url);
}

}  // namespace

std::string soundName(id sound) {
  if (sound == nullptr || !hasState<SoundState>(sound)) return "";
  return lastComponent(stateOf<SoundState>(sound).file);
}

void defineSystemSounds() {
  ClassBuilder sound("BBSound", "NSObject");
  addCatalogued(sound, "-initWithSystemSoundID:behavior:vibrationPattern:", imp(soundWithID));
  addCatalogued(sound, "-initWithToneAlertConfiguration:", imp(soundWithTone));
  sound.build();
  if (cataloguedHere("TLAlertConfiguration")) {
    ClassBuilder tone("TLAlertConfiguration", "NSObject");
    addCatalogued(tone, "-initWithType:", imp(toneWithType));
    addCatalogued(tone, "-setExternalToneFileURL:", imp(toneSetFile));
    tone.build();
  }
}

}  // namespace kv::sim::frameworks

extern "C" {

OSStatus AudioServicesCreateSystemSoundID(CFURLRef inFileURL, SystemSoundID* outSystemSoundID) {
  using namespace kv::sim::frameworks;
  std::string path = pathOfURL(kv::platform::ns(inFileURL));
  if (outSystemSoundID == nullptr || path.empty() || !fileExists(path)) return kUnspecifiedError;
  static SystemSoundID next = 4096;
  *outSystemSoundID = next++;
  soundFiles()[*outSystemSoundID] = path;
  return 0;
}

OSStatus AudioServicesDisposeSystemSoundID(SystemSoundID inSystemSoundID) {
  using namespace kv::sim::frameworks;
  return soundFiles().erase(inSystemSoundID) != 0 ? 0 : kUnspecifiedError;
}

}  // extern "C"
