#include <gtest/gtest.h>
#include "sim/host/run_loop.h"
#include "platform/foundation.h"
#include "platform/runtime.h"
namespace kv::sim::host { void defineProbe(); }
using namespace kv;
TEST(Dbg, Probe) {
  platform::AutoreleasePool pool;
  sim::host::installVirtualTime();
  sim::host::defineProbe();
  Class c = platform::classNamed("SimProbe");
  platform::sendClass<void>(c, platform::Sel("performLater:delay:"), platform::makeString("x"), platform::makeInteger(1));
  printf("due %d\n", (int)sim::host::nextDue().has_value());
  platform::sendClass<void>(c, platform::Sel("cancelLater:"), platform::makeString("x"));
  printf("due after cancel %d\n", (int)sim::host::nextDue().has_value());
}
