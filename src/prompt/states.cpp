// The biometric face's states: idle, scanning, error, passcode entry. Passcode
// entry is terminal: once the field shows, the ring, fingerprint and glyph
// stay hidden until the prompt is dismissed, so nothing here brings them back.
#include "base/hardware.h"
#include "platform/runtime.h"
#include "prompt/alert_view.h"
#include "prompt/animations.h"
#include "prompt/methods.h"
#include "prompt/selectors.h"

namespace kv::prompt {

namespace {

using platform::send;

bool furtherGlyphRaised = false;

bool usesGlyph(const AlertViewState& s) {
  return static_cast<bool>(s.glyphView);
}

}  // namespace

void setFurtherGlyphFlag(bool raised) {
  furtherGlyphRaised = raised;
}
bool furtherGlyphFlag() {
  return furtherGlyphRaised;
}

void startIdleAnimations(const AlertViewState& s) {
  if (passcodeFieldShowing(s)) return;
  if (usesGlyph(s)) {
    setGlyphState(s, GlyphMethod::kReAddAnimations);
  } else {
    addIdleAnimations(s);
  }
}

void reAddAnimations(id self, SEL) {
  startIdleAnimations(stateOf(self));
}

void resetAnimations(id self, SEL) {
  const AlertViewState& s = stateOf(self);
  if (passcodeFieldShowing(s)) return;
  if (usesGlyph(s)) {
    setGlyphState(s, GlyphMethod::kResetAnimations);
    return;
  }
  unfreezeFingerprint(s);
  addIdleAnimations(s);
}

void showScanner(id self, SEL) {
  AlertViewState& s = stateOf(self);
  if (passcodeFieldShowing(s)) return;
  // The glyph scans.
  if (usesGlyph(s)) {
    setGlyphState(s, GlyphMethod::kShowScanner);
    s.isAnimating = true;
    return;
  }
  // The ring look's fingerprint and sweep.
  startScannerMotion(s);
}

void showError(id self, SEL) {
  const AlertViewState& s = stateOf(self);
  // The glyph's error state, then the shake; with the further glyph flag
  // on a face-camera device, state 3 alone.
  if (usesGlyph(s)) {
    if (base::faceCameraPresent() && furtherGlyphFlag()) {
      setReducedErrorGlyphState(s);
      return;
    }
    setGlyphState(s, GlyphMethod::kShowError);
    shake(contentContainer(self));
    return;
  }
  // Idle animations back at full speed, the red fingerprint over the
  // fingerprint, the shake.
  unfreezeFingerprint(s);
  addIdleAnimations(s);
  send<void>(s.thumbRed.get(), sel::kSetAlpha, 1.0);
  shake(contentContainer(self));
}

void showPasscodeError(id self, SEL) {
  // The field shows, even if it did not.
  send<void>(self, sel::kHideCircleAndShowPasscodeField);
  // The shake.
  shake(contentContainer(self));
}

void hideCircleAndShowPasscodeField(id self, SEL) {
  static const platform::Sel kBecomeFirstResponder("becomeFirstResponder");
  // 1.
  send<void>(self, sel::kKillAnimations);
  // 2.
  const AlertViewState& s = stateOf(self);
  for (const platform::Retained* view : {&s.circle, &s.thumb, &s.thumbRed, &s.glyphView}) {
    send<void>(view->get(), sel::kSetAlpha, 0.0);
  }
  send<void>(s.passcodeField.get(), sel::kSetAlpha, 1.0);
  // The keyboard comes up.
  send<BOOL>(s.passcodeField.get(), kBecomeFirstResponder);
}

void killAnimations(id self, SEL) {
  AlertViewState& s = stateOf(self);
  setGlyphState(s, GlyphMethod::kKillAnimations);
  removeAnimations(s);
  s.isAnimating = false;  // the scanner motion is stopped with the rest
}

}  // namespace kv::prompt
