// The file channel's message names: four letters or digits packed into a
// notification's state, first character highest; anything else names no
// message (the name becomes part of a file path).
#include "core/file_channel.h"

#include <gtest/gtest.h>

namespace kv::core {
namespace {

TEST(FileChannel, UnpacksFourCharacterNames) {
  EXPECT_EQ(unpackMessageName(0x6170704cu), "appL");
  EXPECT_EQ(unpackMessageName(0x62633131u), "bc11");
  // Only the low 32 bits carry the name.
  EXPECT_EQ(unpackMessageName(0xffffffff00000000ull | 0x69647336u), "ids6");
}

TEST(FileChannel, RefusesWhatIsNoName) {
  struct Case {
    uint64_t state;
    const char* why;
  };
  for (const Case& c :
       {Case{0, "empty"}, Case{0x2e2e2f61u, "a path: ../a"},
        Case{0x61707000u, "three characters and a NUL"},
        Case{0x6170704cull << 32, "the name in the high bits"}, Case{0x61207a7au, "a space"}}) {
    EXPECT_FALSE(unpackMessageName(c.state)) << c.why;
  }
}

}  // namespace
}  // namespace kv::core
