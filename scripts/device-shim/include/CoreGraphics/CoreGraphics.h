// Apple's Core Graphics geometry: CGFloat is a double on 64-bit, a float on 32-bit.
#pragma once

#if defined(__LP64__) && __LP64__
typedef double CGFloat;
#define CGFLOAT_IS_DOUBLE 1
#else
typedef float CGFloat;
#define CGFLOAT_IS_DOUBLE 0
#endif
struct CGPoint {
  CGFloat x;
  CGFloat y;
};
typedef struct CGPoint CGPoint;
struct CGSize {
  CGFloat width;
  CGFloat height;
};
typedef struct CGSize CGSize;
struct CGRect {
  CGPoint origin;
  CGSize size;
};
typedef struct CGRect CGRect;
struct CGAffineTransform {
  CGFloat a, b, c, d;
  CGFloat tx, ty;
};
typedef struct CGAffineTransform CGAffineTransform;
typedef struct CGImage* CGImageRef;
