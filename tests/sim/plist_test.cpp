// Property-list files: what reads back, and damaged files that read as nothing.
#include "sim/common/plist.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "platform/foundation.h"

namespace kv::sim {
namespace {

using platform::Value;

class PlistFile : public ::testing::Test {
 protected:
  std::string path_ = ::testing::TempDir() + "plist_test.plist";
  platform::AutoreleasePool pool_;
  void TearDown() override { std::remove(path_.c_str()); }
  void writeBytes(const std::string& bytes) {
    std::ofstream(path_, std::ios::binary | std::ios::trunc) << bytes;
  }
};

TEST_F(PlistFile, BothFormatsReadBack) {
  Value v = Value::dictionary({{"Enabled", Value::boolean(true)},
                               {"apps", Value::array({Value::string("com.apple.camera")})},
                               {"IconColor", Value::integer(3)}});
  for (auto format : {PlistFormat::kXml, PlistFormat::kBinary}) {
    ASSERT_TRUE(writePlistFile(path_, v, format));
    EXPECT_EQ(readPlistFile(path_), v);
  }
}

TEST_F(PlistFile, DamagedFilesReadAsNothing) {
  // A binary header whose trailer declares an offset size the reader does not
  // know raised out of the reader and ended the process.
  const std::string unknownOffsetSize(
      "bplist00\xd6\x01\x02\x03\x04\x05\x06\x07\x08\x09\x07\x0a\x0b"
      "WEnabledYIconColorV",
      40);
  for (const std::string& bytes : {std::string(), std::string("bplist00"),
                                   std::string("<?xml version=\"1.0\"?><plist><dict><key>"),
                                   unknownOffsetSize}) {
    writeBytes(bytes);
    EXPECT_EQ(readPlistFile(path_), std::nullopt) << bytes.size() << " bytes";
  }
  EXPECT_EQ(readPlistFile(path_ + ".missing"), std::nullopt);
}

}  // namespace
}  // namespace kv::sim
