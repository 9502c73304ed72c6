// Camera and photo-library protection, the Camera app's side: a tap on the
// image well is held back and SpringBoard asked; its answer repeats the tap
// once, past the guard.
#include "processes/camera.h"

#include <algorithm>
#include <string>
#include <vector>

#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "settings/notifications.h"
#include "settings/settings.h"

namespace kv::processes {

namespace {

using platform::Hook;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendIfResponds;
using settings::Note;

const Sel kCenterNamed("centerNamed:");
const Sel kSendAndReceive("sendMessageAndReceiveReplyName:userInfo:");
const Sel kSendOneWay("sendMessageName:userInfo:");
const Sel kImageWellTapped("_imageWellTapped:");
const Sel kHandleImageWellTapped("_handleImageWellTapped:");
const Sel kHandleImageWellReleased("_handleImageWellReleased:");
const Sel kPerformWithObject("performSelector:withObject:");
const Sel kView("view");

constexpr const char* kCenter = "net.quorvan.kavelin.center";
constexpr const char* kPhotos = "com.apple.mobileslideshow";

// How one kind of image well asks SpringBoard.
struct TapGuard {
  const char* message;  // sent when the tap is held back
  bool
      protectedFromReply;  // the protected apps come from "prta", else from this process's settings
};
constexpr TapGuard kViewfinderTap{"bcc9", true};
constexpr TapGuard kCameraViewTap{"bcam", false};

struct CameraProtection {
  bool cameraBypass = false;    // a held-back tap is being repeated
  Retained pendingCameraView;   // whose tap was held back
  Retained pendingSender;       // and the tap's argument
  bool releasedBypass = false;  // a held-back release is being repeated
  Retained pendingViewfinder;   // whose release was held back
};

CameraProtection& camera() {
  static CameraProtection c;
  return c;
}

id center() {
  return sendIfResponds<id>(platform::asId(platform::classNamed("CPDistributedMessagingCenter")),
                            kCenterNamed, platform::makeString(kCenter));
}

// SpringBoard's reply to a query; nil when it does not answer.
id ask(const char* message) {
  return sendIfResponds<id>(center(), kSendAndReceive, platform::makeString(message), id{nullptr});
}

// True iff opening the photo library from here needs SpringBoard first: the
// owner can authenticate, no session is open, this is no repeat, protection
// is on and Photos is protected.
bool photosGuarded(bool protectedFromReply) {
  platform::AutoreleasePool pool;
  id identities = ask("idsn");
  id session = ask("sesx");
  id protectedApps = ask("prta");
  int64_t enrolled = platform::integerOf(platform::objectForKey(identities, "idsn")).value_or(0);
  bool sessionExists =
      platform::boolOf(platform::objectForKey(session, "sessionExists")).value_or(false);
  // Protection's master switch is read afresh: this process has no other
  // occasion to load the settings.
  settings::load();
  std::vector<std::string> apps =
      protectedFromReply
          ? platform::stringListOf(platform::objectForKey(protectedApps, "protectedApps"))
                .value_or(std::vector<std::string>{})
          : settings::current().protectedApps.items();
  return enrolled >= 1 && !sessionExists && !camera().cameraBypass && settings::current().enabled &&
         std::ranges::find(apps, kPhotos) != apps.end();
}

// Holds the tap back and asks SpringBoard; false when the tap may go on.
bool holdBackTap(const TapGuard& tap, id self, id sender) {
  if (!photosGuarded(tap.protectedFromReply)) return false;
  CameraProtection& c = camera();
  c.pendingCameraView.reset(self);
  c.pendingSender.reset(sender);
  platform::AutoreleasePool pool;
  sendIfResponds<BOOL>(center(), kSendOneWay, platform::makeString(tap.message), id{nullptr});
  return true;
}

// Repeats the held-back tap once, past the guard.
void repeatTap(SEL selector) {
  CameraProtection& c = camera();
  Retained view = std::move(c.pendingCameraView);
  Retained sender = std::move(c.pendingSender);
  c.cameraBypass = true;
  sendIfResponds(view.get(), selector, sender.get());
  c.cameraBypass = false;
}

}  // namespace

void viewfinderImageWellTapped(id self, SEL cmd, id sender) {
  if (holdBackTap(kViewfinderTap, self, sender)) return;
  Hook<&viewfinderImageWellTapped>::original(self, cmd, sender);
}
void cameraKitImageWellTapped(id self, SEL cmd, id sender) {
  if (holdBackTap(kCameraViewTap, self, sender)) return;
  Hook<&cameraKitImageWellTapped>::original(self, cmd, sender);
}
void photoLibraryImageWellTapped(id self, SEL cmd, id sender) {
  if (holdBackTap(kCameraViewTap, self, sender)) return;
  Hook<&photoLibraryImageWellTapped>::original(self, cmd, sender);
}
void cameraViewImageWellTapped(id self, SEL cmd, id sender) {
  if (holdBackTap(kCameraViewTap, self, sender)) return;
  Hook<&cameraViewImageWellTapped>::original(self, cmd, sender);
}

// The newer camera opens the library when the finger leaves the image well;
// SpringBoard knows on its own whether Photos is protected.
void viewfinderImageWellReleased(id self, SEL cmd, id sender) {
  CameraProtection& c = camera();
  if (c.releasedBypass) {
    c.releasedBypass = false;
    Hook<&viewfinderImageWellReleased>::original(self, cmd, sender);
    return;
  }
  if (settings::stateOf(Note::kInCameraPhotosProtection) != 0) {
    settings::post(Note::kCameraAsksForPhotos);
    c.pendingViewfinder.reset(self);
    return;
  }
  Hook<&viewfinderImageWellReleased>::original(self, cmd, sender);
}

// A press on the image well would peek into the library: a tick instead.
BOOL startImageWellPreview(id self, SEL cmd, id gestureRecognizer) {
  id view = sendIfResponds<id>(gestureRecognizer, kView);
  if (platform::isKindOf(view, "CAMImageWell") && photosGuarded(true)) {
    settings::post(Note::kHapticMedium);
    return 0;
  }
  return Hook<&startImageWellPreview>::original(self, cmd, gestureRecognizer);
}

void cameraPhotosAllowed(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                         CFDictionaryRef) {
  repeatTap(kImageWellTapped);
}

void cameraPhotosAllowed9(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                          CFDictionaryRef) {
  repeatTap(kHandleImageWellTapped);
}

void cameraPhotosAllowed11(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                           CFDictionaryRef) {
  dispatch_async(dispatch_get_main_queue(), ^{
    CameraProtection& c = camera();
    Retained viewfinder = std::move(c.pendingViewfinder);
    if (!viewfinder) return;
    c.releasedBypass = true;
    send<id>(viewfinder.get(), kPerformWithObject, kHandleImageWellReleased, id{nullptr});
  });
}

}  // namespace kv::processes
