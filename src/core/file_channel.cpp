// The file request channel and the photo-library request.
#include "core/file_channel.h"

#include <cctype>

#include "core/controller.h"
#include "core/coordinator.h"
#include "core/messages.h"
#include "core/texts.h"
#include "platform/foundation.h"
#include "platform/invocation.h"
#include "platform/runtime.h"
#include "settings/notifications.h"

namespace kv::core {

namespace {

using platform::Sel;
using platform::send;
using platform::sendClass;

constexpr const char* kRequestDirectory = "/private/var/tmp/.";

const Sel kDefaultManager("defaultManager");
const Sel kFileExistsAtPath("fileExistsAtPath:");
const Sel kRemoveItemAtPath("removeItemAtPath:error:");
const Sel kDictionaryWithContentsOfFile("dictionaryWithContentsOfFile:");
const Sel kArchivedDataWithRootObject("archivedDataWithRootObject:");
const Sel kWriteToFileAtomically("writeToFile:atomically:");
const Sel kAllowPhotoLibraryAccess("allowPhotoLibraryAccess:");

id fileManager() {
  return sendClass<id>(platform::classNamed("NSFileManager"), kDefaultManager);
}

// The request of a message: its file's dictionary, deleted once read so
// that a second notice without a new file runs with no request. An
// unreadable file is no request.
id takeRequest(const std::string& path) {
  id file = platform::makeString(path);
  if (send<BOOL>(fileManager(), kFileExistsAtPath, file) == 0) return nullptr;
  id request =
      sendClass<id>(platform::classNamed("NSDictionary"), kDictionaryWithContentsOfFile, file);
  send<BOOL>(fileManager(), kRemoveItemAtPath, file, static_cast<id*>(nullptr));
  return request;
}

}  // namespace

std::optional<std::string> unpackMessageName(uint64_t state) {
  auto packed = static_cast<uint32_t>(state);
  std::string name;
  for (int shift = 24; shift >= 0; shift -= 8) {
    auto c = static_cast<unsigned char>((packed >> shift) & 0xff);
    if (std::isalnum(c) == 0) return std::nullopt;
    name.push_back(static_cast<char>(c));
  }
  return name;
}

void fileRequest(CFNotificationCenterRef, void*, CFNotificationName, const void*, CFDictionaryRef) {
  platform::AutoreleasePool pool;
  uint64_t state = settings::stateOf(settings::Note::kIpcOverride);
  auto name = unpackMessageName(state);
  if (!name) {
    systemLog("Kavelin: ignored a file request whose name is not four letters or digits");
    return;
  }
  std::string path = kRequestDirectory + *name;
  id request = takeRequest(path);
  id reply = handleMessageNamed(platform::makeString(*name), request, Channel::kFileChannel);
  // No answer leaves whatever reply file there was.
  if (reply == nullptr) return;
  id data =
      sendClass<id>(platform::classNamed("NSKeyedArchiver"), kArchivedDataWithRootObject, reply);
  send<BOOL>(data, kWriteToFileAtomically, platform::makeString(path + "-reply"), BOOL{1});
}

void photoLibraryRequest(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                         CFDictionaryRef) {
  platform::AutoreleasePool pool;
  // A fresh token reads what the asking app set just before it posted.
  const char* name = settings::nameOf(settings::Note::kRequestPhotoLibraryAuthorization);
  int token = NOTIFY_TOKEN_INVALID;
  uint64_t state = 0;
  if (notify_register_check(name, &token) == NOTIFY_STATUS_OK) {
    notify_get_state(token, &state);
    notify_cancel(token);
  }
  int value = static_cast<int>(static_cast<uint32_t>(state));
  platform::Retained invocation =
      platform::invocationOf(controller(), kAllowPhotoLibraryAccess, value);
  if (!invocation) return;
  setInvocation(invocation.get());
  setRestrictedTitle("PhotoLibrary Enforced Protection");
  showAlert();
}

}  // namespace kv::core
