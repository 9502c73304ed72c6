// The host's main run loop on the device's virtual clock: main-queue work,
// delayed performs, timers. Time moves only when the device says so.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/objc.h"

namespace kv::sim::host {

// The clock counts whole nanoseconds since the reference date (2001-01-01
// UTC), so that delays add up exactly; Foundation sees it as seconds.
int64_t nowNanos();
void setNowNanos(int64_t nanos);  // never moves the clock backwards
double now();

// Converts an absolute time in seconds to the clock's nanoseconds, rounded
// to the microsecond (what a double that large can still tell apart).
int64_t nanosFromSeconds(double seconds);

// Queues `work` to run at `dueNanos` (now or later), after everything queued
// before it for the same moment.
void scheduleAt(int64_t dueNanos, std::function<void()> work);

// Queues `work` to run `delay` seconds from now (0 or less: now).
void scheduleAfter(double delay, std::function<void()> work);

// Queues a delayed perform: [target performSelector:selector withObject:argument]
// `delay` seconds from now, keeping target and argument alive until it runs
// or is cancelled.
void schedulePerform(double delay, id target, SEL selector, id argument);

// Cancels the delayed performs for `target` (identical object) whose selector
// and argument match (argument by isEqual:, nil matching nil); with
// `anySelector` every perform for the target.
void cancelPerforms(id target, SEL selector, id argument, bool anySelector);

// Runs, in order, everything due at or before now, including work queued
// while running. Returns the number of items run.
int runDue();

// The earliest due time still queued, if any.
std::optional<int64_t> nextDue();

// Replaces Foundation's real-time delayed performs, timers and clock with
// ones on this run loop. Call once, before the library loads. Answers the
// report lines of what could not be replaced (none on a sound host).
std::vector<std::string> installVirtualTime();

}  // namespace kv::sim::host
