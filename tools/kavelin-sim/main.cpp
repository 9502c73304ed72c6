// kavelin-sim: runs Kavelin on a simulated device.
//   kavelin-sim [--pictures DIR]     the tour, with its pictures
//   kavelin-sim run [--json] [--pictures DIR] FILE...
//                                    scenarios (exit 0 all held, 1 a failure, 2 unparsable)
//   kavelin-sim prompt-cycles COUNT  the prompt's memory and time over many cycles
//   kavelin-sim help                 statements, actions, predicates, profiles
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "sim/device/runner.h"
#include "sim/device/signatures.h"
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

// Where a run's pictures go, when it takes them.
struct PictureOptions {
  std::string directory;  // "" for none
  double scale = 0;
  bool rewriteLooks = false;
};

// Reads a picture option at args[*i]; true when it was one (even a bad
// one: then *error says why).
bool pictureOption(const std::vector<std::string>& args, size_t* i, PictureOptions* p,
                   std::string* error) {
  const std::string& arg = args[*i];
  bool hasValue = *i + 1 < args.size();
  if (arg == "--pictures") {
    if (!hasValue)
      *error = "--pictures needs a directory";
    else
      p->directory = args[++*i];
    return true;
  }
  if (arg == "--picture-scale") {
    double scale = hasValue ? std::atof(args[++*i].c_str()) : 0;
    if (scale <= 0 || scale > 4)
      *error = "--picture-scale needs a number of pixels a point, up to 4";
    p->scale = scale;
    return true;
  }
  if (arg == "--rewrite-looks") {
    p->rewriteLooks = true;
    return true;
  }
  return false;
}

// Runs scenarios, taking their pictures into an album when asked.
int runAll(const std::vector<kv::sim::Scenario>& scenarios, kv::sim::RunOptions options,
           const PictureOptions& pictures) {
  std::unique_ptr<kv::sim::render::Album> album;
  if (!pictures.directory.empty()) {
    std::error_code ec;
    std::filesystem::create_directories(pictures.directory, ec);
    if (ec) {
      std::fprintf(stderr, "kavelin-sim: cannot make %s: %s\n", pictures.directory.c_str(),
                   ec.message().c_str());
      return 2;
    }
    album = std::make_unique<kv::sim::render::Album>(pictures.directory);
  }
  options.album = album.get();
  options.pictureScale = pictures.scale;
  options.rewriteLooks = pictures.rewriteLooks;
  bool allHeld = true;
  for (const auto& scenario : scenarios)
    allHeld = kv::sim::runScenario(scenario, options) && allHeld;
  if (album) {
    std::string error;
    if (!album->writeIndex(&error)) {
      std::fprintf(stderr, "kavelin-sim: %s\n", error.c_str());
      return 1;
    }
    std::fprintf(options.out, "pictures: %zu in %s/index.html\n", album->pictureCount(),
                 pictures.directory.c_str());
  }
  return allHeld ? 0 : 1;
}

int run(const std::vector<std::string>& args) {
  kv::sim::RunOptions options = defaultOptions();
  PictureOptions pictures;
  std::vector<kv::sim::Scenario> scenarios;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg == "--json") {
      options.json = true;
      continue;
    }
    std::string error;
    if (pictureOption(args, &i, &pictures, &error)) {
      if (error.empty()) continue;
      std::fprintf(stderr, "kavelin-sim run: %s\n", error.c_str());
      return 2;
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
  return runAll(scenarios, options, pictures);
}

// The tour, its pictures in the build tree unless --pictures says elsewhere.
int tour(const std::vector<std::string>& args) {
  PictureOptions pictures{KAVELIN_TOUR_PICTURES};
  for (size_t i = 0; i < args.size(); ++i) {
    std::string error;
    if (!pictureOption(args, &i, &pictures, &error) || !error.empty()) {
      std::fprintf(stderr, "kavelin-sim: %s\n",
                   error.empty() ? ("unexpected '" + args[i] + "' (see kavelin-sim help)").c_str()
                                 : error.c_str());
      return 2;
    }
  }
  kv::sim::Scenario scenario;
  if (!load(kv::tools::tourScenario(), "tour", &scenario)) return 2;
  return runAll({scenario}, defaultOptions(), pictures);
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
    std::fprintf(stderr,
                 "kavelin-sim hooks: which process? (SpringBoard, Preferences, Camera, "
                 "InCallService)\n");
    return 2;
  }
  return kv::sim::printInstallReport(process, deviceLine, extensions, defaultOptions());
}

// prompt-cycles COUNT [--every N] [--device "DEVICE-LINE"]
int promptCycles(const std::vector<std::string>& args) {
  int count = 0;
  int every = 1000;
  std::string deviceLine = "iphone ios 11.1 touchid";
  for (size_t i = 0; i < args.size(); ++i) {
    bool hasValue = i + 1 < args.size();
    if (args[i] == "--device" && hasValue) {
      deviceLine = args[++i];
    } else if (args[i] == "--every" && hasValue) {
      every = std::atoi(args[++i].c_str());
    } else if (count == 0 && std::atoi(args[i].c_str()) > 0) {
      count = std::atoi(args[i].c_str());
    } else {
      std::fprintf(stderr, "kavelin-sim prompt-cycles: unexpected '%s'\n", args[i].c_str());
      return 2;
    }
  }
  if (count <= 0 || every <= 0) {
    std::fprintf(stderr, "kavelin-sim prompt-cycles: how many cycles? (a number above 0)\n");
    return 2;
  }
  return kv::sim::runPromptCycles(count, every, deviceLine, defaultOptions());
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (!args.empty() && (args[0] == "help" || args[0] == "--help" || args[0] == "-h")) {
    std::fputs(kv::sim::helpText().c_str(), stdout);
    return 0;
  }
  if (args.empty() || args[0].rfind("--", 0) == 0) return tour(args);
  if (args[0] == "run") return run({args.begin() + 1, args.end()});
  if (args[0] == "hooks") return hooks({args.begin() + 1, args.end()});
  if (args[0] == "prompt-cycles") return promptCycles({args.begin() + 1, args.end()});
  if (args[0] == "signatures" && args.size() == 2) {
    return kv::sim::checkSignatures(args[1], defaultOptions());
  }
  std::fprintf(stderr, "kavelin-sim: unknown command '%s' (see kavelin-sim help)\n",
               args[0].c_str());
  return 2;
}
