// kavelin-walk: random walks over the simulated device, checked after every
// step; a failing walk is shrunk and printed as a scenario.
//   kavelin-walk [--count N] [--seed S] [--steps N] [--shard I/K] [--out DIR]
//                [--shrink-tries N] [--host-timeout SECONDS] [--show]
// Runs walks S, S+1, ... S+N-1 (with --shard, only those whose index is I
// modulo K), then prints one line: "walks W steps N refused R failures F".
// Exit 0 when no walk failed, 1 when one did, 2 on bad arguments.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "sim/walk/walker.h"

namespace {

using kv::sim::walk::Broken;

bool number(const char* text, uint64_t* out) {
  char* end = nullptr;
  unsigned long long n = std::strtoull(text, &end, 10);
  if (end == text || *end != '\0') return false;
  *out = n;
  return true;
}

int usage(const char* why) {
  std::fprintf(stderr,
               "kavelin-walk: %s\nusage: kavelin-walk [--count N] [--seed S] [--steps N] "
               "[--shard I/K] [--out DIR] [--shrink-tries N] [--host-timeout SECONDS] [--show]\n",
               why);
  return 2;
}

// Shrinks a failed walk, prints its scenario and writes it to DIR; checks
// that kavelin-sim, running the file as it is, fails too.
void report(const kv::sim::walk::WalkResult& walk, const kv::sim::walk::WalkOptions& options,
            const std::string& dir) {
  std::printf("walk %llu FAILED after %d steps: %s: %s\n",
              static_cast<unsigned long long>(walk.seed), walk.steps,
              kv::sim::walk::brokenName(walk.verdict.broken), walk.verdict.details.c_str());
  int tries = 0;
  auto lines = kv::sim::walk::shrinkWalk(walk, options, &tries);
  std::string text = kv::sim::walk::scenarioText(walk, lines, walk.lines.size());
  std::error_code ec;
  std::filesystem::create_directories(dir, ec);
  std::string file = dir + "/walk-" + std::to_string(walk.seed) + ".scn";
  std::ofstream(file) << text;
  std::printf("---- shrunk in %d replays to %s\n%s----\n", tries, file.c_str(), text.c_str());

  auto parsed = kv::sim::parseScenario(text, file);
  bool fails = false;
  if (auto* scenario = std::get_if<kv::sim::Scenario>(&parsed)) {
    kv::sim::RunOptions run = options.run;
    run.out = std::fopen("/dev/null", "w");
    fails = !kv::sim::runScenario(*scenario, run);
    std::fclose(run.out);
  }
  std::printf("kavelin-sim run %s: %s\n", file.c_str(),
              fails ? "fails, as the walk did" : "PASSES (the failure needs the walker's checks)");
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  kv::sim::walk::WalkOptions options;
  options.run.hostPath = KAVELIN_HOST_PATH;
  options.run.libraryPath = KAVELIN_LIBRARY_PATH;
  options.run.privateLibraryDir = KAVELIN_PRIVATE_DIR;
  uint64_t count = 200, seed = 1, shard = 0, shards = 1;
  std::string out = std::filesystem::temp_directory_path().string() + "/kavelin-walks";
  bool show = false;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    if (arg == "--show") {  // print every walk's lines
      show = true;
      continue;
    }
    const char* value = i + 1 < argc ? argv[i + 1] : nullptr;
    uint64_t n = 0;
    if (value == nullptr) return usage(("missing value after " + arg).c_str());
    ++i;
    if (arg == "--count" && number(value, &n)) {
      count = n;
    } else if (arg == "--seed" && number(value, &n)) {
      seed = n;
    } else if (arg == "--steps" && number(value, &n) && n > 0) {
      options.minSteps = static_cast<int>(n);
    } else if (arg == "--shrink-tries" && number(value, &n)) {
      options.shrinkTries = static_cast<int>(n);
    } else if (arg == "--host-timeout" && std::atof(value) > 0) {
      options.run.hostTimeoutMs = static_cast<int>(std::atof(value) * 1000);
    } else if (arg == "--out") {
      out = value;
    } else if (arg == "--shard" &&
               std::sscanf(value, "%llu/%llu", reinterpret_cast<unsigned long long*>(&shard),
                           reinterpret_cast<unsigned long long*>(&shards)) == 2 &&
               shards > 0 && shard < shards) {
    } else {
      return usage(("bad argument " + arg + " " + value).c_str());
    }
  }

  auto started = std::chrono::steady_clock::now();
  uint64_t walks = 0, steps = 0, refused = 0, failures = 0;
  for (uint64_t i = 0; i < count; ++i) {
    if (i % shards != shard) continue;
    auto walk = kv::sim::walk::randomWalk(seed + i, options);
    ++walks;
    steps += static_cast<uint64_t>(walk.steps);
    refused += static_cast<uint64_t>(walk.refused);
    if (show) {
      std::printf("# walk %llu: %d steps, %d refused\n", static_cast<unsigned long long>(walk.seed),
                  walk.steps, walk.refused);
      for (const auto& line : walk.lines) std::printf("%s\n", line.c_str());
    }
    if (walk.verdict.broken != Broken::kNone) {
      ++failures;
      report(walk, options, out);
    }
  }
  double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  std::printf("walks %llu steps %llu refused %llu failures %llu seconds %.1f\n",
              static_cast<unsigned long long>(walks), static_cast<unsigned long long>(steps),
              static_cast<unsigned long long>(refused), static_cast<unsigned long long>(failures),
              seconds);
  return failures == 0 ? 0 : 1;
}
