// UIKit's process-wide parts: the responder chain's first responder and the
// keyboard it brings, the application object, the device and the screen.
#include "sim/frameworks/uikit.h"

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"
#include "sim/host/profile.h"

namespace kv::sim::frameworks {

void defineCoreAnimation();
void defineUIKitGraphics();
void defineUIKitDrawing();
void defineUIKitViews();
void defineUIKitControls();
void defineUIKitGestures();
void defineUIKitTargetAction();
void defineUIKitControllers();

using host::ClassBuilder;
using host::imp;
using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendSuper;

namespace {

// ---- First responder and keyboard ----

id gFirstResponder = nullptr;  // not retained: a responder clears it when it goes
bool gKeyboardUp = false;
bool gHandingOverToTextInput = false;

bool isTextInput(id responder) {
  return platform::respondsTo(responder, Sel("insertText:"));
}

CGRect screenBounds() {
  if (system().ipad) return platform::makeRect(0, 0, 768, 1024);
  if (system().biometrics == "faceid") return platform::makeRect(0, 0, 375, 812);
  return platform::makeRect(0, 0, 375, 667);
}

CGRect keyboardFrame() {
  CGRect screen = screenBounds();
  double height = system().ipad ? 264 : 216;
  return platform::makeRect(0, screen.size.height - height, screen.size.width, height);
}

// Posts one of the keyboard's notifications on the default centre, with the
// keyboard's end frame and animation duration, as UIKit does.
void postKeyboardNotification(const char* name, bool showing) {
  CGRect end = keyboardFrame();
  if (!showing) end.origin.y = screenBounds().size.height;
  id frame =
      platform::sendClass<id>(platform::classNamed("NSValue"), Sel("valueWithBytes:objCType:"),
                              static_cast<const void*>(&end), "{CGRect={CGPoint=dd}{CGSize=dd}}");
  id info = platform::sendClass<id>(platform::classNamed("NSMutableDictionary"), Sel("dictionary"));
  send<void>(info, Sel("setObject:forKey:"), frame,
             platform::makeString("UIKeyboardFrameEndUserInfoKey"));
  send<void>(info, Sel("setObject:forKey:"), platform::makeReal(0.25),
             platform::makeString("UIKeyboardAnimationDurationUserInfoKey"));
  id center =
      platform::sendClass<id>(platform::classNamed("NSNotificationCenter"), Sel("defaultCenter"));
  send<void>(center, Sel("postNotificationName:object:userInfo:"), platform::makeString(name),
             id{nullptr}, info);
}

void setKeyboard(bool up) {
  if (gKeyboardUp == up) return;
  postKeyboardNotification(up ? "UIKeyboardWillShowNotification" : "UIKeyboardWillHideNotification",
                           up);
  gKeyboardUp = up;
  host::logEvent("keyboard", up ? "shown" : "hidden");
  postKeyboardNotification(up ? "UIKeyboardDidShowNotification" : "UIKeyboardDidHideNotification",
                           up);
}

BOOL canBecomeFirstResponder(id, SEL) {
  return 0;
}
BOOL canResignFirstResponder(id, SEL) {
  return 1;
}
BOOL isFirstResponder(id self, SEL) {
  return self == gFirstResponder ? 1 : 0;
}

BOOL becomeFirstResponder(id self, SEL) {
  if (gFirstResponder == self) return 1;
  if (!send<BOOL>(self, Sel("canBecomeFirstResponder"))) return 0;
  if (gFirstResponder != nullptr) {
    gHandingOverToTextInput = isTextInput(self);
    BOOL resigned = send<BOOL>(gFirstResponder, Sel("resignFirstResponder"));
    gHandingOverToTextInput = false;
    if (!resigned) return 0;
  }
  gFirstResponder = self;
  if (isTextInput(self)) setKeyboard(true);
  return 1;
}

BOOL resignFirstResponder(id self, SEL) {
  if (gFirstResponder != self) return 1;
  if (!send<BOOL>(self, Sel("canResignFirstResponder"))) return 0;
  gFirstResponder = nullptr;
  if (!gHandingOverToTextInput) setKeyboard(false);
  return 1;
}

id nextResponder(id self, SEL) {
  return platform::respondsTo(self, Sel("superview")) ? send<id>(self, Sel("superview")) : nullptr;
}

// Every simulated UIKit object ends here: the first responder forgets it,
// then its C++ state goes, then NSObject frees it.
void responderDealloc(id self, SEL cmd) {
  if (gFirstResponder == self) {
    gFirstResponder = nullptr;
    setKeyboard(false);
  }
  sendSuper<void>(platform::classNamed("NSObject"), self, cmd);
}

// ---- UIApplication ----

id gApplication = nullptr;  // the one application object; never released

// The application class each process starts with (its principal class).
const char* principalClassName() {
  if (inProcess("SpringBoard") && platform::classNamed("SpringBoard")) return "SpringBoard";
  if (inProcess("Preferences") && platform::classNamed("PreferencesAppController")) {
    return "PreferencesAppController";
  }
  return "UIApplication";
}

// The first application object made stays the only one: a later alloc/init
// answers it, as UIKit refuses a second UIApplication.
id applicationInit(id self, SEL cmd) {
  if (gApplication != nullptr && gApplication != self) {
    send<void>(self, Sel("release"));
    return send<id>(gApplication, Sel("retain"));
  }
  self = sendSuper<id>(platform::classNamed("UIResponder"), self, cmd);
  if (self != nullptr) gApplication = send<id>(self, Sel("retain"));
  return self;
}
id sharedApplication(id, SEL) {
  if (gApplication == nullptr) {
    send<void>(host::newObject(platform::classNamed(principalClassName())), Sel("release"));
  }
  return gApplication;
}

struct ApplicationState {
  id delegate = nullptr;  // not retained, as UIKit's delegates
};
id applicationDelegate(id self, SEL) {
  return stateOf<ApplicationState>(self).delegate;
}
void applicationSetDelegate(id self, SEL, id delegate) {
  stateOf<ApplicationState>(self).delegate = delegate;
}
Integer applicationState(id, SEL) {
  return 0;
}  // active
Integer statusBarOrientation(id, SEL) {
  return 1;
}  // portrait

// ---- UIDevice and UIScreen ----

id singleton(const char* className) {
  static auto* made = new std::vector<std::pair<std::string, Retained>>();
  for (auto& [name, obj] : *made) {
    if (name == className) return obj.get();
  }
  made->emplace_back(className, Retained::adopt(host::newObject(platform::classNamed(className))));
  return made->back().second.get();
}
id currentDevice(id, SEL) {
  return singleton("UIDevice");
}
Integer userInterfaceIdiom(id, SEL) {
  return system().ipad ? 1 : 0;
}
id deviceModel(id, SEL) {
  const std::string& model = host::profile().model;
  return platform::makeString(!model.empty() ? model : system().ipad ? "iPad" : "iPhone");
}
id systemVersion(id, SEL) {
  return platform::makeString(host::profile().osVersion);
}
id systemName(id, SEL) {
  return platform::makeString("iOS");
}

id mainScreen(id, SEL) {
  return singleton("UIScreen");
}
CGRect screenBoundsMethod(id, SEL) {
  return screenBounds();
}
double screenScale(id, SEL) {
  return !system().ipad && system().biometrics == "faceid" ? 3.0 : 2.0;
}

}  // namespace

id firstResponder() {
  return gFirstResponder;
}
bool keyboardVisible() {
  return gKeyboardUp;
}
CGRect keyboardFrameOnScreen() {
  return keyboardFrame();
}

id arrayOf(const std::vector<id>& items) {
  id array = platform::sendClass<id>(platform::classNamed("NSMutableArray"), Sel("array"));
  for (id item : items) {
    if (item != nullptr) send<void>(array, Sel("addObject:"), item);
  }
  return array;
}

std::string quoteForLog(const std::string& text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '\n') {
      out += "\\n";
    } else {
      if (c == '"' || c == '\\') out += '\\';
      out += c;
    }
  }
  return out + "\"";
}

void defineUIKit() {
  ClassBuilder("UIResponder", "NSObject")
      .instance("canBecomeFirstResponder", imp(canBecomeFirstResponder), "C@:")
      .instance("canResignFirstResponder", imp(canResignFirstResponder), "C@:")
      .instance("becomeFirstResponder", imp(becomeFirstResponder), "C@:")
      .instance("resignFirstResponder", imp(resignFirstResponder), "C@:")
      .instance("isFirstResponder", imp(isFirstResponder), "C@:")
      .instance("nextResponder", imp(nextResponder), "@@:")
      .instance("dealloc", imp(responderDealloc), "v@:")
      .build();
  ClassBuilder("UIApplication", "UIResponder")
      .classMethod("sharedApplication", imp(sharedApplication), "@@:")
      .instance("init", imp(applicationInit), "@@:")
      .instance("delegate", imp(applicationDelegate), "@@:")
      .instance("setDelegate:", imp(applicationSetDelegate), "v@:@")
      .instance("applicationState", imp(applicationState), typesOf(applicationState).c_str())
      .instance("statusBarOrientation", imp(statusBarOrientation),
                typesOf(statusBarOrientation).c_str())
      .build();
  ClassBuilder("UIDevice", "NSObject")
      .classMethod("currentDevice", imp(currentDevice), "@@:")
      .instance("userInterfaceIdiom", imp(userInterfaceIdiom), typesOf(userInterfaceIdiom).c_str())
      .instance("model", imp(deviceModel), "@@:")
      .instance("localizedModel", imp(deviceModel), "@@:")
      .instance("systemVersion", imp(systemVersion), "@@:")
      .instance("systemName", imp(systemName), "@@:")
      .build();
  ClassBuilder("UIScreen", "NSObject")
      .classMethod("mainScreen", imp(mainScreen), "@@:")
      .instance("bounds", imp(screenBoundsMethod), typesOf(screenBoundsMethod).c_str())
      .instance("scale", imp(screenScale), "d@:")
      .build();
  defineUIKitGraphics();
  defineUIKitDrawing();
  defineCoreAnimation();
  defineUIKitViews();
  defineUIKitControls();
  defineUIKitGestures();
  defineUIKitTargetAction();
  defineUIKitControllers();
}

}  // namespace kv::sim::frameworks
