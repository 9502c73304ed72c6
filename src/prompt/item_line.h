// The item line: the protected item's name inside the prompt, under the
// glyph, an application by its display name.
#pragma once

#include "platform/objc.h"
#include "prompt/alert_state.h"

namespace kv::prompt {

// Adds `textLabel` to `container` when the `showProtectedItemName` setting is
// on and `inRestrictTitle` is set. A lock-screen identifier ("... (LockScreen)")
// is stored back without the suffix, and the line gets "(LockScreen)" on a
// second line of its own.
void addItemLine(AlertViewState& s, id container);

// The display name of the application `identifier`, or `identifier` itself
// when no application has it.
id itemName(id identifier);

}  // namespace kv::prompt
