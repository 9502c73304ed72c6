// The host's profile: who this process is and what device it runs on, as
// the device described it when it started the process.
#pragma once

#include <string>
#include <vector>

#include "platform/value.h"

namespace kv::sim::host {

struct Profile {
  std::string processName;              // "SpringBoard", "Preferences", an app's executable name
  std::string bundleIdentifier;         // "com.apple.springboard", ...
  std::string osVersion;                // "11.1"
  std::string osVersionString;          // "Version 11.1 (Build 15B93)"
  std::string model;                    // "iPhone", "iPad"
  std::string machine;                  // "iPhone10,3"
  int idiom = 0;                        // 0 phone, 1 pad
  std::string biometrics;               // "none", "touchid", "faceid"
  bool passcode = true;                 // a device passcode is set
  int identities = 1;                   // enrolled fingerprints or faces
  bool passKitLate = false;             // SpringBoard loads PassKit only on first use
  std::vector<std::string> ioServices;  // the I/O registry's services
  std::vector<std::string> privateLibraries;  // private-function libraries to load
  std::string root;                           // the device's file-system root on this machine
  std::string library;                        // the library to load
};

// Reads a profile from the device's hello message.
Profile profileFrom(const platform::Value& hello);

// The profile of this process (set once at start-up).
const Profile& profile();
void setProfile(Profile p);

// Makes Foundation answer with this profile: process name, OS version
// string, main bundle identifier.
void applyProfile();

}  // namespace kv::sim::host
