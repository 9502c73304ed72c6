// Presenting the prompt: the alert goes up, then its content is built into
// the alert's content container, in the order the steps below are numbered.
#include "base/flags.h"
#include "core/controller.h"
#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/geometry.h"
#include "platform/runtime.h"
#include "prompt/alert_view.h"
#include "prompt/item_line.h"
#include "prompt/looks.h"
#include "prompt/methods.h"
#include "prompt/selectors.h"
#include "settings/settings.h"

namespace kv::prompt {

namespace {

using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendClass;

constexpr const char* kPassKitPath = "/System/Library/Frameworks/PassKit.framework";
constexpr Integer kEntryFields = 4;
constexpr double kFieldTop = 147;
constexpr double kFieldHeight = 33.4;
constexpr double kDeferredDelay = 0.1;

void loadPassKit() {
  static const Sel kBundleWithPath("bundleWithPath:"), kIsLoaded("isLoaded"), kLoad("load");
  id bundle = sendClass<id>(platform::classNamed("NSBundle"), kBundleWithPath,
                            platform::makeString(kPassKitPath));
  if (bundle != nullptr && !send<BOOL>(bundle, kIsLoaded)) send<BOOL>(bundle, kLoad);
}

// Takes the views of an earlier presentation out, so that a second show
// builds one face, not two.
void removeContent(AlertViewState& s) {
  for (Retained* view : {&s.circle, &s.thumb, &s.thumbRed, &s.ghostView, &s.glyphView, &s.textLabel,
                         &s.passcodeField}) {
    send<void>(view->get(), sel::kRemoveFromSuperview);
    view->reset();
  }
}

void addPasscodeField(id self, AlertViewState& s, id container) {
  static const Sel kInitWithFields("initWithNumberOfEntryFields:"), kSetDelegate("setDelegate:");
  static const Sel kSetupKBWatcher("_setupKBWatcher");
  s.passcodeField =
      Retained::adopt(send<id>(sendClass<id>(platform::classNamed("PSPasscodeField"), sel::kAlloc),
                               kInitWithFields, kEntryFields));
  id field = s.passcodeField.get();
  CGRect own = send<CGRect>(field, sel::kFrame);
  CGRect bounds = send<CGRect>(container, sel::kBounds);
  send<void>(field, sel::kSetFrame,
             platform::makeRect((bounds.size.width - own.size.width) / 2, kFieldTop, own.size.width,
                                kFieldHeight));
  // A device without biometric hardware starts at passcode entry.
  send<void>(field, sel::kSetAlpha, settings::current().biometricsInUse ? 0.0 : 1.0);
  if (!base::flags().isIOS8OrLater && platform::respondsTo(self, kSetupKBWatcher)) {
    send<void>(self, kSetupKBWatcher);
  }
  send<void>(field, kSetDelegate, core::controller());
  send<void>(container, sel::kAddSubview, field);
}

// True unless UIKit has animations switched off.
bool animationsEnabled() {
  static const Sel kAreAnimationsEnabled("areAnimationsEnabled");
  id view = platform::asId(platform::classNamed("UIView"));
  return !platform::respondsTo(view, kAreAnimationsEnabled) ||
         send<BOOL>(view, kAreAnimationsEnabled);
}

// The system may have rebuilt the alert's views: the glyph goes back into the
// content container.
void reattachGlyph(id alert) {
  id glyph = stateOf(alert).glyphView.get();
  id container = contentContainer(alert);
  if (glyph == nullptr || container == nullptr) return;
  if (send<id>(glyph, sel::kSuperview) != container) send<void>(container, sel::kAddSubview, glyph);
}

}  // namespace

void show(id self, SEL cmd) {
  static const Sel kIsVisible("isVisible"),
      kPerformAfterDelay("performSelector:withObject:afterDelay:");
  AlertViewState& s = stateOf(self);

  // Remember the face, then the alert goes up.
  s.wasPasscodeVisible = passcodeFieldShowing(s);
  platform::sendSuper<void>(platform::classNamed("UIAlertView"), self, cmd);
  s.viewAppeared = s.viewAppeared || send<BOOL>(self, kIsVisible);

  // Where the content goes.
  id container = contentContainer(self);

  // PassKit, for the glyph.
  loadPassKit();

  // Ring and fingerprint, or the glyph.
  removeContent(s);
  buildLook(s, chooseLook(), container);

  // The item line.
  addItemLine(s, container);

  // The passcode field; without biometric hardware, or when the field
  // showed before, the prompt opens at passcode entry.
  addPasscodeField(self, s, container);
  if (passcodeFieldShowing(s) || s.wasPasscodeVisible)
    send<void>(self, sel::kHideCircleAndShowPasscodeField);

  // Idle animations, and the deferred repairs.
  if (!s.isAnimating && animationsEnabled()) startIdleAnimations(s);
  send<void>(self, kPerformAfterDelay, sel::kReAddAnimations, id{nullptr}, kDeferredDelay);
  Retained keep(self);
  dispatch_after(
      dispatch_time(DISPATCH_TIME_NOW, static_cast<int64_t>(kDeferredDelay * NSEC_PER_SEC)),
      dispatch_get_main_queue(), ^{
        reattachGlyph(keep.get());
      });
}

}  // namespace kv::prompt
