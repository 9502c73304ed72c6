// The host's run loop on virtual time: order, delays, cancellation, blocks,
// timers and the clock, through Foundation's own entry points.
#include "sim/host/run_loop.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/runtime.h"
#include "sim/host/classes.h"

namespace kv::sim::host {
namespace {

using platform::Sel;
using platform::send;

constexpr int64_t kSecond = 1000000000;

std::vector<std::string>& calls() {
  static std::vector<std::string> list;
  return list;
}

void record(id, SEL, id tag) {
  calls().push_back(platform::toString(tag));
}

class RunLoop : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(installVirtualTime(), std::vector<std::string>{});
    setNowNanos(kSecond * 1000);
    target_ = platform::asId(ClassBuilder("RunLoopTarget", "NSObject")
                                 .classMethod("record:", imp(record), "v@:@")
                                 .build());
  }
  void performLater(const char* tag, double delay) {
    send<void>(target_, Sel("performSelector:withObject:afterDelay:"),
               platform::selector("record:"), platform::makeString(tag), delay);
  }
  void advanceTo(double seconds) {
    int64_t t = std::llround(seconds * 1e9);
    while (nextDue() && *nextDue() <= t) {
      setNowNanos(*nextDue());
      runDue();
    }
    setNowNanos(t);
  }
  platform::AutoreleasePool pool_;
  id target_ = nullptr;
};

TEST_F(RunLoop, DelayedPerformsRunInDueOrderAndOnlyWhenTimeMoves) {
  performLater("b", 2);
  performLater("a", 1);
  performLater("a2", 1);  // same moment: queued order
  EXPECT_EQ(runDue(), 0);
  EXPECT_EQ(nextDue(), kSecond * 1001);
  advanceTo(1001.5);
  EXPECT_EQ(calls(), (std::vector<std::string>{"a", "a2"}));
  advanceTo(1002);
  EXPECT_EQ(calls(), (std::vector<std::string>{"a", "a2", "b"}));
  EXPECT_EQ(nextDue(), std::nullopt);
}

TEST_F(RunLoop, InstancesAndClassesPerformAlike) {
  id instance = platform::sendClass<id>(platform::classNamed("NSObject"), Sel("new"));
  for (id target : {instance, target_}) {
    send<void>(target, Sel("performSelector:withObject:afterDelay:"), Sel("description"),
               id{nullptr}, 1.0);
    send<void>(target, Sel("performSelector:withObject:afterDelay:inModes:"), Sel("description"),
               id{nullptr}, 2.0, id{nullptr});
    ASSERT_TRUE(nextDue().has_value()) << platform::classNameOf(target);
    platform::sendClass<void>(platform::classNamed("NSObject"),
                              Sel("cancelPreviousPerformRequestsWithTarget:"), target);
    EXPECT_FALSE(nextDue().has_value()) << "only performs of this run loop can be cancelled";
  }
  send<void>(instance, Sel("release"));
}

TEST_F(RunLoop, CancellationMatchesTargetSelectorAndEqualArgument) {
  performLater("keep", 1);
  performLater("drop", 1);
  performLater("drop", 2);
  // An equal (not identical) argument cancels both "drop" performs.
  send<void>(target_, Sel("cancelPreviousPerformRequestsWithTarget:selector:object:"), target_,
             platform::selector("record:"), platform::makeString("drop"));
  advanceTo(1005);
  EXPECT_EQ(calls(), std::vector<std::string>{"keep"});
  performLater("x", 1);
  performLater("y", 1);
  send<void>(target_, Sel("cancelPreviousPerformRequestsWithTarget:"), target_);
  advanceTo(10);
  EXPECT_EQ(calls(), std::vector<std::string>{"keep"});
}

TEST_F(RunLoop, MainQueueBlocksKeepTheirCapturesUntilTheyRun) {
  std::string word = "captured";
  __block std::vector<std::string>* seen = &calls();
  dispatch_async(dispatch_get_main_queue(), ^{
    seen->push_back(word + " now");
  });
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, 500000000), dispatch_get_main_queue(), ^{
    seen->push_back(word + " later");
  });
  word = "changed";
  runDue();
  EXPECT_EQ(calls(), std::vector<std::string>{"captured now"});
  advanceTo(1000.4);
  EXPECT_EQ(calls().size(), 1u);
  advanceTo(1000.5);
  EXPECT_EQ(calls(), (std::vector<std::string>{"captured now", "captured later"}));
}

TEST_F(RunLoop, FoundationClockFollowsTheVirtualClock) {
  id date = platform::sendClass<id>(platform::classNamed("NSDate"), Sel("date"));
  EXPECT_EQ(send<double>(date, Sel("timeIntervalSinceReferenceDate")), 1000);
  EXPECT_EQ(CFAbsoluteTimeGetCurrent(), 1000);
  id later = platform::sendClass<id>(platform::classNamed("NSDate"),
                                     Sel("dateWithTimeIntervalSinceNow:"), 30.0);
  setNowNanos(kSecond * 1010);
  EXPECT_EQ(send<double>(later, Sel("timeIntervalSinceNow")), 20);
}

void tick(id, SEL, id timer) {
  calls().push_back(platform::toString(send<id>(timer, Sel("userInfo"))));
}

TEST_F(RunLoop, TimersFireAtTheirDatesAndRepeatUntilInvalidated) {
  Class cls =
      ClassBuilder("TimerTarget", "NSObject").classMethod("tick:", imp(tick), "v@:@").build();
  id timer = platform::sendClass<id>(
      platform::classNamed("NSTimer"),
      Sel("scheduledTimerWithTimeInterval:target:selector:userInfo:repeats:"), 1.5,
      platform::asId(cls), platform::selector("tick:"), platform::makeString("t"), BOOL{1});
  platform::sendClass<id>(platform::classNamed("NSTimer"),
                          Sel("scheduledTimerWithTimeInterval:target:selector:userInfo:repeats:"),
                          2.0, platform::asId(cls), platform::selector("tick:"),
                          platform::makeString("once"), BOOL{0});
  advanceTo(1004.6);
  EXPECT_EQ(calls(), (std::vector<std::string>{"t", "once", "t", "t"}));
  send<void>(timer, Sel("invalidate"));
  advanceTo(1010);
  EXPECT_EQ(calls().size(), 4u);
}

}  // namespace
}  // namespace kv::sim::host
