// The prompt's motion: idle animations, scanner sweep, shake, glyph states.
#include "prompt/animations.h"

#include <cmath>

#include "base/flags.h"
#include "base/hardware.h"
#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/geometry.h"
#include "platform/runtime.h"
#include "prompt/selectors.h"

namespace kv::prompt {

namespace {

using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendClass;

// ---- Glyph states ----

struct GlyphStep {
  Integer state;
  bool animated;
  bool plainOnIOS11;  // on iOS 11 a plain setState: instead
};
struct GlyphRow {
  GlyphMethod method;
  GlyphStep withoutFaceCamera;
  GlyphStep withFaceCamera;
};
constexpr GlyphRow kGlyphStates[] = {
    {GlyphMethod::kShowScanner, {1, false, false}, {5, false, false}},
    {GlyphMethod::kReAddAnimations, {0, true, true}, {2, true, false}},
    {GlyphMethod::kResetAnimations, {0, true, true}, {4, true, false}},
    {GlyphMethod::kShowError, {0, true, true}, {4, true, false}},
    {GlyphMethod::kKillAnimations, {0, true, false}, {4, true, false}},
};
constexpr GlyphStep kReducedError{3, true, false};

// Through setState:animated:completionHandler: with no completion, unless
// the step asks for a plain setState:.
void apply(id glyph, const GlyphStep& step) {
  if (glyph == nullptr) return;
  if (step.plainOnIOS11 && base::flags().isIOS11) {
    send<void>(glyph, sel::kSetState, step.state);
  } else {
    send<void>(glyph, sel::kSetStateAnimated, step.state, BOOL{step.animated}, id{nullptr});
  }
}

// ---- Layer animations ----

// One basic animation, repeating without end.
struct Motion {
  const char* key;
  const char* keyPath;
  double from;
  double to;
  double duration;
  bool autoreverses;
};

struct IdleAnimation {
  Retained AlertViewState::*view;
  Motion motion;
};
constexpr IdleAnimation kIdleAnimations[] = {
    {&AlertViewState::circle, {"MyAnimation", "transform.rotation.z", 0, 6.2831855, 7.0, false}},
    {&AlertViewState::thumb, {"MyAnimation2", "opacity", 0.0, 1.0, 0.8, true}},
};

// The scanner sweep runs on ghostView. The second motion goes under the same
// key, so it takes the first one's place: the strip sweeps from 60 to 0.
constexpr Motion kSweep[] = {
    {"transform.translation.y", "transform.translation.y", -60, 60, 0.5, true},
    {"transform.translation.y", "transform.translation.y", 60, 0, 0.5, true},
};

const Sel kSetSpeed("setSpeed:"), kRemoveAllAnimations("removeAllAnimations");

constexpr double kScannerFade = 0.3;
constexpr double kShakeDuration = 0.1;
constexpr double kShakeDistance = 10;  // points to the side

id layerOf(const Retained& view) {
  return send<id>(view.get(), sel::kLayer);
}

void addMotion(id layer, const Motion& m) {
  static const Sel kAnimationWithKeyPath("animationWithKeyPath:"), kSetFromValue("setFromValue:");
  static const Sel kSetToValue("setToValue:"), kSetDuration("setDuration:");
  static const Sel kSetRepeatCount("setRepeatCount:"), kSetAutoreverses("setAutoreverses:");
  static const Sel kAddAnimation("addAnimation:forKey:");
  if (layer == nullptr) return;
  id animation = sendClass<id>(platform::classNamed("CABasicAnimation"), kAnimationWithKeyPath,
                               platform::makeString(m.keyPath));
  send<void>(animation, kSetFromValue, platform::makeReal(m.from));
  send<void>(animation, kSetToValue, platform::makeReal(m.to));
  send<void>(animation, kSetDuration, m.duration);
  send<void>(animation, kSetRepeatCount, HUGE_VALF);
  send<void>(animation, kSetAutoreverses, BOOL{m.autoreverses});
  send<void>(layer, kAddAnimation, animation, platform::makeString(m.key));
}

// Stops a layer's clock where it stands.
void freeze(id layer) {
  static const Sel kConvertTime("convertTime:fromLayer:"), kSetTimeOffset("setTimeOffset:");
  double now = send<double>(layer, kConvertTime, CACurrentMediaTime(), id{nullptr});
  send<void>(layer, kSetSpeed, 0.0f);
  send<void>(layer, kSetTimeOffset, now);
}

}  // namespace

void setGlyphState(const AlertViewState& s, GlyphMethod method) {
  for (const auto& row : kGlyphStates) {
    if (row.method != method) continue;
    apply(s.glyphView.get(),
          base::faceCameraPresent() ? row.withFaceCamera : row.withoutFaceCamera);
    return;
  }
}

void setReducedErrorGlyphState(const AlertViewState& s) {
  apply(s.glyphView.get(), kReducedError);
}

void addIdleAnimations(const AlertViewState& s) {
  for (const auto& idle : kIdleAnimations) addMotion(layerOf(s.*idle.view), idle.motion);
}

void startScannerMotion(AlertViewState& s) {
  // Show the fingerprint, freeze its pulse, fade the alphas in.
  s.isAnimating = true;
  id fingerprintLayer = layerOf(s.thumb);
  send<void>(fingerprintLayer, kRemoveAllAnimations);
  if (fingerprintLayer != nullptr) freeze(fingerprintLayer);
  Retained circle = s.circle, thumb = s.thumb, thumbRed = s.thumbRed;
  sendClass<void>(platform::classNamed("UIView"), sel::kAnimateWithDuration, kScannerFade,
                  platform::asObject(^{
                    send<void>(circle.get(), sel::kSetAlpha, 1.0);
                    send<void>(thumb.get(), sel::kSetAlpha, 1.0);
                    send<void>(thumbRed.get(), sel::kSetAlpha, 0.0);
                  }));
  // The sweep.
  for (const auto& motion : kSweep) addMotion(layerOf(s.ghostView), motion);
}

void unfreezeFingerprint(const AlertViewState& s) {
  send<void>(layerOf(s.thumb), kSetSpeed, 1.0f);
}

void removeAnimations(const AlertViewState& s) {
  for (const Retained* view : {&s.circle, &s.thumb, &s.thumbRed, &s.ghostView}) {
    send<void>(layerOf(*view), kRemoveAllAnimations);
  }
}

void shake(id container) {
  if (container == nullptr) return;
  CGRect home = send<CGRect>(container, sel::kFrame);
  CGRect aside = home;
  aside.origin.x += kShakeDistance;
  Retained view(container);
  sendClass<void>(platform::classNamed("UIView"), sel::kAnimateWithCompletion, kShakeDuration,
                  platform::asObject(^{
                    send<void>(view.get(), sel::kSetFrame, aside);
                  }),
                  platform::asObject(^(BOOL) {
                    send<void>(view.get(), sel::kSetFrame, home);
                  }));
}

}  // namespace kv::prompt
