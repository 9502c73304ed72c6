// Block helpers: copying a stack block so it outlives its scope, calling a
// block object, and nil blocks.
#include "platform/blocks.h"

#include <gtest/gtest.h>

namespace kv {
namespace {

using platform::callBlock;

id makeAdder(int base) {
  int (^adder)(int) = ^(int x) {
    return base + x;
  };
  return platform::copyBlock(platform::asObject(adder));  // leaves the stack frame
}

TEST(Blocks, CopiedBlocksOutliveTheirScopeAndKeepTheirCaptures) {
  id adder = makeAdder(40);
  EXPECT_EQ(callBlock<int(int)>(adder, 2), 42);
  id again = platform::copyBlock(adder);  // a heap block gains a reference
  platform::releaseBlock(adder);
  EXPECT_EQ(callBlock<int(int)>(again, 1), 41);
  platform::releaseBlock(again);
}

TEST(Blocks, NilBlocksAnswerZero) {
  EXPECT_EQ(callBlock<int(int)>(nullptr, 2), 0);
  callBlock<void(id)>(nullptr, nullptr);
  EXPECT_EQ(platform::copyBlock(nullptr), nullptr);
}

TEST(Blocks, CapturedStateIsShared) {
  __block int calls = 0;
  void (^counter)(void) = ^{
    ++calls;
  };
  id copied = platform::copyBlock(platform::asObject(counter));
  callBlock<void()>(copied);
  callBlock<void()>(copied);
  EXPECT_EQ(calls, 2);
  platform::releaseBlock(copied);
}

}  // namespace
}  // namespace kv
