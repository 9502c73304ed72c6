// The prompt's glyph timing.
#include "prompt/glyph_timing.h"

#include "core/state.h"
#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/runtime.h"
#include "prompt/selectors.h"

namespace kv::prompt {

namespace {

constexpr double kPromptTransition = 0.2;

id promptGlyph() {
  return platform::sendIfResponds<id>(core::state().kavelinAlert.get(), sel::kGlyphView);
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
