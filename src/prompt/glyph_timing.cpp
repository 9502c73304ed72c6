// The prompt's glyph timing.
#include "prompt/glyph_timing.h"

#include "core/state.h"
#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/runtime.h"

namespace kv::prompt {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kGlyphView("glyphView");

constexpr double kPromptTransition = 0.2;

id promptGlyph() {
  return platform::sendIfResponds<id>(core::state().kavelinAlert.get(), kGlyphView);
}

}  // namespace

double glyphMinimumDuration(id self, SEL cmd) {
  if (self != nullptr && self == promptGlyph()) return kPromptTransition;
  return platform::Hook<&glyphMinimumDuration>::original(self, cmd);
}

double fingerprintGlyphMinimumDuration(id self, SEL cmd) {
  id drawing = platform::valueForKeyIfPresent(promptGlyph(), "fingerprintView");
  if (self != nullptr && self == drawing) return kPromptTransition;
  return platform::Hook<&fingerprintGlyphMinimumDuration>::original(self, cmd);
}

}  // namespace kv::prompt
