// Darwin notification states through the library's token slots: each name
// keeps its own state, and its token is registered once for the life of
// the process, not again on every read or write (a token is a registration
// the notification server keeps until it is cancelled).
#include "settings/notifications.h"

#include <gtest/gtest.h>

#include "platform/functions.h"

namespace kv::settings {
namespace {

// The simulated notify functions hand out tokens in increasing order, so
// the distance between two fresh tokens counts the registrations between.
int freshToken() {
  int token = -1;
  notify_register_check("net.quorvan.test.counter", &token);
  return token;
}

TEST(NotificationStates, EachNameKeepsItsStateAndOneToken) {
  registerToken(Note::kLockState);
  setState(Note::kGracePeriod, 1);
  publish(Note::kIdentities, 0);
  const int before = freshToken();
  for (uint64_t i = 0; i < 3; ++i) {
    registerToken(Note::kLockState);
    setState(Note::kGracePeriod, 10 + i);
    publish(Note::kIdentities, 20 + i);
    EXPECT_EQ(stateOf(Note::kGracePeriod), 10 + i);
    EXPECT_EQ(stateOf(Note::kIdentities), 20 + i);
  }
  EXPECT_EQ(freshToken(), before + 1) << "names already used registered again";
}

}  // namespace
}  // namespace kv::settings
