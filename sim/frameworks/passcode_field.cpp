// PSPasscodeField, the Preferences framework's row of passcode entry fields:
// typed keys fill it, and a full field tells its delegate the passcode once.
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Integer;
using platform::Sel;
using platform::send;

namespace {

constexpr double kEntryFieldWidth = 44;
constexpr Integer kNumberPadKeyboard = 4;

struct PasscodeState {
  Integer fields = 4;
  std::string text;
  id delegate = nullptr;  // not retained
};
PasscodeState& field(id self) {
  return stateOf<PasscodeState>(self);
}

std::string progress(const PasscodeState& p) {
  return std::to_string(p.text.size()) + " of " + std::to_string(p.fields);
}

bool full(const PasscodeState& p) {
  return static_cast<Integer>(p.text.size()) >= p.fields;
}

id initWithFields(id self, SEL, Integer count) {
  CGRect frame = platform::makeRect(0, 0, kEntryFieldWidth * static_cast<double>(count), 33.4);
  self = send<id>(self, Sel("initWithFrame:"), frame);
  if (self != nullptr) field(self).fields = count > 0 ? count : 1;
  return self;
}

// A key typed on the keyboard: each character takes the next entry field
// while one is free; the one that fills the last field hands the passcode on.
void insertText(id self, SEL, id text) {
  std::string typed = platform::toString(text);
  bool filled = false;
  for (char c : typed) {
    PasscodeState& p = field(self);
    if (full(p)) break;
    p.text += c;
    host::logEvent("passcode", "typed " + progress(p));
    filled = full(p);
  }
  if (typed.empty()) return;
  noteViewChanged(self);
  id delegate = field(self).delegate;
  if (filled && delegate != nullptr &&
      platform::respondsTo(delegate, Sel("passcodeField:enteredPasscode:"))) {
    send<void>(delegate, Sel("passcodeField:enteredPasscode:"), self,
               platform::makeString(field(self).text));
  }
}

void deleteBackward(id self, SEL) {
  PasscodeState& p = field(self);
  if (p.text.empty()) return;
  p.text.pop_back();
  host::logEvent("passcode", "deleted, " + progress(p));
  noteViewChanged(self);
}

id text(id self, SEL) {
  return platform::makeString(field(self).text);
}
void setText(id self, SEL, id value) {
  PasscodeState& p = field(self);
  std::string text = platform::toString(value).substr(0, static_cast<size_t>(p.fields));
  if (text == p.text) return;
  p.text = text;
  host::logEvent("passcode", text.empty() ? std::string("cleared") : "set, " + progress(p));
  noteViewChanged(self);
}
BOOL hasText(id self, SEL) {
  return field(self).text.empty() ? 0 : 1;
}
Integer numberOfEntryFields(id self, SEL) {
  return field(self).fields;
}
id delegate(id self, SEL) {
  return field(self).delegate;
}
void setDelegate(id self, SEL, id delegate) {
  field(self).delegate = delegate;
}
BOOL canBecomeFirstResponder(id, SEL) {
  return 1;
}
Integer keyboardType(id, SEL) {
  return kNumberPadKeyboard;
}

}  // namespace

void definePasscodeField() {
  ClassBuilder("PSPasscodeField", "UIView")
      .instance("initWithNumberOfEntryFields:", imp(initWithFields),
                typesOf(initWithFields).c_str())
      .instance("insertText:", imp(insertText), "v@:@")
      .instance("deleteBackward", imp(deleteBackward), "v@:")
      .instance("text", imp(text), "@@:")
      .instance("setText:", imp(setText), "v@:@")
      .instance("hasText", imp(hasText), "C@:")
      .instance("numberOfEntryFields", imp(numberOfEntryFields),
                typesOf(numberOfEntryFields).c_str())
      .instance("delegate", imp(delegate), "@@:")
      .instance("setDelegate:", imp(setDelegate), "v@:@")
      .instance("canBecomeFirstResponder", imp(canBecomeFirstResponder), "C@:")
      .instance("keyboardType", imp(keyboardType), typesOf(keyboardType).c_str())
      .build();
}

}  // namespace kv::sim::frameworks
