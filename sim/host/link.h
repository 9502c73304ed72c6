// The host's link to the device: one socket, requests that wait for an
// answer, one-way reports, and the commands the device sends.
#pragma once

#include <functional>
#include <string>

#include "platform/value.h"

namespace kv::sim::host {

using platform::Value;

// A handler for one command op; answers the reply's fields.
using CommandHandler = std::function<Value::Dictionary(const Value& command)>;

// Connects this process to the device over `fd`.
void attachToDevice(int fd);

// True iff a device is attached (false in unit tests of host parts).
bool attached();

// Sends a one-way report to the device.
void report(const char* op, Value::Dictionary fields);

// Records an event in the device's log: `kind` and its details.
void logEvent(const std::string& kind, const std::string& details);

// Sends a request and waits for the device's answer ("reply" fields).
// Commands that arrive meanwhile (a message for this process's server) are
// handled first. Without a device, or when it is gone, answers a none value.
Value request(const char* op, Value::Dictionary fields);

// Registers the handler of a device command op.
void onCommand(const std::string& op, CommandHandler handler);

// This process's name, as the device knows it.
const std::string& processName();
void setProcessName(std::string name);

// Serves the device's commands until told to quit or the device is gone.
void serve();

}  // namespace kv::sim::host
