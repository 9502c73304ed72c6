// A host of the simulated device: it takes its profile from the device,
// makes Foundation answer as that iOS process, defines the simulated
// frameworks, loads the library so that its load-time constructor runs, and
// then serves its main run loop on the device's clock.
#include "sim/host/host_start.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "platform/foundation.h"
#include "sim/frameworks/frameworks.h"
#include "sim/host/actions.h"
#include "sim/host/blocks.h"
#include "sim/host/fs_redirect.h"
#include "sim/host/invocations.h"
#include "sim/host/link.h"
#include "sim/host/profile.h"
#include "sim/host/run_loop.h"
#include "sim/render/host/capture.h"

namespace kv::sim::host {
void defineMessagingCenter();
void defineProbe();
void registerImageActions();
void loadExtensionsBeforeLibrary();
void registerDiagnosticActions();
}  // namespace kv::sim::host

namespace {

using kv::platform::Value;
namespace host = kv::sim::host;

std::function<void()>& beforeLibrary() {
  static auto* hook = new std::function<void()>();
  return *hook;
}

// Start-up, in the order a device starts a process with an injected library.
Value::Dictionary hello(const Value& command) {
  host::setProfile(host::profileFrom(command));
  const host::Profile& p = host::profile();
  host::setProcessName(p.processName);
  kv::sim::setDeviceRoot(p.root);
  setenv("TZ", "UTC", 1);
  host::setNowNanos(command["now"].asInteger());

  kv::platform::AutoreleasePool pool;
  host::applyProfile();
  host::installBlockClasses();
  for (const auto& problem : host::installVirtualTime())
    host::logEvent("error", "clock: " + problem);
  for (const auto& problem : host::installBlockArguments())
    host::logEvent("error", "invocations: " + problem);
  host::defineMessagingCenter();
  host::defineProbe();
  kv::sim::frameworks::defineFrameworks();
  if (beforeLibrary()) beforeLibrary()();
  for (const auto& path : p.privateLibraries) {
    if (dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL) == nullptr) {
      host::logEvent("error", std::string("private library: ") + dlerror());
    }
  }
  host::loadExtensionsBeforeLibrary();
  if (!p.library.empty()) {
    if (dlopen(p.library.c_str(), RTLD_NOW | RTLD_GLOBAL) == nullptr) {
      host::logEvent("error", std::string("cannot load the library: ") + dlerror());
      return {{"error", Value::string(std::string("cannot load the library: ") + dlerror())}};
    }
  }
  host::logEvent("start", p.processName + " (" + p.bundleIdentifier + ") on iOS " + p.osVersion);
  kv::sim::frameworks::startProcess();
  host::runDue();
  return {};
}

}  // namespace

namespace kv::sim::host {

int runHost(int argc, char** argv, std::function<void()> beforeLibraryLoads) {
  beforeLibrary() = std::move(beforeLibraryLoads);
  if (argc < 2 || std::string(argv[1]).rfind("--fd=", 0) != 0) {
    std::fprintf(stderr, "kavelin-host: started by kavelin-sim only (--fd=N)\n");
    return 2;
  }
  host::attachToDevice(std::atoi(argv[1] + 5));
  host::registerCoreCommands();
  host::registerImageActions();
  host::registerDiagnosticActions();
  host::registerHoldActions();
  kv::sim::render::registerSceneQuery();  // what it shows, for pictures of the screen
  // What the library installed in this process, as it reports it.
  host::registerQuery("hooks", [](const std::vector<std::string>&) {
    using Report = const char* (*)();
    auto report = reinterpret_cast<Report>(dlsym(RTLD_DEFAULT, "kavelinInstallReport"));
    return Value::string(report != nullptr ? report() : "");
  });
  // The encodings of the library's rows, as its replacements declare them.
  host::registerQuery("row-encodings", [](const std::vector<std::string>&) {
    using Report = const char* (*)();
    auto report = reinterpret_cast<Report>(dlsym(RTLD_DEFAULT, "kavelinRowEncodings"));
    return Value::string(report != nullptr ? report() : "");
  });
  // The encodings of platform methods as this process defines them:
  // "CLASS -selector" or "CLASS +selector" in, the encoding out (absent
  // when the class or method does not exist here).
  host::registerQuery("encodings", [](const std::vector<std::string>& methods) {
    Value::Dictionary out;
    for (const auto& m : methods) {
      auto space = m.find(' ');
      if (space == std::string::npos || space + 2 > m.size()) continue;
      Class cls = objc_getClass(m.substr(0, space).c_str());
      if (cls == nullptr) continue;
      SEL sel = sel_registerName(m.substr(space + 2).c_str());
      Method method =
          m[space + 1] == '+' ? class_getClassMethod(cls, sel) : class_getInstanceMethod(cls, sel);
      if (method != nullptr) out[m] = Value::string(method_getTypeEncoding(method));
    }
    return Value::dictionary(std::move(out));
  });
  host::onCommand("hello", hello);
  host::serve();
  return 0;
}

}  // namespace kv::sim::host
