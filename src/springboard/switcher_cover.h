// Switcher cards of protected apps: covered by KavelinBlurView11 on the
// reusable snapshot views, shown with the launch image or under a blurred
// copy of their snapshot on the older cards, and, with the Brindle extension,
// a zoom-up to a protected app held until the owner authenticates.
#pragma once

#include "platform/geometry.h"
#include "platform/objc.h"

namespace kv::springboard {

// True iff cards of protected apps are to be hidden now: the blur setting
// and protection on, and no kept session.
bool hidesProtectedCards();

// -[SBAppSwitcherReusableSnapshotView layoutSubviews]
void reusableSnapshotLayout(id self, SEL cmd);
// -[SBAppSwitcherReusableSnapshotView setTransform:]
void reusableSnapshotSetTransform(id self, SEL cmd, CGAffineTransform transform);
// -[SBAppSwitcherReusableSnapshotView dealloc]
void reusableSnapshotDealloc(id self, SEL cmd);

// -[SBAppSliderSnapshotView _cachedImageForImageInfos:foundInfo:]
id sliderCachedImage(id self, SEL cmd, id infos, id* foundInfo);
// -[SBAppSliderSnapshotView _cachedImageForImageInfos:downscaled:foundInfo:]
id sliderCachedImageDownscaled(id self, SEL cmd, id infos, BOOL downscaled, id* foundInfo);
// -[SBAppSliderSnapshotView _defaultImageforImageInfo:]
id sliderDefaultImage(id self, SEL cmd, id info);
// -[SBAppSliderSnapshotView _cgImageForSnapshotInfo:]
CGImageRef sliderCGImage(id self, SEL cmd, id info);
// -[SBAppSliderSnapshotView _cgImageForSnapshotInfo:downscaled:]
CGImageRef sliderCGImageDownscaled(id self, SEL cmd, id info, BOOL downscaled);
// -[SBAppSliderSnapshotView _loadImageAsyncFromSnapshotInfo:]
void sliderLoadImageAsync(id self, SEL cmd, id info);

// -[SBAppSwitcherSnapshotView _viewPresenting:]
void snapshotViewPresenting(id self, SEL cmd, id presenting);
// -[SBAppSwitcherSnapshotView layoutSubviews]
void snapshotViewLayout(id self, SEL cmd);
// -[SBSwitcherSnapshotImageView layoutSubviews]
void snapshotImageViewLayout(id self, SEL cmd);

// -[SBAppSwitcherSnapshotView _crossfadeToZoomUpViewIfNecessaryForTransitionRequest:]
void snapshotZoomUpForRequest(id self, SEL cmd, id request);
// -[SBAppSwitcherSnapshotView _crossfadeToZoomUpViewIfNecessary]
void snapshotZoomUp(id self, SEL cmd);

}  // namespace kv::springboard
