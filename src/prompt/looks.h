// The prompt's biometric face by the `IconColor` setting: the fingerprint in
// its ring (images from the settings bundle), or the PassKit glyph in the
// system's style with the style's colours or colours of its own.
#pragma once

#include "platform/objc.h"
#include "prompt/alert_state.h"

namespace kv::prompt {

struct Look {
  int iconColor;
  bool glyph;               // the PassKit glyph instead of ring and fingerprint
  const char* fingerprint;  // image names of the ring look
  const char* ring;
  const char* primaryHex;  // the glyph's colours; nullptr: its style's own
  const char* secondaryHex;
  bool placedByItself;  // the glyph's own transform and frame
};

// The look this device shows: the system glyph on iOS 11 without the face
// camera, the face-camera glyph (`IconColor` 5) with it, otherwise the row of
// the `IconColor` setting, any value without a row drawing as 2.
const Look& chooseLook();

// The row of `iconColor` (2 for a value without a row).
const Look& lookFor(int iconColor);

// Makes the views of `look` into `s` and adds them to `container` (none
// added when it is nil): ring, fingerprint, red fingerprint and ghostView, or
// the glyph. A glyph look on a system without PKGlyphView draws as row 2.
void buildLook(AlertViewState& s, const Look& look, id container);

}  // namespace kv::prompt
