// Diagnostics: every exception a process creates goes to the system log, and
// one created while this library's code is on the stack is also written to a
// log file, so that a crash the library caused can be reported. A line writer
// appends timestamped lines to a plain file for debugging.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/objc.h"

namespace kv::startup {

// Replaces `+[NSException raise:format:]`: logs the name and format, then
// raises the same exception through the platform's implementation.
void exceptionRaise(id self, SEL cmd, id name, id format, ...);

// Replaces `-[NSException initWithName:reason:userInfo:]`: logs, writes the
// exception file when this library is on the stack, then initialises.
id exceptionInit(id self, SEL cmd, id name, id reason, id userInfo);

// One file found in the log directory, with the time its name tells.
struct LogFileRecord {
  std::string name;
  int64_t timestamp;  // seconds since 1970; 0 when the name does not parse
};

// Returns the names of the files to delete before a new one is written:
// newest first, equal timestamps in listing order, everything from the
// tenth on, once there are ten or more.
std::vector<std::string> filesToPrune(std::vector<LogFileRecord> listing);

// Fills each "%@" of `text`, in order, with the next of `values`.
std::string fillTemplate(const std::string& text, const std::vector<std::string>& values);

// Returns true iff one of the call-stack symbol lines `frames` names the
// image whose path is `imagePath` (its file name, without regard to case).
bool symbolsMention(const std::vector<std::string>& frames, const std::string& imagePath);

}  // namespace kv::startup

// Appends "Mon D HH:MM:SS program[pid] TEXT" to /tmp/syslog; does nothing
// when the file cannot be opened.
extern "C" __attribute__((visibility("default"))) void KavelinLogLine(const char* text);
