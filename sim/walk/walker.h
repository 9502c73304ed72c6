// Random walks over the simulated device: what a person and other processes
// do, chosen at random from what the device shows, each step checked; a
// failing walk shrunk to a short scenario a person can read and kavelin-sim
// can run.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sim/device/runner.h"
#include "sim/walk/checker.h"

namespace kv::sim::walk {

struct WalkOptions {
  RunOptions run;         // host and library paths; its out is not used
  int minSteps = 30;      // steps a walk takes at least (refused ones not counted)
  int shrinkTries = 200;  // replays the shrinker may spend on one failure
};

// One walk: its scenario lines as run, and what came of it.
struct WalkResult {
  uint64_t seed = 0;
  std::vector<std::string> lines;  // device, settings, start, then the steps taken
  Verdict verdict;
  int steps = 0;    // steps taken after the start
  int refused = 0;  // steps the device refused (left out of lines)
};

// Generates and runs the walk of `seed`, checking after every step.
WalkResult randomWalk(uint64_t seed, const WalkOptions& options);

// Runs fixed scenario lines under the same checks. A line the device
// refuses makes the run not count (answers kNone). *brokenAt is the index
// of the line after which the invariant broke.
Verdict replayWalk(const std::vector<std::string>& lines, const WalkOptions& options,
                   size_t* brokenAt);

// Drops lines (chunks, then single lines) while the walk still breaks the
// same invariant for the same app; answers the shortest found.
std::vector<std::string> shrinkWalk(const WalkResult& walk, const WalkOptions& options, int* tries);

// The scenario a person reads: comments saying what broke, the lines, and
// an expectation after the last step that fails as the checker did.
std::string scenarioText(const WalkResult& walk, const std::vector<std::string>& lines,
                         size_t originalSteps);

}  // namespace kv::sim::walk
