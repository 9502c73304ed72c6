// The actions a scenario performs inside a host ("SpringBoard: tap ..."),
// each entering where the real system takes that action.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/value.h"

namespace kv::sim::host {

struct ActionRequest {
  std::string name;               // "send", "tap", ...
  std::vector<std::string> args;  // the words after the action
  std::string rest;               // the raw text after the action word
};

// Runs an action; answers its result (shown in the timeline) or sets *error.
using Action = std::function<platform::Value(const ActionRequest&, std::string* error)>;

// Registers an action under its name.
void registerAction(const std::string& name, Action action);

// Registers the "action" and "run"/"deliver" commands and the core actions.
void registerCoreCommands();

}  // namespace kv::sim::host
