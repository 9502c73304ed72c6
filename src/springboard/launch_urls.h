// URL opens: the app that answers an URL comes to the front only after
// authentication when it, the app the URL is opened in, or the app that owns
// the URL's scheme is protected.
#pragma once

#include "platform/objc.h"

namespace kv::springboard {

// -[SpringBoard _openURLCore:display:animating:sender:activationSettings:withResult:]
void openURLWithSettings(id self, SEL cmd, id url, id display, BOOL animating, id sender,
                         id settings, id result);
// -[SpringBoard _openURLCore:display:animating:sender:additionalActivationFlags:activationHandler:]
void openURLWithFlags(id self, SEL cmd, id url, id display, BOOL animating, id sender,
                      unsigned flags, id handler);
// -[SpringBoard _openURLCore:display:animating:sender:activationContext:activationHandler:]
void openURLWithContext(id self, SEL cmd, id url, id display, BOOL animating, id sender, id context,
                        id handler);
// -[SpringBoard applicationOpenURL:withApplication:sender:publicURLsOnly:animating:needsPermission:
//   activationContext:activationHandler:]
void applicationOpenURL(id self, SEL cmd, id url, id application, id sender, BOOL publicOnly,
                        BOOL animating, BOOL needsPermission, id context, id handler);

}  // namespace kv::springboard
