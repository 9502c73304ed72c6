// Camera and photo-library protection: the Camera app's image well opens the
// photo library only after SpringBoard authenticates the owner, when Photos
// is protected.
#pragma once

#include "platform/functions.h"
#include "platform/objc.h"

namespace kv::processes {

// The image well's tap, one replacement per class that carries it.
void viewfinderImageWellTapped(id self, SEL cmd, id sender);    // CAMViewfinderViewController
void cameraKitImageWellTapped(id self, SEL cmd, id sender);     // CMKCameraView
void photoLibraryImageWellTapped(id self, SEL cmd, id sender);  // PLCameraView
void cameraViewImageWellTapped(id self, SEL cmd, id sender);    // CAMCameraView

// CAMViewfinderViewController -_handleImageWellReleased:
void viewfinderImageWellReleased(id self, SEL cmd, id sender);

// UIPreviewInteractionController -startInteractivePreviewWithGestureRecognizer:
BOOL startImageWellPreview(id self, SEL cmd, id gestureRecognizer);

// SpringBoard's answers: the held-back tap or release is repeated once.
void cameraPhotosAllowed(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                         CFDictionaryRef);  // "net.quorvan.kavelin.allowedInCamPhotos"
void cameraPhotosAllowed9(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                          CFDictionaryRef);  // "net.quorvan.kavelin.allowedInCamPhotos9"
void cameraPhotosAllowed11(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                           CFDictionaryRef);  // "net.quorvan.kavelin.allowedInCamPhotos11"

}  // namespace kv::processes
