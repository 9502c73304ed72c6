// The roads to SpringBoard for processes that cannot use the messaging
// centre: a request file plus a Darwin notification whose state names the
// message, answered by a reply file; and the photo-library request, granted
// only after authentication.
#pragma once

#include <optional>
#include <string>

#include "platform/functions.h"

namespace kv::core {

// The message name packed in the low 32 bits of a state, first character in
// the most significant byte; nullopt unless all four are letters or digits
// (the name becomes part of a file path).
std::optional<std::string> unpackMessageName(uint64_t state);

// "net.quorvan.kavelin.ipcoverride": reads and deletes the request file of
// the named message, runs the message handler, and writes a non-nil answer,
// archived, to the reply file.
void fileRequest(CFNotificationCenterRef, void*, CFNotificationName, const void*, CFDictionaryRef);

// "net.quorvan.kavelin.requestPhotoLibraryAuthorization": the request value
// (the state's low 32 bits) is posted back as
// "net.quorvan.kavelin.photoLibraryAuthorized" only after authentication.
void photoLibraryRequest(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                         CFDictionaryRef);

}  // namespace kv::core
