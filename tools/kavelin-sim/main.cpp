// kavelin-sim: runs Kavelin on a simulated device.
//   kavelin-sim                      the tour
//   kavelin-sim run [--json] FILE... scenarios (exit 0 all held, 1 a failure, 2 unparsable)
//   kavelin-sim help                 statements, actions, predicates, profiles
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "sim/device/runner.h"
#include "tour.h"

namespace {

kv::sim::RunOptions defaultOptions() {
  kv::sim::RunOptions options;
  options.hostPath = KAVELIN_HOST_PATH;
  options.libraryPath = KAVELIN_LIBRARY_PATH;
  options.privateLibraryDir = KAVELIN_PRIVATE_DIR;
  return options;
}

// Parses and validates; prints the error and answers false when malformed.
bool load(const std::string& text, const std::string& file, kv::sim::Scenario* out) {
  auto parsed = kv::sim::parseScenario(text, file);
  if (auto* error = std::get_if<kv::sim::ParseError>(&parsed)) {
    std::fprintf(stderr, "%s\n", error->format().c_str());
    return false;
  }
  *out = std::get<kv::sim::Scenario>(std::move(parsed));
  if (auto error = kv::sim::validateScenario(*out)) {
    std::fprintf(stderr, "%s\n", error->format().c_str());
    return false;
  }
  return true;
}

int run(const std::vector<std::string>& args) {
  kv::sim::RunOptions options = defaultOptions();
  std::vector<kv::sim::Scenario> scenarios;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg == "--json") {
      options.json = true;
      continue;
    }
    if (arg == "--host-timeout") {
      double seconds = i + 1 < args.size() ? std::atof(args[i + 1].c_str()) : 0;
      if (seconds <= 0) {
        std::fprintf(stderr, "kavelin-sim run: --host-timeout needs a number of seconds\n");
        return 2;
      }
      options.hostTimeoutMs = static_cast<int>(seconds * 1000);
      ++i;
      continue;
    }
    std::ifstream in(arg);
    if (!in) {
      std::fprintf(stderr, "%s: cannot read\n", arg.c_str());
      return 2;
    }
    std::stringstream text;
    text << in.rdbuf();
    kv::sim::Scenario scenario;
    if (!load(text.str(), arg, &scenario)) return 2;
    scenarios.push_back(std::move(scenario));
  }
  if (scenarios.empty()) {
    std::fprintf(stderr, "kavelin-sim run: no scenario files\n");
    return 2;
  }
  bool allHeld = true;
  for (const auto& scenario : scenarios) allHeld = kv::sim::runScenario(scenario, options) && allHeld;
  return allHeld ? 0 : 1;
}

// hooks PROCESS [--device "DEVICE-LINE"] [--extension NAME]...
int hooks(const std::vector<std::string>& args) {
  std::string process;
  std::string deviceLine = "iphone ios 11.1 touchid";
  std::vector<std::string> extensions;
  for (size_t i = 0; i < args.size(); ++i) {
    bool hasValue = i + 1 < args.size();
    if (args[i] == "--device" && hasValue) {
      deviceLine = args[++i];
    } else if (args[i] == "--extension" && hasValue) {
      extensions.push_back(args[++i]);
    } else if (process.empty() && args[i].rfind("--", 0) != 0) {
      process = args[i];
    } else {
      std::fprintf(stderr, "kavelin-sim hooks: unexpected '%s'\n", args[i].c_str());
      return 2;
    }
  }
  if (process.empty()) {
    std::fprintf(stderr, "kavelin-sim hooks: which process? (SpringBoard, Preferences, Camera, "
                         "InCallService)\n");
    return 2;
  }
  return kv::sim::printInstallReport(process, deviceLine, extensions, defaultOptions());
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.empty()) {
    kv::sim::Scenario tour;
    if (!load(kv::tools::tourScenario(), "tour", &tour)) return 2;
    return kv::sim::runScenario(tour, defaultOptions()) ? 0 : 1;
  }
  if (args[0] == "help" || args[0] == "--help" || args[0] == "-h") {
    std::fputs(kv::sim::helpText().c_str(), stdout);
    return 0;
  }
  if (args[0] == "run") return run({args.begin() + 1, args.end()});
  if (args[0] == "hooks") return hooks({args.begin() + 1, args.end()});
  std::fprintf(stderr, "kavelin-sim: unknown command '%s' (see kavelin-sim help)\n", args[0].c_str());
  return 2;
}
