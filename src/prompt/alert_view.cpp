// KavelinAlertView as the runtime knows it: the interface methods and the
// property accessors over the instance's C++ state, which goes with dealloc.
#include "prompt/alert_view.h"

#include "platform/classes.h"
#include "platform/runtime.h"
#include "prompt/alert_state.h"
#include "prompt/methods.h"

namespace kv::prompt {

namespace {

using platform::method;
using platform::Retained;
using S = AlertViewState;

template <Retained S::*Field>
id getObject(id self, SEL) {
  return (stateOf(self).*Field).get();
}
template <Retained S::*Field>
void setObject(id self, SEL, id value) {
  (stateOf(self).*Field).reset(value);
}
template <bool S::*Field>
BOOL getFlag(id self, SEL) {
  return stateOf(self).*Field ? 1 : 0;
}
template <bool S::*Field>
void setFlag(id self, SEL, BOOL value) {
  stateOf(self).*Field = value != 0;
}

// `inRestrictTitle` is a string property: it keeps a copy.
void setInRestrictTitle(id self, SEL, id title) {
  static const platform::Sel kCopy("copy");
  stateOf(self).inRestrictTitle = Retained::adopt(platform::send<id>(title, kCopy));
}

void dealloc(id self, SEL cmd) {
  forgetState(self);
  platform::sendSuper<void>(platform::classNamed("UIAlertView"), self, cmd);
}

}  // namespace

void defineAlertView() {
  platform::defineClass(
      kAlertViewClass, "UIAlertView",
      {
          method("show", show),
          method("reAddAnimations", reAddAnimations),
          method("resetAnimations", resetAnimations),
          method("showScanner", showScanner),
          method("showError", showError),
          method("showPasscodeError", showPasscodeError),
          method("hideCircleAndShowPasscodeField", hideCircleAndShowPasscodeField),
          method("killAnimations", killAnimations),
          method("_prepareToDismissForTappedIndex:", prepareToDismissForTappedIndex),
          method("modalItem:shouldDismissForButtonAtIndex:", shouldDismissForButtonAtIndex),
          method("dealloc", dealloc),

          method("circle", getObject<&S::circle>),
          method("setCircle:", setObject<&S::circle>),
          method("thumb", getObject<&S::thumb>),
          method("setThumb:", setObject<&S::thumb>),
          method("thumbRed", getObject<&S::thumbRed>),
          method("setThumbRed:", setObject<&S::thumbRed>),
          method("ghostView", getObject<&S::ghostView>),
          method("setGhostView:", setObject<&S::ghostView>),
          method("glyphView", getObject<&S::glyphView>),
          method("setGlyphView:", setObject<&S::glyphView>),
          method("passcodeField", getObject<&S::passcodeField>),
          method("setPasscodeField:", setObject<&S::passcodeField>),
          method("textLabel", getObject<&S::textLabel>),
          method("setTextLabel:", setObject<&S::textLabel>),
          // Accessors only: the prompt itself never shows these two.
          method("restrictedLabel", getObject<&S::restrictedLabel>),
          method("setRestrictedLabel:", setObject<&S::restrictedLabel>),
          method("restrictedIcon", getObject<&S::restrictedIcon>),
          method("setRestrictedIcon:", setObject<&S::restrictedIcon>),
          method("inRestrictTitle", getObject<&S::inRestrictTitle>),
          method("setInRestrictTitle:", setInRestrictTitle),
          method("isAnimating", getFlag<&S::isAnimating>),
          method("setIsAnimating:", setFlag<&S::isAnimating>),
          method("viewAppeared", getFlag<&S::viewAppeared>),
          method("setViewAppeared:", setFlag<&S::viewAppeared>),
          method("wasPasscodeVisible", getFlag<&S::wasPasscodeVisible>),
          method("setWasPasscodeVisible:", setFlag<&S::wasPasscodeVisible>),
      });
}

}  // namespace kv::prompt
