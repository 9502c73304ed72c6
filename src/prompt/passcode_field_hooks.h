// The passcode field of the prompt stays where it is while digits are typed:
// the platform moves an alert when its text changes, the prompt must not jump.
#pragma once

#include "platform/objc.h"

namespace kv::prompt {

// The replacement of -[PSPasscodeField insertText:].
void passcodeInsertText(id self, SEL cmd, id text);

// -[PSPasscodeField updateKavelinAlert], added: puts the prompt's container
// back at the vertical origin it had before the first digit.
void updateKavelinAlert(id self, SEL cmd);

}  // namespace kv::prompt
