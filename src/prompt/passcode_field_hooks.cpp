// The prompt's passcode field, kept in place while digits are typed.
#include "prompt/passcode_field_hooks.h"

#include "base/flags.h"
#include "core/state.h"
#include "platform/foundation.h"
#include "platform/geometry.h"
#include "platform/hook.h"
#include "platform/runtime.h"
#include "prompt/selectors.h"

namespace kv::prompt {

namespace {

using platform::send;
using platform::sendIfResponds;

constexpr double kFirstRecheck = 0.15;
constexpr double kSecondRecheck = 0.4;

// The vertical origin of the prompt's container before the first digit.
double gRememberedOriginY = 0;
bool gRemembered = false;

// The view that holds the prompt's content and moves with the alert:
// "alertController" -> view -> "contentView" -> superview.
id promptContainer() {
  id controller =
      platform::valueForKeyIfPresent(core::state().kavelinAlert.get(), "alertController");
  id content =
      platform::valueForKeyIfPresent(sendIfResponds<id>(controller, sel::kView), "contentView");
  return sendIfResponds<id>(content, sel::kSuperview);
}

bool isPromptField(id field) {
  id alert = core::state().kavelinAlert.get();
  return alert != nullptr && field == sendIfResponds<id>(alert, sel::kPasscodeField);
}

bool hasText(id field) {
  return platform::toString(sendIfResponds<id>(field, sel::kText)).size() > 0;
}

}  // namespace

void passcodeInsertText(id self, SEL cmd, id text) {
  using Original = platform::Hook<&passcodeInsertText>;
  if (!base::flags().isIOS8OrLater) {
    Original::original(self, cmd, text);
    return;
  }
  // Where the prompt stands before the first digit.
  bool own = isPromptField(self);
  if (own && !hasText(self)) {
    id container = promptContainer();
    gRemembered = container != nullptr;
    if (gRemembered) gRememberedOriginY = send<CGRect>(container, sel::kFrame).origin.y;
  }
  // The platform's typing.
  Original::original(self, cmd, text);
  // Back in place now, and after the platform's own moves.
  if (own && hasText(self)) {
    send<void>(self, sel::kUpdateKavelinAlert);
    send<void>(self, sel::kPerformSelectorWithObjectAfterDelay, sel::kUpdateKavelinAlert,
               id{nullptr}, kFirstRecheck);
    send<void>(self, sel::kPerformSelectorWithObjectAfterDelay, sel::kUpdateKavelinAlert,
               id{nullptr}, kSecondRecheck);
  }
}

void updateKavelinAlert(id, SEL) {
  id container = promptContainer();
  if (!gRemembered || container == nullptr) return;
  CGRect frame = send<CGRect>(container, sel::kFrame);
  if (frame.origin.y == gRememberedOriginY) return;
  frame.origin.y = gRememberedOriginY;
  send<void>(container, sel::kSetFrame, frame);
}

}  // namespace kv::prompt
