// A fuzzer's process made into SpringBoard on a simulated device, the way
// the library's tests make theirs: the device's file system under a folder
// of its own, the simulated frameworks, virtual time, the library's
// controller and prompt, and the settings as the settings pane stored them.
#pragma once

#include <string>

#include "platform/value.h"

namespace kv::fuzz {

// Makes this process SpringBoard on iOS `version` ("10.3", "11.1") with
// Touch ID and one enrolled finger. Once per process.
void startSpringBoard(const char* version);

// Writes the preference domain and loads it, as after a change in the
// settings pane.
void storePrefs(platform::Value::Dictionary prefs);

// Lets `seconds` of virtual time pass, running what falls due.
void advance(double seconds);

// Puts the device back at rest after an input: any alert cancelled as the
// system cancels them, nothing held back, the retries run out.
void settle();

// A person's actions on the prompt, when one is up: the cancel button, and
// the Kavelin passcode typed in the passcode field.
void tapCancel();
void typePasscode(const std::string& digits);

}  // namespace kv::fuzz
