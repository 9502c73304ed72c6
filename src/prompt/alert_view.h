// KavelinAlertView, the prompt the coordinator puts up for a protected
// action: a UIAlertView whose body shows the fingerprint in its ring or the
// PassKit glyph, the protected item's name and a passcode field. The class
// is registered with the runtime at start-up; the coordinator works it by
// messages (show, showScanner, showError, showPasscodeError, killAnimations,
// resetAnimations, the property accessors). These are the C++ helpers that
// go with it.
#pragma once

#include "platform/objc.h"
#include "prompt/texts.h"

namespace kv::prompt {

inline constexpr const char* kAlertViewClass = "KavelinAlertView";

// Registers KavelinAlertView as a subclass of UIAlertView (once). Without
// UIAlertView nothing is registered, and the class stays missing.
void defineAlertView();

// The view the prompt's own content goes into: "alertController" → view →
// "contentView" → superview where the alert has an alert controller, else
// "_representedModalItem" → "_representedView". nil when neither leads to a
// view (the alert then shows as a plain alert).
id contentContainer(id alert);

// The further glyph flag: when raised, showError on a device with the face
// camera only moves the glyph to state 3. The coordinator raises and lowers
// it; the prompt never does. Lowered at start.
void setFurtherGlyphFlag(bool raised);
bool furtherGlyphFlag();

}  // namespace kv::prompt
