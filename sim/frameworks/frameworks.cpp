// The simulated iOS frameworks of a host process.
#include "sim/frameworks/frameworks.h"

#include "sim/frameworks/system.h"

namespace kv::sim::frameworks {

// Behaviour modules, each defining the classes it models (those of its
// frameworks that the library depends on), in the order a process links them.
void defineUIKit();
void defineAlertViews();
void definePassKit();
void definePasscodeField();
void defineBiometricKit();
void defineSpringBoard();
void defineClients();
void defineTelephony();
void defineInCallScreen();
void defineCameraApp();
void definePreferences();
// The catalog: every other class and method of the platform that the library
// names, as calls that are recorded and answer zero.
void defineCatalog();

void startSpringBoard();
void startCameraApp();

namespace {

// The Camera app, recognised as the catalog recognises it.
bool inCamera() {
  return inProcess("Camera") || system().bundleIdentifier == "com.apple.camera";
}

}  // namespace
void startPreferences();

void defineFrameworks() {
  defineUIKit();
  defineAlertViews();
  definePassKit();
  definePasscodeField();
  defineBiometricKit();
  if (inProcess("SpringBoard")) defineSpringBoard();
  if (inProcess("SpringBoard") || inProcess("InCallService")) defineTelephony();
  if (inProcess("InCallService")) defineInCallScreen();
  if (inCamera()) defineCameraApp();
  if (inProcess("Preferences")) definePreferences();
  defineCatalog();
  defineClients();
}

void startProcess() {
  if (inProcess("SpringBoard")) startSpringBoard();
  if (inCamera()) startCameraApp();
  if (inProcess("Preferences")) startPreferences();
}

}  // namespace kv::sim::frameworks
