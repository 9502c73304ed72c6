// The prompt's glyph moves faster than the platform's: its state changes
// last 0.2 s, every other glyph keeps the platform's timing.
#pragma once

#include "platform/objc.h"

namespace kv::prompt {

// The replacements of -_minimumAnimationDurationForStateTransition on
// PKGlyphView and PKFingerprintGlyphView.
double glyphMinimumDuration(id self, SEL cmd);
double fingerprintGlyphMinimumDuration(id self, SEL cmd);

}  // namespace kv::prompt
