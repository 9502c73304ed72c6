// KavelinBlurView11: the cover laid on a protected app's switcher card, a
// light blur with the word "Kavelined" drawn over it.
#pragma once

#include "platform/geometry.h"

namespace kv::springboard {

// The runtime name of the cover's class.
inline constexpr const char* kBlurViewClass = "KavelinBlurView11";

// Registers KavelinBlurView11 (a UIView) with the runtime, once.
void defineBlurView();

// Where a label of `label` size sits centred in a view of `view` size, at
// its own size (a label larger than the view reaches out on both sides).
CGRect centredFrame(CGSize view, CGSize label);

}  // namespace kv::springboard
