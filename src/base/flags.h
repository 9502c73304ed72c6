// The process-wide facts start-up settles once: the version flags and the
// process role. Every version-dependent choice reads these; they depend on
// nothing but the platform, so that every layer can.
#pragma once

namespace kv::base {

// Version flags: substring tests on the platform's version string, false
// until the section of start-up that sets them has run.
struct VersionFlags {
  bool isIOS8OrLater = false;
  bool isIOS9OrLater = false;
  bool isIOS92OrLater = false;
  bool isIOS10OrLater = false;
  bool isIOS102OrLater = false;
  bool isIOS11 = false;
  bool isPad = false;  // set in the Settings app only
};

// The flags of this process.
VersionFlags& flags();

// Which flag to compute.
enum class VersionFlag {
  kIOS11,
  kIOS10OrLater,
  kIOS102OrLater,
  kIOS92OrLater,
  kIOS9OrLater,
  kIOS8OrLater
};

// Computes one flag from NSProcessInfo's operatingSystemVersionString, read
// afresh for each substring test, the alternatives tried in order.
void computeFlag(VersionFlag flag);

// SpringBoard's own start-up facts.
struct SpringBoardFlags {
  bool identitiesPresent = false;
  bool devicePasscodeSet = false;
  bool startupFinished = false;  // "com.apple.springboard.finishedstartup" was seen
};
SpringBoardFlags& springBoardFlags();

// The host process, as start-up recognises it.
enum class Role { kOther, kInCall, kSettings, kCamera, kSpringBoard };

// The role of this process (kOther until start-up has decided).
Role role();
void setRole(Role role);

}  // namespace kv::base
