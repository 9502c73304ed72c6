// Block arguments in Foundation's method signatures and invocations, as the
// device's Foundation has them (see invocations.cpp).
#pragma once

#include <string>
#include <vector>

namespace kv::sim::host {

// Makes method signatures read the block type "@?" (as a pointer to a block
// literal, "^{Block_layout=}") and makes NSInvocation copy its block
// arguments when it retains its arguments, releasing the copies when it is
// deallocated. Call once, before anything builds a signature. Answers the
// report lines of what could not be replaced (none on a sound host).
std::vector<std::string> installBlockArguments();

}  // namespace kv::sim::host
