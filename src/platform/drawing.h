// UIKit's bitmap image context: what the library draws its own images with.
// On a device the functions come from UIKit; the simulated device implements
// them with the same signatures.
#pragma once

#include "platform/geometry.h"
#include "platform/objc.h"

extern "C" {
void UIGraphicsBeginImageContextWithOptions(CGSize size, BOOL opaque, CGFloat scale);
id UIGraphicsGetImageFromCurrentImageContext(void);
void UIGraphicsEndImageContext(void);
}

namespace kv::platform {

// The values of UIKit's text attribute names (NSFontAttributeName,
// NSForegroundColorAttributeName, NSShadowAttributeName), which a string
// drawn with attributes is given its looks by.
inline constexpr const char* kFontAttribute = "NSFont";
inline constexpr const char* kForegroundColorAttribute = "NSColor";
inline constexpr const char* kShadowAttribute = "NSShadow";

}  // namespace kv::platform
