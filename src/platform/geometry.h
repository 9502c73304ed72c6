// The geometry types of the platform's views and layers, passed by value to
// and from platform methods. On a device they come from Core Graphics.
#pragma once

#include "platform/encoding.h"

#if defined(__APPLE__)
#include <CoreGraphics/CoreGraphics.h>
#include <QuartzCore/QuartzCore.h>
#else

extern "C" {
using CGFloat = double;
struct CGPoint {
  CGFloat x, y;
};
struct CGSize {
  CGFloat width, height;
};
struct CGRect {
  CGPoint origin;
  CGSize size;
};
struct CGAffineTransform {
  CGFloat a, b, c, d, tx, ty;
};
// The current media time of Core Animation, in seconds.
double CACurrentMediaTime(void);
}

#endif

KV_STRUCT_ENCODING(CGPoint, "{CGPoint=dd}");
KV_STRUCT_ENCODING(CGSize, "{CGSize=dd}");
KV_STRUCT_ENCODING(CGRect, "{CGRect={CGPoint=dd}{CGSize=dd}}");
KV_STRUCT_ENCODING(CGAffineTransform, "{CGAffineTransform=dddddd}");

namespace kv::platform {

inline CGRect makeRect(double x, double y, double width, double height) {
  return CGRect{CGPoint{x, y}, CGSize{width, height}};
}

}  // namespace kv::platform
