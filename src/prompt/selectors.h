// The selectors the prompt's files send, each written once.
#pragma once

#include "platform/runtime.h"

namespace kv::prompt::sel {

using platform::Sel;

// Objects and classes.
inline const Sel kAlloc("alloc");
inline const Sel kInitWithFrame("initWithFrame:");
inline const Sel kPerformSelectorWithObjectAfterDelay("performSelector:withObject:afterDelay:");

// Views.
inline const Sel kView("view");
inline const Sel kText("text");
inline const Sel kAlpha("alpha");
inline const Sel kSetAlpha("setAlpha:");
inline const Sel kFrame("frame");
inline const Sel kSetFrame("setFrame:");
inline const Sel kBounds("bounds");
inline const Sel kSuperview("superview");
inline const Sel kAddSubview("addSubview:");
inline const Sel kRemoveFromSuperview("removeFromSuperview");
inline const Sel kLayer("layer");
inline const Sel kAnimateWithDuration("animateWithDuration:animations:");
inline const Sel kAnimateWithCompletion("animateWithDuration:animations:completion:");

// The glyph.
inline const Sel kGlyphView("glyphView");
inline const Sel kSetState("setState:");
inline const Sel kSetStateAnimated("setState:animated:completionHandler:");

// The prompt's own interface, as it messages itself.
inline const Sel kReAddAnimations("reAddAnimations");
inline const Sel kKillAnimations("killAnimations");
inline const Sel kHideCircleAndShowPasscodeField("hideCircleAndShowPasscodeField");
inline const Sel kPasscodeField("passcodeField");
inline const Sel kUpdateKavelinAlert("updateKavelinAlert");

}  // namespace kv::prompt::sel
