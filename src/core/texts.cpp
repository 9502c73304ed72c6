// The prompt's texts.
#include "core/texts.h"

#include "base/flags.h"
#include "core/device.h"
#include "platform/foundation.h"
#include "platform/functions.h"
#include "settings/bundle.h"
#include "settings/settings.h"

namespace kv::core {

namespace {
constexpr int kAttemptsBeforeCleaningHint = 4;
}  // namespace

std::string blankLines() {
  int lines = 4;
  if (settings::current().showProtectedItemName) ++lines;
  if (base::flags().isIOS10OrLater) ++lines;
  return std::string(static_cast<size_t>(lines), '\n');
}

std::string authenticateText() {
  std::string text =
      settings::localizedText("PLEASE_AUTHENTICATE", "Please authenticate using your fingerprint");
  if (faceID()) {
    const std::string finger = "fingerprint";
    for (size_t at = text.find(finger); at != std::string::npos; at = text.find(finger, at + 4)) {
      text.replace(at, finger.size(), "face");
    }
  }
  return text;
}

std::string passcodeText() {
  return settings::localizedText("PLEASE_ENTER_PASSCODE", "Please enter Kavelin passcode");
}

std::string failureText(int failedAttempts) {
  std::string hint =
      failedAttempts <= kAttemptsBeforeCleaningHint
          ? authenticateText()
          : settings::localizedText("TRY_CLEANING",
                                    "Try cleaning your fingertip and/or the home button");
  return settings::localizedText("AUTHENTICATION_FAILED", "Authentication failed") + ". " + hint;
}

void systemLog(const std::string& line) {
  platform::AutoreleasePool pool;
  NSLog(platform::makeString("%@"), platform::makeString(line));
}

}  // namespace kv::core
