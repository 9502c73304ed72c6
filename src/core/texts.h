// The prompt's texts as the coordinator and the matching session write
// them: room for the glyph and the item line, then the localised text.
#pragma once

#include <string>

namespace kv::core {

// The message's leading blank lines: 4, one more when the item is named,
// one more from iOS 10 on.
std::string blankLines();

// "Please authenticate using your fingerprint" (the bundle's text), with
// "fingerprint" replaced by "face" on a Face ID device.
std::string authenticateText();

// "Please enter Kavelin passcode" (the bundle's text).
std::string passcodeText();

// The failure message after `failedAttempts` earlier failures: "Authentication
// failed. " and the authenticate text while there were 4 or fewer, the
// cleaning hint after that.
std::string failureText(int failedAttempts);

// Writes one line to the system log.
void systemLog(const std::string& line);

}  // namespace kv::core
