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

// Answers a question a scenario asks of a host ("front", "locked", ...).
using Query = std::function<platform::Value(const std::vector<std::string>& args)>;

// Registers a query under its name.
void registerQuery(const std::string& name, Query query);

// Registers the "action" and "run"/"deliver" commands and the core actions.
void registerCoreCommands();

// Registers the "hold" and "replay" actions, which park the next call of a
// method and invoke it later, as a guard does (hold.cpp).
void registerHoldActions();

}  // namespace kv::sim::host
