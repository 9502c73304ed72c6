// The newer camera's photo-library request, SpringBoard's side: the Camera
// app posts "net.quorvan.kavelin.cameraAsksForPhotos" and waits for
// "net.quorvan.kavelin.allowedInCamPhotos11".
#pragma once

#include "platform/functions.h"

namespace kv::core {

// The observer of "net.quorvan.kavelin.cameraAsksForPhotos" (iOS 11): the
// request runs asynchronously on the main queue.
void cameraAsksForPhotos(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                         CFDictionaryRef);

}  // namespace kv::core
