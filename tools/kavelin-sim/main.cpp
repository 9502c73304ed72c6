// kavelin-sim: runs Kavelin on a simulated device. Until the simulated device
// exists it reports what this host offers the library: the Objective-C
// runtime, Foundation, and the interception mechanism.
#include <cstdio>
#include <string>

#include "platform/foundation.h"
#include "platform/hook.h"

namespace {

using kv::platform::Hook;

// A stand-in platform method and its interception, to show the mechanism at work.
int platformAnswer(id, SEL) { return 41; }
int interceptedAnswer(id self, SEL cmd) { return Hook<&interceptedAnswer>::original(self, cmd) + 1; }

int tour() {
  kv::platform::AutoreleasePool pool;
  std::printf("Kavelin simulated device: the platform layer\n");
  id info = kv::platform::sendClass<id>(kv::platform::classNamed("NSProcessInfo"),
                                        kv::platform::selector("processInfo"));
  std::printf("  Foundation:  %s (process \"%s\")\n",
              kv::platform::classNamed("NSString") ? "GNUstep Base" : "missing",
              kv::platform::toString(kv::platform::send<id>(info, kv::platform::selector("processName")))
                  .c_str());

  Class cls = objc_allocateClassPair(kv::platform::classNamed("NSObject"), "TourPlatformClass", 0);
  class_addMethod(cls, kv::platform::selector("answer"), reinterpret_cast<IMP>(platformAnswer), "i@:");
  objc_registerClassPair(cls);
  const kv::platform::Row rows[] = {
      kv::platform::replaced<&interceptedAnswer>("TourPlatformClass", "-answer"),
      kv::platform::replaced<&interceptedAnswer>("SBApplication", "-icon:launchFromLocation:"),
  };
  std::printf("  interception report:\n");
  for (const auto& record : kv::platform::installRows(rows)) {
    std::printf("    %s\n", kv::platform::describe(record).c_str());
  }
  id obj = kv::platform::send<id>(kv::platform::sendClass<id>(cls, kv::platform::selector("alloc")),
                                  kv::platform::selector("init"));
  std::printf("  -answer: platform says 41, intercepted says %d\n",
              kv::platform::send<int>(obj, kv::platform::selector("answer")));
  std::printf("The simulated device (SpringBoard and the other hosts) is not built yet.\n");
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1) {
    std::fprintf(stderr, "kavelin-sim: '%s': scenarios need the simulated device, not built yet\n",
                 argv[1]);
    return 2;
  }
  return tour();
}
