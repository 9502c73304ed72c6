// Virtual time for a test's own process, where no device drives the clock.
#pragma once

#include <cmath>
#include <cstdint>

#include "sim/host/run_loop.h"

namespace kv::testing {

// Lets `seconds` of virtual time pass, running what falls due in order.
inline void advanceVirtualTime(double seconds) {
  int64_t end = sim::host::nowNanos() + std::llround(seconds * 1e9);
  sim::host::runDue();
  while (sim::host::nextDue() && *sim::host::nextDue() <= end) {
    sim::host::setNowNanos(*sim::host::nextDue());
    sim::host::runDue();
  }
  sim::host::setNowNanos(end);
}

}  // namespace kv::testing
