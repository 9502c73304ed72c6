// The platform's dismissal hooks: the second button (index 1, "Enter
// passcode") never closes the prompt, it switches to passcode entry; every
// other button goes to UIAlertView, which dismisses and tells the delegate.
// Systems before iOS 10 ask _prepareToDismissForTappedIndex:, later ones the
// modal item's delegate (the alert) modalItem:shouldDismissForButtonAtIndex:.
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "prompt/methods.h"
#include "prompt/selectors.h"
#include "prompt/texts.h"

namespace kv::prompt {

namespace {

using platform::Integer;
using platform::Sel;
using platform::send;

constexpr Integer kPasscodeButton = 1;

// 1.1. Below full alpha the field is not yet the prompt's face: the body asks
// for the passcode and the field comes up.
void askForPasscode(id self) {
  static const Sel kSetBodyText("setBodyText:"), kSetMessage("setMessage:");
  if (send<double>(stateOf(self).passcodeField.get(), sel::kAlpha) >= 1.0) return;
  const Sel& setter = platform::respondsTo(self, kSetBodyText) ? kSetBodyText : kSetMessage;
  send<void>(self, setter, platform::makeString(passcodeBody()));
  send<void>(self, sel::kHideCircleAndShowPasscodeField);
}

// UIAlertView's own answer; YES (dismiss) where it has no such method.
template <typename... A>
BOOL platformAnswer(id self, SEL cmd, A... args) {
  Class base = platform::classNamed("UIAlertView");
  if (!platform::instancesRespondTo(base, cmd)) return 1;
  return platform::sendSuper<BOOL>(base, self, cmd, args...);
}

}  // namespace

BOOL prepareToDismissForTappedIndex(id self, SEL cmd, Integer index) {
  if (index != kPasscodeButton) return platformAnswer(self, cmd, index);
  askForPasscode(self);
  return 0;
}

BOOL shouldDismissForButtonAtIndex(id self, SEL cmd, id modalItem, Integer index) {
  if (index != kPasscodeButton) return platformAnswer(self, cmd, modalItem, index);
  askForPasscode(self);
  return 0;
}

}  // namespace kv::prompt
