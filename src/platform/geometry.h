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
// A Core Graphics bitmap image, passed by reference.
using CGImageRef = struct CGImage*;
// The current media time of Core Animation, in seconds.
double CACurrentMediaTime(void);
}

#endif

// CGFloat is a double on 64-bit and a float on 32-bit: the encodings follow.
KV_STRUCT_ENCODING(CGPoint, "{CGPoint=" + kv::platform::Encoding<CGFloat>::get() +
                                kv::platform::Encoding<CGFloat>::get() + "}");
KV_STRUCT_ENCODING(CGSize, "{CGSize=" + kv::platform::Encoding<CGFloat>::get() +
                               kv::platform::Encoding<CGFloat>::get() + "}");
KV_STRUCT_ENCODING(CGRect, "{CGRect=" + kv::platform::Encoding<CGPoint>::get() +
                               kv::platform::Encoding<CGSize>::get() + "}");
KV_STRUCT_ENCODING(CGAffineTransform,
                   "{CGAffineTransform=" +
                       std::string(6, kv::platform::Encoding<CGFloat>::get()[0]) + "}");

namespace kv::platform {

inline CGRect makeRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
  return CGRect{CGPoint{x, y}, CGSize{width, height}};
}

}  // namespace kv::platform
