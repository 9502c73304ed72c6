// Launchers away from the home screen: Control Center's quick-launch buttons
// (SBCCQuickLaunchSectionController through iOS 9; from iOS 10 the button
// asks SpringBoard to launch the app, an open-application request) and the
// iOS 8 lock-screen camera in SpringBoard, whose image well opens Photos on
// a device without a passcode; opening the camera from the lock screen
// (SBLockScreenCameraController through iOS 9, SBDashBoardViewController from
// iOS 10). The "cc-launch", "lock-camera" and "lock-camera-image-well"
// actions.
#include <string>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/actions.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

// The apps Control Center's quick-launch buttons open.
const char* const kQuickLaunchApps[] = {"com.apple.mobiletimer", "com.apple.calculator",
                                        "com.apple.camera"};
constexpr const char* kPhotos = "com.apple.mobileslideshow";
constexpr int kLockScreenCameraSource = 7;  // unlocking from the lock-screen camera

// -[SBCCQuickLaunchSectionController _activateAppWithBundleId:url:]:
// Control Center closes and SpringBoard launches the app.
void activateAppWithBundleId(id, SEL, id bundleIdentifier, id) {
  host::logEvent("control-center", "closed for " + platform::toString(bundleIdentifier));
  send<BOOL>(sharedOf("SpringBoard"), Sel("launchApplicationWithIdentifier:suspended:"),
             bundleIdentifier, BOOL{0});
}

// -[PLCameraView _imageWellTapped:] in SpringBoard's lock-screen camera: with
// a device passcode the camera shows only this session's photos; without
// one the device unlocks and Photos comes to the front.
void imageWellTapped(id, SEL, id) {
  if (send<BOOL>(sharedOf("SBDeviceLockController"), Sel("deviceHasPasscodeSet"))) {
    host::logEvent("camera", "image well: this session's photos, in the camera");
    return;
  }
  host::logEvent("camera", "image well: Photos");
  askUnlock(sharedOf("SBLockScreenManager"), kLockScreenCameraSource);
  activate(applicationNamed(kPhotos), "ActivateApplication");
}

// cc-launch BUNDLE-ID
Value ccLaunchAction(const host::ActionRequest& request, std::string* error) {
  const std::string& bundle = request.args[0];
  bool offered = false;
  for (const char* app : kQuickLaunchApps) offered |= bundle == app;
  if (!offered || springBoard().locked) {
    *error = "Control Center offers no quick launch of " + bundle +
             (springBoard().locked ? " while locked" : "");
    return {};
  }
  host::logEvent("control-center", "quick launch " + bundle);
  id section = sharedOf("SBCCQuickLaunchSectionController");
  if (section != nullptr) {
    send<void>(section, Sel("_activateAppWithBundleId:url:"), platform::makeString(bundle),
               id{nullptr});
  } else {
    send<BOOL>(sharedOf("SpringBoard"), Sel("launchApplicationWithIdentifier:suspended:"),
               platform::makeString(bundle), BOOL{0});
  }
  return {};
}

// lock-camera-image-well: the camera opened from the lock screen (iOS 8),
// then a tap on its last-photo thumbnail.
Value lockCameraImageWellAction(const host::ActionRequest&, std::string* error) {
  if (!cataloguedHere("PLCameraView") || !springBoard().locked) {
    *error = "no lock-screen camera here (iOS 8, locked)";
    return {};
  }
  static auto* camera = new Retained();
  if (!*camera) *camera = Retained::adopt(newView("PLCameraView", CGRect{}));
  static auto* imageWell = new Retained(Retained::adopt(newView("UIButton", CGRect{})));
  host::logEvent("camera", "lock-screen camera");
  send<void>(camera->get(), Sel("_imageWellTapped:"), imageWell->get());
  return {};
}

// ---- The camera opened from the lock screen ----

// The lock screen's camera: its live view, kept for the life of SpringBoard.
id lockScreenCameraView() {
  static auto* view = new Retained();
  if (!*view) *view = Retained::adopt(newView("UIView", CGRect{{0, 0}, {375, 667}}));
  return view->get();
}

// -[SBLockScreenCameraController _didActivate]: the camera is up over the
// lock screen; what covers its view is seen too.
void cameraDidActivate(id, SEL) {
  host::logEvent("camera", "lock-screen camera opens");
}
id cameraControllerView(id, SEL) {
  return lockScreenCameraView();
}
// -[SBDashBoardViewController activateCameraAnimated:] (iOS 10) and
// -_activateCameraAnimated: (iOS 11).
void dashBoardActivateCamera(id, SEL, BOOL) {
  host::logEvent("camera", "lock-screen camera opens");
}

// lock-camera: the camera grabber on the lock screen.
Value lockCameraAction(const host::ActionRequest&, std::string* error) {
  if (!springBoard().locked) {
    *error = "the device is not locked: no lock-screen camera";
    return {};
  }
  host::logEvent("camera", "lock-screen camera asked for");
  if (id dashBoard = sharedOf("SBDashBoardViewController")) {
    const char* selector = platform::respondsTo(dashBoard, Sel("_activateCameraAnimated:"))
                               ? "_activateCameraAnimated:"
                               : "activateCameraAnimated:";
    send<void>(dashBoard, Sel(selector), BOOL{1});
    return {};
  }
  // A camera opened afresh shows nothing of the last time.
  for (id view : subviewsOf(lockScreenCameraView())) send<void>(view, Sel("removeFromSuperview"));
  send<void>(sharedOf("SBLockScreenCameraController"), Sel("_didActivate"));
  if (findSubview(lockScreenCameraView(), "_UIBackdropView") != nullptr)
    host::logEvent("camera", "lock-screen camera covered by a backdrop");
  return {};
}

}  // namespace

void defineSpringBoardLaunchers() {
  ClassBuilder section("SBCCQuickLaunchSectionController", "UIViewController");
  addCatalogued(section, "-_activateAppWithBundleId:url:", imp(activateAppWithBundleId));
  if (cataloguedHere("SBCCQuickLaunchSectionController")) section.build();
  ClassBuilder camera("PLCameraView", "UIView");
  addCatalogued(camera, "-_imageWellTapped:", imp(imageWellTapped));
  if (cataloguedHere("PLCameraView")) camera.build();
  ClassBuilder cameraController("SBLockScreenCameraController", "NSObject");
  addCatalogued(cameraController, "-_didActivate", imp(cameraDidActivate));
  addCatalogued(cameraController, "-cameraView", imp(cameraControllerView));
  if (cataloguedHere("SBLockScreenCameraController")) cameraController.build();
  ClassBuilder dashBoard("SBDashBoardViewController", "UIViewController");
  addCatalogued(dashBoard, "-activateCameraAnimated:", imp(dashBoardActivateCamera));
  addCatalogued(dashBoard, "-_activateCameraAnimated:", imp(dashBoardActivateCamera));
  if (cataloguedHere("SBDashBoardViewController")) dashBoard.build();
  host::registerAction("cc-launch", ccLaunchAction);
  host::registerAction("lock-camera", lockCameraAction);
  host::registerAction("lock-camera-image-well", lockCameraImageWellAction);
}

}  // namespace kv::sim::frameworks
