// A host process's life: start-up as the device asks, then serving its
// commands until told to quit.
#pragma once

#include <functional>

namespace kv::sim::host {

// Runs this process as one host of the device (`argv[1]` is "--fd=N") and
// answers its exit status. `beforeLibraryLoads`, where given, runs once the
// simulated frameworks are defined and before the library is loaded: a
// benchmark's stand-ins for platform methods go there.
int runHost(int argc, char** argv, std::function<void()> beforeLibraryLoads = {});

}  // namespace kv::sim::host
