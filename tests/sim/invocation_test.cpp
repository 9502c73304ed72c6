// Tests of block arguments in the host's Foundation: a method that takes a
// block has a signature, and an invocation that retains its arguments keeps
// its own copy of each block, as a guard's stored call needs when it is
// invoked after the caller is gone.
#include <gtest/gtest.h>

#include <memory>

#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "sim/host/classes.h"
#include "sim/host/invocations.h"

namespace kv::sim::host {
namespace {

using platform::Sel;
using platform::send;
using platform::sendClass;

int gCalls = 0;

// -[SimBlockTaker take:count:completion:] calls the completion with the count.
void take(id, SEL, id, long count, id completion) {
  platform::callBlock<void(long)>(completion, count);
}

class InvocationTest : public ::testing::Test {
 protected:
  void SetUp() override {
    static bool installed = [] {
      // An invocation at work before: its class has a dispatch table of its
      // own, which must see the replaced methods too.
      id signature = sendClass<id>(platform::classNamed("NSMethodSignature"),
                                   Sel("signatureWithObjCTypes:"), "v@:");
      id early = sendClass<id>(platform::classNamed("NSInvocation"),
                               Sel("invocationWithMethodSignature:"), signature);
      send<BOOL>(early, Sel("argumentsRetained"));
      EXPECT_EQ(installBlockArguments(), std::vector<std::string>{});
      ClassBuilder("SimBlockTaker", "NSObject")
          .instance("take:count:completion:", imp(take), "v@:@q@?")
          .build();
      return true;
    }();
    ASSERT_TRUE(installed);
    taker_ = newObject(platform::classNamed("SimBlockTaker"));
    gCalls = 0;
  }
  void TearDown() override { send<void>(taker_, Sel("release")); }

  // A retained-arguments invocation of take:count:completion: with `block`;
  // the caller owns it.
  id invocationWith(id block) {
    SEL sel = platform::selector("take:count:completion:");
    id signature = send<id>(taker_, Sel("methodSignatureForSelector:"), sel);
    EXPECT_NE(signature, nullptr);
    id invocation = send<id>(sendClass<id>(platform::classNamed("NSInvocation"), Sel("alloc")),
                             Sel("initWithMethodSignature:"), signature);
    send<void>(invocation, Sel("setTarget:"), taker_);
    send<void>(invocation, Sel("setSelector:"), sel);
    long count = 3;
    send<void>(invocation, Sel("setArgument:atIndex:"), static_cast<void*>(&count), 3L);
    send<void>(invocation, Sel("setArgument:atIndex:"), static_cast<void*>(&block), 4L);
    send<void>(invocation, Sel("retainArguments"));
    return invocation;
  }

  id taker_ = nullptr;
};

TEST_F(InvocationTest, SignaturesReadBlockArguments) {
  platform::AutoreleasePool pool;
  id signature = send<id>(taker_, Sel("methodSignatureForSelector:"),
                          platform::selector("take:count:completion:"));
  ASSERT_NE(signature, nullptr);
  EXPECT_EQ(send<platform::UInteger>(signature, Sel("numberOfArguments")), 5u);
  EXPECT_STREQ(send<const char*>(signature, Sel("getArgumentTypeAtIndex:"), 4UL),
               "^{Block_layout=}");
  // Types without a block read as before.
  id plain = sendClass<id>(platform::classNamed("NSMethodSignature"),
                           Sel("signatureWithObjCTypes:"), "C@:@q");
  EXPECT_STREQ(send<const char*>(plain, Sel("getArgumentTypeAtIndex:"), 3UL), "q");
}

// The invocation outlives both the caller's stack block and its heap block:
// it invokes its own copy, which holds what the block captured until the
// invocation goes.
TEST_F(InvocationTest, RetainedInvocationsKeepTheirOwnCopyOfEachBlock) {
  platform::AutoreleasePool pool;
  auto captured = std::make_shared<int>(0);
  id invocation = nullptr;
  {
    std::shared_ptr<int> inBlock = captured;
    void (^block)(long) = ^(long n) {
      *inBlock += static_cast<int>(n);
      ++gCalls;
    };
    id heap = platform::copyBlock(platform::asObject(block));
    long before = captured.use_count();
    invocation = invocationWith(heap);
    EXPECT_EQ(captured.use_count(), before) << "a heap block gains a reference, not a copy";
    platform::releaseBlock(heap);
  }
  send<void>(invocation, Sel("invoke"));
  EXPECT_EQ(gCalls, 1);
  EXPECT_EQ(*captured, 3);
  EXPECT_GT(captured.use_count(), 1) << "the invocation's copy still holds the capture";
  send<void>(invocation, Sel("release"));
  EXPECT_EQ(captured.use_count(), 1) << "the copy went with the invocation";
}

TEST_F(InvocationTest, StackBlocksAreCopiedWhenArgumentsAreRetained) {
  platform::AutoreleasePool pool;
  auto captured = std::make_shared<int>(0);
  id invocation = nullptr;
  {
    std::shared_ptr<int> inBlock = captured;
    void (^block)(long) = ^(long n) {
      *inBlock += static_cast<int>(n);
    };
    long before = captured.use_count();
    invocation = invocationWith(platform::asObject(block));
    EXPECT_EQ(captured.use_count(), before + 1) << "the stack block moved to the heap";
  }
  send<void>(invocation, Sel("invoke"));
  EXPECT_EQ(*captured, 3);

  // A block set after the arguments were retained replaces the copy.
  auto second = std::make_shared<int>(0);
  {
    std::shared_ptr<int> inBlock = second;
    void (^other)(long) = ^(long n) {
      *inBlock -= static_cast<int>(n);
    };
    id otherObject = platform::asObject(other);
    send<void>(invocation, Sel("setArgument:atIndex:"), static_cast<void*>(&otherObject), 4L);
  }
  EXPECT_EQ(captured.use_count(), 1) << "the replaced copy was released";
  send<void>(invocation, Sel("invoke"));
  EXPECT_EQ(*second, -3);
  EXPECT_EQ(*captured, 3);
  send<void>(invocation, Sel("release"));
  EXPECT_EQ(second.use_count(), 1);
}

TEST_F(InvocationTest, NilBlocksStayNil) {
  platform::AutoreleasePool pool;
  id invocation = invocationWith(nullptr);
  send<void>(invocation, Sel("invoke"));  // the method calls a nil block: nothing happens
  id block = reinterpret_cast<id>(1);
  send<void>(invocation, Sel("getArgument:atIndex:"), static_cast<void*>(&block), 4L);
  EXPECT_EQ(block, nullptr);
  send<void>(invocation, Sel("release"));
}

}  // namespace
}  // namespace kv::sim::host
