// gate_bench's SpringBoard: a host of the simulated device that starts as
// kavelin-host does, with the platform's icon launch replaced by a stand-in
// that only answers before the library loads, and measures one size of the
// guard decision when the device asks (gate_bench.cpp says what and how).
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "bench/gate_bench.h"
#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/runtime.h"
#include "settings/settings.h"
#include "sim/host/actions.h"
#include "sim/host/host_start.h"

namespace {

using kv::platform::Sel;
using kv::platform::send;
using kv::platform::sendClass;
using kv::platform::Value;
using namespace kv::bench;

constexpr const char* kLaunch = "icon:launchFromLocation:context:activationSettings:actions:";
constexpr const char* kFloor =
    "kavelinBenchLaunch:fromLocation:context:activationSettings:actions:";

long gLaunches = 0;

// The platform's launch, answering only.
BOOL launchStandIn(id, SEL, id, long, id, id, id) {
  ++gLaunches;
  return 1;
}

// Before the library loads: the platform's launch becomes the stand-in, and
// the floor's selector answers with the same stand-in, never intercepted.
void replacePlatformLaunch() {
  Class app = kv::platform::classNamed("SBApplication");
  Method launch = class_getInstanceMethod(app, kv::platform::selector(kLaunch));
  if (launch == nullptr) return;
  method_setImplementation(launch, reinterpret_cast<IMP>(launchStandIn));
  class_addMethod(app, kv::platform::selector(kFloor), reinterpret_cast<IMP>(launchStandIn),
                  method_getTypeEncoding(launch));
}

id iconOf(const char* bundle) {
  id icons =
      send<id>(sendClass<id>(kv::platform::classNamed("SBIconController"), Sel("sharedInstance")),
               Sel("icons"));
  for (kv::platform::UInteger i = 0; i < kv::platform::arrayCount(icons); ++i) {
    id icon = kv::platform::arrayObjectAt(icons, i);
    if (!kv::platform::respondsTo(icon, Sel("applicationBundleID"))) continue;
    if (kv::platform::toString(send<id>(icon, Sel("applicationBundleID"))) == bundle) return icon;
  }
  return nullptr;
}

id applicationOf(const char* bundle) {
  id apps =
      sendClass<id>(kv::platform::classNamed("SBApplicationController"), Sel("sharedInstance"));
  return send<id>(apps, Sel("applicationWithBundleIdentifier:"), kv::platform::makeString(bundle));
}

id controller() {
  return sendClass<id>(kv::platform::classNamed("KavelinController"), Sel("sharedInstance"));
}

BOOL launch(id app, SEL sel, id icon) {
  return send<BOOL>(app, sel, icon, long{1}, id{nullptr}, id{nullptr}, id{nullptr});
}

// An autorelease pool drained every 1,024 calls, so that what the timed calls
// autorelease neither piles up nor costs a drain each time.
class DrainedPool {
 public:
  DrainedPool() : pool_(new kv::platform::AutoreleasePool()) {}
  ~DrainedPool() { delete pool_; }
  void tick() {
    if ((++calls_ & 1023) != 0) return;
    delete pool_;
    pool_ = new kv::platform::AutoreleasePool();
  }

 private:
  kv::platform::AutoreleasePool* pool_;
  int64_t calls_ = 0;
};

// Collects each benchmark's median.
class MedianReporter : public benchmark::ConsoleReporter {
 public:
  using ConsoleReporter::ConsoleReporter;
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    // The median of the repetitions, or the one run there is.
    for (const auto& run : runs) {
      const std::string& name = run.run_name.function_name;
      if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
        medians[name] = run.GetAdjustedRealTime();
      } else if (run.run_type == Run::RT_Iteration && run.repetitions <= 1) {
        medians[name] = run.GetAdjustedRealTime();
      }
    }
  }
  std::map<std::string, double> medians;
};

// Measures one size inside SpringBoard; args: the number of ids, then
// Google Benchmark's options.
Value measure(const kv::sim::host::ActionRequest& request, std::string* error) {
  if (request.args.empty()) {
    *error = "gate-bench: the number of ids first";
    return {};
  }
  int count = std::stoi(request.args[0]);
  std::vector<std::string> flags = {"gate_bench"};
  flags.insert(flags.end(), request.args.begin() + 1, request.args.end());
  std::vector<char*> argv;
  for (auto& f : flags) argv.push_back(f.data());
  int argc = static_cast<int>(argv.size());
  benchmark::Initialize(&argc, argv.data());

  kv::settings::ItemList list(protectedIds(count));
  const std::string hit = kProtectedApp;
  const std::string miss = kOtherApp;
  id protectedApp = applicationOf(kProtectedApp);
  id protectedIcon = iconOf(kProtectedApp);
  id otherApp = applicationOf(kOtherApp);
  id otherIcon = iconOf(kOtherApp);
  if (protectedApp == nullptr || protectedIcon == nullptr || otherApp == nullptr ||
      otherIcon == nullptr || gLaunches != 0) {
    *error = "gate-bench: the apps, their icons or the launch stand-in are missing";
    return {};
  }
  SEL launchSel = kv::platform::selector(kLaunch);
  SEL floorSel = kv::platform::selector(kFloor);

  // The prompt on screen, from a first protected launch; what it held is
  // taken back, as every timed call's is.
  launch(protectedApp, launchSel, protectedIcon);
  if (send<id>(controller(), Sel("invocation")) == nullptr || gLaunches != 0) {
    *error = "gate-bench: the protected launch was not held back";
    return {};
  }
  send<void>(controller(), Sel("setInvocation:"), id{nullptr});

  auto sized = [count](const char* what) {
    return std::string(what) + "/" + std::to_string(count);
  };
  benchmark::RegisterBenchmark(sized("bare_lookup_miss").c_str(), [&](benchmark::State& state) {
    for (auto _ : state) {
      bool found = list.contains(miss);
      benchmark::DoNotOptimize(found);
    }
  });
  benchmark::RegisterBenchmark(sized("bare_lookup_hit").c_str(), [&](benchmark::State& state) {
    for (auto _ : state) {
      bool found = list.contains(hit);
      benchmark::DoNotOptimize(found);
    }
  });
  benchmark::RegisterBenchmark(sized("floor_send").c_str(), [&](benchmark::State& state) {
    DrainedPool pool;
    for (auto _ : state) {
      BOOL launched = launch(otherApp, floorSel, otherIcon);
      benchmark::DoNotOptimize(launched);
      pool.tick();
    }
  });
  benchmark::RegisterBenchmark(sized("identifier_read").c_str(), [&](benchmark::State& state) {
    DrainedPool pool;
    SEL bundleId = kv::platform::selector("applicationBundleID");
    for (auto _ : state) {
      id identifier = send<id>(otherIcon, bundleId);
      benchmark::DoNotOptimize(identifier);
      pool.tick();
    }
  });
  // The platform's text of that id, as a guard must read it to look it up:
  // the string's only declared reader.
  benchmark::RegisterBenchmark(sized("text_read").c_str(), [&](benchmark::State& state) {
    DrainedPool pool;
    SEL utf8 = kv::platform::selector("UTF8String");
    id identifier = send<id>(otherIcon, kv::platform::selector("applicationBundleID"));
    for (auto _ : state) {
      const char* text = send<const char*>(identifier, utf8);
      benchmark::DoNotOptimize(text);
      pool.tick();
    }
  });
  // The platform's part of a protected decision: the domain synchronised
  // and the trusted networks copied, as every decision must do.
  benchmark::RegisterBenchmark(sized("preferences_read").c_str(), [&](benchmark::State& state) {
    kv::platform::AutoreleasePool outer;
    id domain = kv::platform::makeString(kDomain);
    id key = kv::platform::makeString("allowedWiFis");
    DrainedPool pool;
    for (auto _ : state) {
      pool.tick();
      CFPreferencesAppSynchronize(kv::platform::cf(domain));
      CFPropertyListRef value =
          CFPreferencesCopyAppValue(kv::platform::cf(key), kv::platform::cf(domain));
      if (value == nullptr) {
        state.SkipWithError("the trusted networks are not stored");
        break;
      }
      CFRelease(value);
    }
  });
  benchmark::RegisterBenchmark(sized("unprotected_launch").c_str(), [&](benchmark::State& state) {
    long before = gLaunches;
    int64_t n = 0;
    {
      DrainedPool pool;
      for (auto _ : state) {
        BOOL launched = launch(otherApp, launchSel, otherIcon);
        benchmark::DoNotOptimize(launched);
        ++n;
        pool.tick();
      }
    }
    if (gLaunches - before != n)
      state.SkipWithError("an unprotected launch did not reach the platform");
  });
  benchmark::RegisterBenchmark(sized("protected_launch").c_str(), [&](benchmark::State& state) {
    id kavelin = controller();
    int64_t n = 0;
    long before = gLaunches;
    auto* pool = new kv::platform::AutoreleasePool();
    for (auto _ : state) {
      auto start = std::chrono::steady_clock::now();
      BOOL launched = launch(protectedApp, launchSel, protectedIcon);
      auto end = std::chrono::steady_clock::now();
      state.SetIterationTime(std::chrono::duration<double>(end - start).count());
      if (launched != 0 || send<id>(kavelin, Sel("invocation")) == nullptr) {
        state.SkipWithError("a protected launch was not held back");
        break;
      }
      send<void>(kavelin, Sel("setInvocation:"), id{nullptr});
      if ((++n & 255) == 0) {
        // The prompt's retries, scheduled while it is on screen, and what
        // the calls left to autorelease.
        sendClass<void>(kv::platform::classNamed("NSObject"),
                        Sel("cancelPreviousPerformRequestsWithTarget:selector:object:"), kavelin,
                        kv::platform::selector("showAlert"), id{nullptr});
        delete pool;
        pool = new kv::platform::AutoreleasePool();
      }
    }
    delete pool;
    if (gLaunches != before) state.SkipWithError("a protected launch reached the platform");
  })->UseManualTime();

  MedianReporter reporter(benchmark::ConsoleReporter::OO_Tabular);
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::ClearRegisteredBenchmarks();
  std::fflush(stdout);
  Value::Dictionary out;
  for (const auto& [name, ns] : reporter.medians) {
    out[name.substr(0, name.find('/'))] = Value::real(ns);
  }
  return Value::dictionary(std::move(out));
}

}  // namespace

int main(int argc, char** argv) {
  kv::sim::host::registerAction(kBenchAction, measure);
  return kv::sim::host::runHost(argc, argv, replacePlatformLaunch);
}
