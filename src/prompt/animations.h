// The prompt's motion: the idle ring rotation and fingerprint pulse, the
// scanner sweep, the sideways shake, and the glyph states that stand in for
// them when the prompt shows the PassKit glyph.
#pragma once

#include "platform/objc.h"
#include "prompt/alert_state.h"

namespace kv::prompt {

// The prompt methods that move the glyph, each to its own state.
enum class GlyphMethod {
  kShowScanner,
  kReAddAnimations,
  kResetAnimations,
  kShowError,
  kKillAnimations
};

// Moves the glyph to the state the glyph table gives `method` on this device
// (with or without the face camera); nothing without a glyph.
void setGlyphState(const AlertViewState& s, GlyphMethod method);

// Moves the glyph to state 3, animated: the face-camera error while the
// further glyph flag is raised.
void setReducedErrorGlyphState(const AlertViewState& s);

// Adds "MyAnimation" (rotation) to the ring's layer and "MyAnimation2"
// (pulse) to the fingerprint's, replacing earlier ones of those keys.
void addIdleAnimations(const AlertViewState& s);

// The scanner motion of the ring look: shows ring and fingerprint (red one
// hidden) over 0.3 s, freezes the fingerprint's layer, sets `isAnimating`
// and sweeps ghostView up and down.
void startScannerMotion(AlertViewState& s);

// Runs the fingerprint's layer at speed 1.0 again (the scanner froze it).
void unfreezeFingerprint(const AlertViewState& s);

// Removes every animation from the layers of the ring, both fingerprints and
// ghostView.
void removeAnimations(const AlertViewState& s);

// Shakes `container` sideways with a 0.1 s animation whose completion moves
// it back; nothing for nil.
void shake(id container);

}  // namespace kv::prompt
