// The Camera app (com.apple.camera) as each version builds it: the image
// well, the last photo's thumbnail, sits on CameraKit's camera view on iOS 8
// and on the viewfinder view controller from iOS 9; a tap (on iOS 11 the
// finger leaving it) opens the photo library, and from iOS 9 a press peeks
// at the last photo through UIKit's preview interaction controller.
#include <string>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
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
using platform::sendSuper;
using platform::Value;

namespace {

constexpr unsigned long kTouchUpInside = 1 << 6;
const Sel kSendActions("sendActionsForControlEvents:");
const Sel kAddTarget("addTarget:action:forControlEvents:");
const Sel kStartPreview("startInteractivePreviewWithGestureRecognizer:");
const Sel kHandlePreviewGesture("_handlePreviewGesture:");

struct CameraAppState {
  Retained window;
  Retained owner;  // the camera view (iOS 8) or the viewfinder controller
  Retained imageWell;
  Retained preview;  // UIPreviewInteractionController (iOS 9 and later)
  bool libraryShown = false;
  bool previewShown = false;
};
CameraAppState& app() {
  static auto* s = new CameraAppState();
  return *s;
}

CGRect screenBounds() {
  return send<CGRect>(platform::sendClass<id>(platform::classNamed("UIScreen"), Sel("mainScreen")),
                      Sel("bounds"));
}

// What every version's image-well handler ends in.
void openPhotoLibrary(id self, SEL cmd, id) {
  host::logEvent("camera", std::string(platform::classNameOf(self)) + " -" +
                               platform::selectorName(cmd) + " opens the photo library");
  app().libraryShown = true;
}

// ---- CAMImageWell: a control that sends its actions on touch-up ----

struct WellState {
  id target = nullptr;  // not retained, as UIControl keeps its targets
  SEL action = nullptr;
};
void wellAddTarget(id self, SEL, id target, SEL action, unsigned long) {
  stateOf<WellState>(self) = WellState{target, action};
}
void wellSendActions(id self, SEL, unsigned long events) {
  const WellState& w = stateOf<WellState>(self);
  if ((events & kTouchUpInside) != 0 && w.target != nullptr) sendAction(w.target, w.action, self);
}

// ---- UIPreviewInteractionController ----

BOOL previewStart(id, SEL, id gesture) {
  host::logEvent("camera", "preview of the last photo (" +
                               std::string(platform::classNameOf(send<id>(gesture, Sel("view")))) +
                               ")");
  app().previewShown = true;
  return 1;
}
// The press recognised on the view: the preview begins.
void previewGesture(id self, SEL, id gesture) {
  send<BOOL>(self, kStartPreview, gesture);
}

// ---- The camera's screen ----

void startCamera() {
  CameraAppState& s = app();
  platform::AutoreleasePool pool;
  CGRect bounds = screenBounds();
  s.window = Retained::adopt(newView("UIWindow", bounds));
  s.imageWell =
      Retained::adopt(newView("CAMImageWell", CGRect{{16, bounds.size.height - 80}, {56, 56}}));
  id container = nullptr;
  SEL handler = nullptr;
  if (cataloguedHere("CAMViewfinderViewController")) {
    s.owner = Retained::adopt(host::newObject(platform::classNamed("CAMViewfinderViewController")));
    send<void>(s.window.get(), Sel("setRootViewController:"), s.owner.get());
    container = send<id>(s.owner.get(), Sel("view"));
    // iOS 11 opens the library when the finger leaves the well.
    handler = cataloguedHere("CAMViewfinderViewController", "-_handleImageWellTapped:")
                  ? Sel("_handleImageWellTapped:")
                  : Sel("_handleImageWellReleased:");
  } else {
    s.owner = Retained::adopt(newView("CAMCameraView", bounds));
    send<void>(s.window.get(), Sel("addSubview:"), s.owner.get());
    container = s.owner.get();
    handler = Sel("_imageWellTapped:");
  }
  send<void>(container, Sel("addSubview:"), s.imageWell.get());
  send<void>(s.imageWell.get(), kAddTarget, s.owner.get(), handler, kTouchUpInside);
  if (Class previewClass = platform::classNamed("UIPreviewInteractionController")) {
    s.preview = Retained::adopt(host::newObject(previewClass));
    Retained press = Retained::adopt(send<id>(
        platform::sendClass<id>(platform::classNamed("UIGestureRecognizer"), Sel("alloc")),
        Sel("initWithTarget:action:"), s.preview.get(), static_cast<SEL>(kHandlePreviewGesture)));
    send<void>(s.imageWell.get(), Sel("addGestureRecognizer:"), press.get());
  }
  send<void>(s.window.get(), Sel("makeKeyAndVisible"));
  host::logEvent("camera", std::string("viewfinder with the image well on ") +
                               platform::classNameOf(s.owner.get()));
}

// image-well tap | image-well press
Value imageWellAction(const host::ActionRequest& request, std::string* error) {
  CameraAppState& s = app();
  if (!s.imageWell) {
    *error = "the camera shows no image well";
    return {};
  }
  if (request.args[0] == "tap") {
    send<void>(s.imageWell.get(), kSendActions, kTouchUpInside);
    return {};
  }
  if (request.args[0] == "press") {
    id press = platform::arrayObjectAt(send<id>(s.imageWell.get(), Sel("gestureRecognizers")), 0);
    if (press == nullptr) {
      *error = "no press peeks on iOS " + std::to_string(system().major);
      return {};
    }
    recognizeGesture(press);
    return {};
  }
  *error = "expected image-well tap|press";
  return {};
}

// The person leaves the photo library (or the preview) for the viewfinder.
Value closeLibraryAction(const host::ActionRequest&, std::string* error) {
  CameraAppState& s = app();
  if (!s.libraryShown && !s.previewShown) {
    *error = "neither the photo library nor a preview shows";
    return {};
  }
  s.libraryShown = false;
  s.previewShown = false;
  host::logEvent("camera", "back to the viewfinder");
  return {};
}

}  // namespace

void defineCameraApp() {
  defineCatalogued("UIButton");
  ClassBuilder well("CAMImageWell", "UIButton");
  well.instance("addTarget:action:forControlEvents:", imp(wellAddTarget), "v@:@:Q")
      .instance("sendActionsForControlEvents:", imp(wellSendActions), "v@:Q")
      .build();
  if (cataloguedHere("CAMViewfinderViewController")) {
    ClassBuilder viewfinder("CAMViewfinderViewController", "UIViewController");
    addCatalogued(viewfinder, "-_handleImageWellTapped:", imp(openPhotoLibrary));
    addCatalogued(viewfinder, "-_handleImageWellReleased:", imp(openPhotoLibrary));
    viewfinder.build();
  }
  if (cataloguedHere("CAMCameraView")) {
    ClassBuilder cameraView("CAMCameraView", "UIView");
    addCatalogued(cameraView, "-_imageWellTapped:", imp(openPhotoLibrary));
    cameraView.build();
  }
  if (cataloguedHere("UIPreviewInteractionController")) {
    ClassBuilder preview("UIPreviewInteractionController", "NSObject");
    addCatalogued(preview, "-startInteractivePreviewWithGestureRecognizer:", imp(previewStart));
    preview.instance("_handlePreviewGesture:", imp(previewGesture), "v@:@").build();
  }
  host::registerAction("image-well", imageWellAction);
  host::registerAction("close-library", closeLibraryAction);
  host::registerQuery("camera", [](const std::vector<std::string>&) {
    return Value::dictionary({{"photoLibrary", Value::boolean(app().libraryShown)},
                              {"preview", Value::boolean(app().previewShown)}});
  });
}

void startCameraApp() {
  startCamera();
}

}  // namespace kv::sim::frameworks
