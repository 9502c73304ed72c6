// The state of one KavelinAlertView: the properties the runtime's accessors
// read and write, kept in a C++ object keyed by the instance.
#pragma once

#include "platform/objc.h"
#include "platform/retained.h"

namespace kv::prompt {

struct AlertViewState {
  platform::Retained circle;           // UIImageView: the ring
  platform::Retained thumb;            // UIImageView: the fingerprint
  platform::Retained thumbRed;         // UIImageView: the fingerprint of a failed match
  platform::Retained ghostView;        // UIView: the strip the scanner motion moves
  platform::Retained glyphView;        // PKGlyphView, instead of ring and fingerprint
  platform::Retained passcodeField;    // PSPasscodeField
  platform::Retained textLabel;        // UILabel: the item line
  platform::Retained restrictedLabel;  // UILabel
  platform::Retained restrictedIcon;   // UIImageView
  platform::Retained inRestrictTitle;  // NSString: the protected item's identifier
  bool isAnimating = false;
  bool viewAppeared = false;
  bool wasPasscodeVisible = false;
};

// The state of `alert`, made empty on first use. The reference stays valid
// until forgetState(alert).
AlertViewState& stateOf(id alert);

// Drops the state of `alert` (its dealloc), releasing what it holds.
void forgetState(id alert);

// True iff the prompt shows its passcode field (alpha above 0): passcode
// entry, after which the ring, fingerprint and glyph stay hidden.
bool passcodeFieldShowing(const AlertViewState& s);

}  // namespace kv::prompt
