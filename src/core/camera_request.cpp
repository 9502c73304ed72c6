// The newer camera's photo-library request: granted at once where the
// camera's older guards would not have asked, otherwise held behind the
// prompt as the permission that answers it.
#include "core/camera_request.h"

#include "core/controller.h"
#include "core/coordinator.h"
#include "core/policy.h"
#include "platform/invocation.h"
#include "platform/runtime.h"

namespace kv::core {

namespace {

constexpr const char* kPermission = "allowCameraIOS11";
constexpr const char* kPhotosTitle = "com.apple.mobileslideshow";

void requestPhotos() {
  // The camera only knows that Photos is protected: with nothing to
  // authenticate with, an open session or a trusted network the older
  // camera would have opened the library at once, and so does this one.
  if (!wayToAuthenticate() || sessionExists() || isOnTrustedWiFi()) {
    grantPermission(kPermission);
    return;
  }
  platform::Retained invocation =
      platform::invocationOf(controller(), platform::selector(kPermission));
  if (!invocation) return;
  setInvocation(invocation.get());
  setRestrictedTitle(kPhotosTitle);
  showAlert();
}

}  // namespace

void cameraAsksForPhotos(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                         CFDictionaryRef) {
  dispatch_async(dispatch_get_main_queue(), ^{
    requestPhotos();
  });
}

}  // namespace kv::core
