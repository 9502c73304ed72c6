// The simulated iOS frameworks of a host process: defined before the library
// loads, as the real ones are linked before an injected library arrives.
#pragma once

namespace kv::sim::frameworks {

// Defines the classes this process has on its iOS version: the behaviour
// modules first, then the catalog fills in every remaining class and method.
void defineFrameworks();

// The process's own start-up, after the library has loaded (SpringBoard
// builds its controllers, its UI controller last).
void startProcess();

}  // namespace kv::sim::frameworks
