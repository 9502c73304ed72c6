// Property-list files as the simulated preferences service reads them:
// what Foundation writes reads back the same, and every kind of corrupt file
// reads as nothing, with a reason, without a crash or an exception, and the
// preferences service then sees an empty domain and says so once.
#include "sim/common/plist.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "platform/foundation.h"
#include "platform/functions.h"
#include "sim/host/fs_redirect.h"

namespace kv::sim {
namespace {

using platform::Value;
using Bytes = std::vector<uint8_t>;

Bytes ascii(std::string_view text) {
  return Bytes(text.begin(), text.end());
}

Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

// A binary property list put together object by object (one-byte object
// references), so that a case can break exactly one thing in it.
struct Assembled {
  std::vector<Bytes> objects;
  uint8_t offsetSize = 1;
  uint8_t refSize = 1;
  uint64_t top = 0;
  std::optional<uint64_t> count;        // the trailer's object count, when it lies
  std::optional<uint64_t> tableOffset;  // the trailer's offset table offset, when it lies
  std::vector<std::pair<size_t, uint64_t>> offsets;  // table entries that lie: (object, offset)

  Bytes bytes() const {
    Bytes out = ascii("bplist00");
    std::vector<uint64_t> at;
    for (const Bytes& o : objects) {
      at.push_back(out.size());
      out = out + o;
    }
    for (auto [object, offset] : offsets) at[object] = offset;
    uint64_t table = out.size();
    for (uint64_t offset : at) {
      // A corrupt offset size wider than 8 bytes pads with zeros.
      for (int i = offsetSize - 1; i >= 0; --i)
        out.push_back(i < 8 ? static_cast<uint8_t>(offset >> (8 * i)) : 0);
    }
    Bytes trailer(6, 0);
    trailer.push_back(offsetSize);
    trailer.push_back(refSize);
    for (uint64_t n : {count.value_or(objects.size()), top, tableOffset.value_or(table)}) {
      for (int i = 7; i >= 0; --i) trailer.push_back(static_cast<uint8_t>(n >> (8 * i)));
    }
    return out + trailer;
  }
};

Bytes asciiObject(std::string_view text) {
  Bytes out;
  if (text.size() < 15) {
    out.push_back(static_cast<uint8_t>(0x50 | text.size()));
  } else {
    out = {0x5F, 0x10, static_cast<uint8_t>(text.size())};
  }
  return out + ascii(text);
}

// {"passcode": "1234", "protected": ["com.apple.MobileSMS"]}, in the order
// Foundation writes such a file.
Assembled preferences() {
  Assembled p;
  p.objects = {
      {0xD2, 1, 2, 3, 4},
      asciiObject("passcode"),
      asciiObject("protected"),
      asciiObject("1234"),
      {0xA1, 5},
      asciiObject("com.apple.MobileSMS"),
  };
  return p;
}

// A dictionary whose one value is an array of two references to the array
// below it, `levels` deep, ending in one string: a few hundred bytes that
// name 2^levels strings.
Assembled doubling(int levels) {
  Assembled p;
  auto last = static_cast<uint8_t>(levels + 1);
  p.objects.push_back({0xD1, last, 1});
  for (int i = 1; i <= levels; ++i) {
    auto next = static_cast<uint8_t>(i + 1);
    p.objects.push_back({0xA2, next, next});
  }
  p.objects.push_back(asciiObject("x"));
  return p;
}

std::string xml(std::string_view body) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
         "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
         "<plist version=\"1.0\">\n" +
         std::string(body) + "\n</plist>\n";
}

// One kind of corrupt file: its bytes, and a part of the reason given.
struct Corrupt {
  const char* name;
  Bytes bytes;
  const char* reason;
  // A sound property list whose top object is no dictionary reads as what it
  // is; only the preferences service refuses it as a domain.
  PlistReading::Status status = PlistReading::Status::kCorrupt;
};

std::vector<Corrupt> corruptFiles() {
  auto changed = [](std::function<void(Assembled&)> change) {
    Assembled p = preferences();
    change(p);
    return p.bytes();
  };
  Bytes good = preferences().bytes();
  std::string whole = xml("<dict><key>passcode</key><string>1234</string></dict>");
  std::string nested;
  for (int i = 0; i < 100000; ++i) nested += "<array>";
  return {
      {"empty file", {}, "an empty file"},
      {"magic alone", ascii("bplist00"), "too short"},
      {"wrong version", ascii("bplist15") + Bytes(good.begin() + 8, good.end()), "version"},
      {"truncated in half", Bytes(good.begin(), good.begin() + good.size() / 2), ""},
      {"trailer cut short", Bytes(good.begin(), good.end() - 5), ""},
      {"offset size 0", changed([](Assembled& p) { p.offsetSize = 0; }), "bad offset size"},
      {"offset size 9", changed([](Assembled& p) { p.offsetSize = 9; }), "bad offset size"},
      {"reference size 0", changed([](Assembled& p) { p.refSize = 0; }), "reference size"},
      {"object count 2^63", changed([](Assembled& p) { p.count = 1ULL << 63; }),
       "count does not fit"},
      {"no objects", changed([](Assembled& p) { p.count = 0; }), "count does not fit"},
      {"top object out of range", changed([](Assembled& p) { p.top = 6; }), "top object"},
      {"offset table past the end", changed([](Assembled& p) { p.tableOffset = 1ULL << 40; }),
       "offset table outside"},
      {"offset table in the header", changed([](Assembled& p) { p.tableOffset = 2; }),
       "offset table outside"},
      {"object offset into the trailer", changed([](Assembled& p) {
         p.offsets = {{3, 200}};
       }),
       "offset of object 3"},
      {"object offset into the header", changed([](Assembled& p) {
         p.offsets = {{0, 3}};
       }),
       "offset of object 0"},
      {"reference to a missing object", changed([](Assembled& p) {
         p.objects[4] = {0xA1, 40};
       }),
       "refers to object 40"},
      {"array that holds itself", changed([](Assembled& p) {
         p.objects[4] = {0xA1, 4};
       }),
       "contains itself"},
      {"cycle through the dictionary", changed([](Assembled& p) {
         p.objects[4] = {0xA1, 0};
       }),
       "contains itself"},
      {"array count 2^40",
       changed([](Assembled& p) { p.objects[4] = {0xAF, 0x13, 0, 0, 1, 0, 0, 0, 0, 0, 5}; }),
       "more entries than the file"},
      {"string length past the end",
       changed([](Assembled& p) { p.objects[5] = {0x5F, 0x12, 0x7F, 0xFF, 0xFF, 0xFF, 'c'}; }),
       "runs past the objects"},
      {"count that is not an integer", changed([](Assembled& p) {
         p.objects[5] = {0x5F, 0x51, 'x'};
       }),
       "count is not an integer"},
      {"non-ASCII byte in an ASCII string", changed([](Assembled& p) {
         p.objects[3] = {0x54, '1', 0xE9, '3', '4'};
       }),
       "not ASCII"},
      {"unpaired UTF-16 surrogate", changed([](Assembled& p) {
         p.objects[3] = {0x62, 0xD8, 0x3D, 0x00, 0x41};
       }),
       "unpaired surrogate"},
      {"UTF-16 string cut in its last unit", changed([](Assembled& p) {
         p.objects[5] = {0x63, 0x00, 0x41};
       }),
       ""},
      {"integer dictionary key", changed([](Assembled& p) {
         p.objects[1] = {0x10, 7};
       }),
       "key that is not a string"},
      {"unknown marker", changed([](Assembled& p) {
         p.objects[3] = {0x70, 0, 0};
       }),
       "unknown marker 0x70"},
      {"integer of 32 bytes", changed([](Assembled& p) {
         p.objects[3] = {0x15, 0};
       }),
       "unknown marker 0x15"},
      {"shared objects that expand to 2^40 values", doubling(40).bytes(), "too many values"},
      {"top object an array", changed([](Assembled& p) { p.top = 4; }), "",
       PlistReading::Status::kRead},
      {"XML cut off", ascii(whole.substr(0, whole.size() - 30)), ""},
      {"XML tags that do not match", ascii(xml("<dict><key>a</key><string>b</integer></dict>")),
       ""},
      {"invalid UTF-8 in XML",
       ascii(xml("<dict><key>passcode</key><string>\xC3\x28</string></dict>")), "invalid UTF-8"},
      {"overlong UTF-8 in XML", ascii(xml("<dict><key>a\xC0\xAF</key><true/></dict>")),
       "invalid UTF-8"},
      {"XML nested 100,000 deep", ascii(xml(nested)), "nested too deeply"},
      {"NUL byte in XML",
       ascii(xml("<dict><key>a</key><string>b")) + Bytes{0} + ascii("c</string></dict>"),
       "NUL byte"},
      {"plain text", ascii("this is no property list { at all"), ""},
      // GNUstep took these six bytes for its own archive and asked for 3.5 GB.
      {"control bytes before the text", Bytes{0x01, 0x02, 'i', '<', 'p', 'l'}, "control character"},
  };
}

// Each case gives a reason, and the reason is the one its defect calls for.
TEST(CorruptPlist, EveryKindReadsAsCorruptWithItsReason) {
  ASSERT_EQ(parsePlist(preferences().bytes()).status, PlistReading::Status::kRead);
  auto cases = corruptFiles();
  EXPECT_GE(cases.size(), 22u);
  for (const Corrupt& c : cases) {
    PlistReading reading = parsePlist(c.bytes);
    EXPECT_EQ(reading.status, c.status) << c.name;
    EXPECT_NE(reading.value.kind(), Value::Kind::kDictionary) << c.name;
    if (c.status == PlistReading::Status::kRead) continue;
    EXPECT_FALSE(reading.problem.empty()) << c.name;
    EXPECT_NE(reading.problem.find(c.reason), std::string::npos)
        << c.name << " gave: " << reading.problem;
  }
}

// What the device and Foundation write, in both formats, the reader gives back unchanged.
TEST(BinaryPlist, ReadsWhatFoundationWrites) {
  platform::AutoreleasePool pool;
  std::string long_(300, 'k');
  Value value = Value::dictionary({
      {"protected", Value::array({Value::string("com.apple.MobileSMS"), Value::integer(3)})},
      {"passcode", Value::integer(1234)},
      {"negative", Value::integer(-5)},
      {"large", Value::integer(1LL << 40)},
      {"Enabled", Value::boolean(false)},
      {"keepSession", Value::boolean(true)},
      {"ratio", Value::real(0.25)},
      {"name", Value::string("Zoë's \xE2\x80\x94 folder")},
      {long_, Value::string(long_)},
      {"data", Value::data({0, 1, 2, 255})},
      {"nested", Value::dictionary({{"list", Value::array({})}, {"empty", Value::dictionary({})}})},
  });
  char pattern[] = "/tmp/kavelin-plist-XXXXXX";
  std::string dir = mkdtemp(pattern);
  for (PlistFormat format : {PlistFormat::kBinary, PlistFormat::kXml}) {
    std::string path = dir + "/p.plist";
    ASSERT_TRUE(writePlistFile(path, value, format));
    PlistReading reading = readPlist(path);
    ASSERT_EQ(reading.status, PlistReading::Status::kRead) << reading.problem;
    EXPECT_EQ(reading.value, value) << reading.value.describe();
  }
  // Beyond the first plane a binary file holds a surrogate pair (GNUstep's XML
  // writer escapes such characters its own way, so binary alone here).
  Value lock = Value::dictionary({{"name", Value::string("\xF0\x9F\x94\x92")}});
  ASSERT_TRUE(writePlistFile(dir + "/lock.plist", lock, PlistFormat::kBinary));
  EXPECT_EQ(readPlist(dir + "/lock.plist").value, lock);
  EXPECT_EQ(readPlist(dir + "/none.plist").status, PlistReading::Status::kMissing);
  std::filesystem::remove_all(dir);
}

// The preferences service reads every corrupt domain as empty and says so in
// one line naming the domain; a second synchronise of the same file is quiet.
TEST(PreferencesService, ACorruptDomainReadsAsEmptyWithOneLine) {
  char pattern[] = "/tmp/kavelin-prefs-XXXXXX";
  std::string root = mkdtemp(pattern);
  setDeviceRoot(root);
  std::filesystem::create_directories(root + "/private/var/mobile/Library/Preferences");
  std::filesystem::create_directories(root + "/private/var/tmp");  // the captured output's file
  auto cases = corruptFiles();
  for (size_t i = 0; i < cases.size(); ++i) {
    platform::AutoreleasePool pool;
    std::string domain = "net.quorvan.case" + std::to_string(i);
    std::ofstream(root + "/private/var/mobile/Library/Preferences/" + domain + ".plist",
                  std::ios::binary)
        .write(reinterpret_cast<const char*>(cases[i].bytes.data()),
               static_cast<std::streamsize>(cases[i].bytes.size()));
    id app = platform::makeString(domain);
    testing::internal::CaptureStderr();
    CFPreferencesAppSynchronize(platform::cf(app));
    CFPropertyListRef value = CFPreferencesCopyAppValue(
        platform::cf(platform::makeString("passcode")), platform::cf(app));
    CFPreferencesAppSynchronize(platform::cf(app));
    std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(value, nullptr) << cases[i].name;
    size_t lines = 0;
    for (size_t at = said.find(domain + ": unreadable preferences file"); at != std::string::npos;
         at = said.find(domain + ": unreadable", at + 1)) {
      ++lines;
    }
    EXPECT_EQ(lines, 1u) << cases[i].name << " said: " << said;
  }
  setDeviceRoot("");
  std::filesystem::remove_all(root);
}

// Inputs the fuzzers found ending the process, each read as nothing now.
TEST(PlistFileFound, DamagedFilesReadAsNothing) {
  platform::AutoreleasePool pool;
  const std::string path = ::testing::TempDir() + "plist_found.plist";
  // A binary header whose trailer declares an offset size the reader does not
  // know raised out of the reader.
  const std::string unknownOffsetSize(
      "bplist00\xd6\x01\x02\x03\x04\x05\x06\x07\x08\x09\x07\x0a\x0b"
      "WEnabledYIconColorV",
      40);
  for (const std::string& bytes :
       {std::string("bplist00"), std::string("<?xml version=\"1.0\"?><plist><dict><key>"),
        unknownOffsetSize}) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    EXPECT_EQ(readPlistFile(path), std::nullopt) << bytes.size() << " bytes";
  }
  std::remove(path.c_str());
  EXPECT_EQ(readPlistFile(path + ".missing"), std::nullopt);
}

}  // namespace
}  // namespace kv::sim
