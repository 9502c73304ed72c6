// Blocks as objects in a host: they answer messages as on a device, so a
// stored call can retain a block argument and a collection can hold one.
#include "sim/host/blocks.h"

#include <gtest/gtest.h>

#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/invocation.h"
#include "platform/runtime.h"
#include "sim/host/invocations.h"

namespace kv::sim::host {
namespace {

using platform::Sel;
using platform::send;

int gCalls = 0;

// A method that takes a completion block and calls it.
void runCompletion(id, SEL, id completion) {
  platform::callBlock<void(int)>(completion, 7);
}

TEST(BlockObjects, BlocksAnswerMessagesByWhereTheyLive) {
  installBlockClasses();
  platform::AutoreleasePool pool;
  int base = 2;
  void (^onStack)(int) = ^(int x) {
    gCalls += base + x;
  };
  id stack = platform::asObject(onStack);
  EXPECT_STREQ(platform::classNameOf(stack), "__NSStackBlock__");
  EXPECT_EQ(send<id>(stack, Sel("retain")), stack) << "a stack block is not moved by retain";
  EXPECT_TRUE(platform::respondsTo(stack, Sel("copy")));

  id heap = send<id>(stack, Sel("copy"));
  EXPECT_NE(heap, stack);
  EXPECT_TRUE(platform::isKindOf(heap, "NSObject"));
  id array = platform::makeArray({heap});  // a collection retains it
  send<void>(heap, Sel("release"));
  platform::callBlock<void(int)>(platform::arrayObjectAt(array, 0), 1);
  EXPECT_EQ(gCalls, 3);

  void (^global)(void) = ^{
  };
  EXPECT_STREQ(platform::classNameOf(platform::asObject(global)), "__NSGlobalBlock__");
}

TEST(BlockObjects, AStoredCallKeepsACopyTheCallerLetsGo) {
  installBlockClasses();
  ASSERT_EQ(installBlockArguments(), std::vector<std::string>{});
  Class cls = objc_allocateClassPair(platform::classNamed("NSObject"), "BlockTaker", 0);
  class_addMethod(cls, Sel("run:"), reinterpret_cast<IMP>(runCompletion), "v@:@?");
  objc_registerClassPair(cls);
  id taker = send<id>(send<id>(platform::asId(cls), Sel("alloc")), Sel("init"));
  platform::Retained call;
  {
    platform::AutoreleasePool pool;
    int captured = 10;
    // As a guard keeps a block argument: its own copy, by message.
    id copied = send<id>(platform::asObject(^(int x) {
                           gCalls = captured + x;
                         }),
                         Sel("copy"));
    call = platform::invocationOf(taker, Sel("run:"), copied);
    ASSERT_TRUE(call);
    platform::retainArguments(call.get());
    send<void>(copied, Sel("release"));  // the stored call keeps it alive
  }
  gCalls = 0;
  platform::invoke(call.get());
  EXPECT_EQ(gCalls, 17);
}

}  // namespace
}  // namespace kv::sim::host
