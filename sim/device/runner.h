// Runs scenarios against a simulated device: each statement in order, the
// timeline printed as it grows, the first failed expectation reported.
#pragma once

#include <cstdio>
#include <optional>
#include <string>

#include "sim/device/scenario.h"
#include "sim/render/album.h"

namespace kv::sim {

class Device;

struct RunOptions {
  std::string hostPath;           // the kavelin-host executable
  std::string libraryPath;        // libkavelin.so
  std::string privateLibraryDir;  // where the private-function libraries are
  bool json = false;              // print the event log as JSON instead of a timeline
  int hostTimeoutMs = 20000;      // wall time a host may take for one command
  std::FILE* out = stdout;
  render::Album* album = nullptr;  // where `snapshot` pictures go; none: they are not taken
  double pictureScale = 0;         // pixels a point of those pictures; 0: the device's own
  bool rewriteLooks = false;       // `expect looks` writes its reference instead of comparing
};

// Checks what the parser leaves open: action and predicate words and their
// arguments. Returns the first error, if any.
std::optional<ParseError> validateScenario(const Scenario& scenario);

// Runs one scenario; true iff every statement ran and every expectation held.
bool runScenario(const Scenario& scenario, const RunOptions& options);

// Starts `process` on the device a "device ..." line describes, with other
// extensions installed, and prints the library's install report there.
// Answers the exit status (0, or 2 for bad words, 1 when the host failed).
int printInstallReport(const std::string& process, const std::string& deviceLine,
                       const std::vector<std::string>& extensions, const RunOptions& options);

// Runs `count` prompt cycles in SpringBoard on the device a "device ..."
// line describes (a tap on a protected app, the prompt, its Cancel button)
// and prints, every `every` cycles, the host's resident memory and the time
// a prompt took over the last stretch (wall and host CPU time). Answers the
// exit status (0, 2 for bad words, 1 when the device failed).
int runPromptCycles(int count, int every, const std::string& deviceLine, const RunOptions& options);

// Runs a scenario one statement at a time, for a tool that chooses the next
// statement from what the device shows (the random walker). Each statement
// is checked as a file's would be; the timeline goes to the options' out.
class StepRunner {
 public:
  StepRunner(const RunOptions& options, std::string file);
  ~StepRunner();
  StepRunner(const StepRunner&) = delete;
  StepRunner& operator=(const StepRunner&) = delete;

  // Runs one statement; false with *failure when it is malformed, failed,
  // or a host died or stopped answering meanwhile.
  bool step(const Statement& statement, std::string* failure);

  // The device, once a statement has described or started it; else null.
  Device* device();

  // Asks every host to quit. Answers what went wrong ("" when nothing): a
  // host that did not quit, failed, or left a sanitizer's report.
  std::string finish();

 private:
  class Impl;
  Impl* impl_;
};

// The help text: every statement, action, predicate and device profile.
std::string helpText();

}  // namespace kv::sim
