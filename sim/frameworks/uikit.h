// The simulated UIKit, Core Animation, PassKit glyph and passcode field as
// other simulated frameworks and the scenario actions use them: views and
// their hierarchy, the first responder and keyboard, and the alerts on screen.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/encoding.h"
#include "platform/geometry.h"
#include "platform/objc.h"
#include "platform/value.h"

// Core Animation's 3-D transform, passed by value to and from CALayer.
struct CATransform3D {
  CGFloat m11, m12, m13, m14, m21, m22, m23, m24, m31, m32, m33, m34, m41, m42, m43, m44;
};
KV_STRUCT_ENCODING(CATransform3D, "{CATransform3D=dddddddddddddddd}");

namespace kv::sim::frameworks {

// Sends a target-action message as UIKit does: with the sender when the
// action takes an argument ("action:"), without one otherwise.
void sendAction(id target, SEL action, id sender);

// The modules' class definitions, called by defineFrameworks in this order.
void defineUIKit();
void defineAlertViews();
void definePassKit();
void definePasscodeField();

// The method encoding an IMP's C signature stands for ("v@:d@?" for
// void f(id, SEL, double, void (^)(void))).
template <typename R, typename... A>
std::string typesOf(R (*)(id, SEL, A...)) {
  return platform::methodEncoding<R, A...>();
}

// ---- Views ----

// A new view of class `className` (UIView or a subclass) made with
// initWithFrame:; the caller owns it. nil when the class does not exist.
id newView(const char* className, CGRect frame);

// The subviews of `view`, back to front; its superview (nil when none).
std::vector<id> subviewsOf(id view);
id superviewOf(id view);

// The first view of kind `className` below `root` (depth first, back to
// front, `root` itself excluded), or nil.
id findSubview(id root, const char* className);

// Visits every view below `root` depth first; `visit` answers false to skip
// the views below the one it was given.
void visitSubviews(id root, const std::function<bool(id view)>& visit);

// An autoreleased NSArray of `items` (nil entries skipped).
id arrayOf(const std::vector<id>& items);

// `text` in double quotes for an event line, with quotes, backslashes and
// line breaks escaped (\", \\, \n), so that one event stays one line.
std::string quoteForLog(const std::string& text);

// Called whenever something a person could see of a view changes (alpha,
// hidden, text, image, glyph state, subviews). One observer per process.
void setViewChangeObserver(std::function<void(id view)> observer);
void noteViewChanged(id view);

// Sends a gesture recognizer's action to its targets as a recognised gesture
// (state 3, ended): a tap on the view it is attached to.
void recognizeGesture(id recognizer);

// ---- Images ----

// The name an image was loaded under ("circle-white" for "circle-white",
// ".../circle-white@2x.png" or imageNamed:@"circle-white" inBundle:), "" for nil.
std::string imageNameOf(id image);
// The file an image was read from (device path), "" for nil.
std::string imagePathOf(id image);

// An autoreleased image made in this process (drawn into an image context,
// filtered, or a stand-in for an app's screen) of that size and scale, which
// shows `drawing` ("text \"Kavelined\" ...", "blurred snapshot of X").
id makeImage(CGSize size, double scale, const std::string& drawing);
// What such an image shows, "" for nil or an image read from a file.
std::string imageDrawingOf(id image);

// A colour as six hex digits ("305a94"), "" for nil.
std::string colorHexOf(id color);

// ---- First responder and keyboard ----

// The process's first responder, or nil.
id firstResponder();
// True while the keyboard is up (a text-input responder is first responder).
bool keyboardVisible();
// Where the keyboard stands on the screen while it is up.
CGRect keyboardFrameOnScreen();

// ---- Alerts ----

// The visible alerts of this process, bottom to top.
std::vector<id> visibleAlerts();

// The topmost visible alert of kind `className` (any alert for nullptr), or nil.
id topmostAlert(const char* className = nullptr);

// The view an alert's extra content is added to, found the way this iOS
// version exposes it (key-value coding, as the library finds it), or nil.
id alertContainer(id alert);

// A person's tap on button `index` of a visible alert, through the
// platform's dismissal path. False with *error when there is no such button.
bool tapAlertButton(id alert, long index, std::string* error);

// The system cancels every visible alert (alertViewCancel: to delegates),
// as when the device locks.
void cancelAllAlerts();

// What a person sees of an alert's extra content, as the "prompt" event
// shows it, images first, then glyphs, labels and passcode fields:
// "image circle-white alpha 1 [MyAnimation], glyph style 1 state 0 colors
// 333333/999999 alpha 1, label \"Notes\" alpha 1, passcode field alpha 0";
// "" when it has none.
std::string describeAlertContent(id alert);

// Types `digits` into the visible Kavelin prompt's passcode field as the
// keyboard does (one insertText: per key, running due work between keys).
// False with *error when no prompt shows its field with the keyboard up.
bool typePromptPasscode(const std::string& digits, std::string* error);

// The answer of the "prompt" query about the topmost visible Kavelin prompt:
// {"visible", "title" (its first label's text), "message", "passcodeField"
// (a passcode field with alpha above 0)}; {"visible": false} when none.
platform::Value promptInfo();

}  // namespace kv::sim::frameworks
