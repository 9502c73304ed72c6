// The exception files' pure parts: which old files go, how the content
// template fills, and how a stack is searched for the library's image.
#include "startup/diagnostics.h"

#include <gtest/gtest.h>

namespace kv::startup {
namespace {

TEST(Diagnostics, PruneKeepsTheTenNewestAndEqualStampsKeepTheirListingOrder) {
  // Nine undated names (as every name in the file-name format reads) and
  // three dated ones: the dated come first, newest first; the undated keep
  // the order the directory listed them in, so the last two listed go.
  std::vector<LogFileRecord> listing;
  for (int i = 0; i < 9; ++i) listing.push_back({"u" + std::to_string(i), 0});
  listing.insert(listing.begin() + 4, {"d100", 100});
  listing.push_back({"d300", 300});
  listing.insert(listing.begin(), {"d200", 200});
  EXPECT_EQ(filesToPrune(listing), (std::vector<std::string>{"u7", "u8"}));

  // Exactly ten: the one at position ten does not exist, nothing goes.
  listing.resize(10);
  EXPECT_TRUE(filesToPrune(listing).empty());
  listing.resize(9);
  EXPECT_TRUE(filesToPrune(listing).empty());

  // Dated names beyond the tenth go by age, the oldest ones.
  std::vector<LogFileRecord> dated;
  for (int i = 1; i <= 12; ++i) dated.push_back({"t" + std::to_string(i), i});
  EXPECT_EQ(filesToPrune(dated), (std::vector<std::string>{"t2", "t1"}));
}

TEST(Diagnostics, TemplateFillsInOrderAndLeavesMissingValuesEmpty) {
  EXPECT_EQ(fillTemplate("\nDate:%@\nOS:%@\n", {"today", "Version 9.3"}),
            "\nDate:today\nOS:Version 9.3\n");
  EXPECT_EQ(fillTemplate("a%@b%@c", {"1"}), "a1bc");
  // A value that itself holds "%@" is not filled again.
  EXPECT_EQ(fillTemplate("%@-%@", {"%@", "x"}), "%@-x");
}

TEST(Diagnostics, StackMentionsTheImageByFileNameWithoutRegardToCase) {
  const std::string image = "/Library/MobileSubstrate/DynamicLibraries/Kavelin.dylib";
  EXPECT_TRUE(symbolsMention({"0 CoreFoundation 0x1", "3   kavelin.dylib  0x2 foo + 4"}, image));
  // The host's name alone, or a directory, is not the library.
  EXPECT_FALSE(symbolsMention({"0 /usr/bin/kavelin-host(+0x5) [0x7]",
                               "1 /Library/MobileSubstrate/DynamicLibraries/Other.dylib"},
                              image));
  EXPECT_FALSE(symbolsMention({"Kavelin.dylib"}, "/some/dir/"));
}

}  // namespace
}  // namespace kv::startup
