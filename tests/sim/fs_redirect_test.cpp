// The host's view of the device's file system: device paths reach the device root from libc
// callers and from GNUstep Base alike.
#include "sim/host/fs_redirect.h"

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/foundation.h"
#include "platform/runtime.h"

namespace kv {
namespace {

using platform::Sel;
using platform::Value;

const Sel kDefaultManager("defaultManager");
const Sel kFileExists("fileExistsAtPath:");
const Sel kCreateDirectory("createDirectoryAtPath:withIntermediateDirectories:attributes:error:");
const Sel kContents("contentsOfDirectoryAtPath:error:");
const Sel kRemove("removeItemAtPath:error:");
const Sel kMove("moveItemAtPath:toPath:error:");
const Sel kAttributes("attributesOfItemAtPath:error:");
const Sel kDataWithBytes("dataWithBytes:length:");
const Sel kDataWithContents("dataWithContentsOfFile:");
const Sel kDictionaryWithContents("dictionaryWithContentsOfFile:");
const Sel kWriteToFile("writeToFile:atomically:");
const Sel kBytes("bytes");
const Sel kLength("length");

// Each test owns a fresh device root under /tmp, so the root itself lies inside a device folder
// and must stay unrewritten.
class FsRedirect : public ::testing::Test {
 protected:
  void SetUp() override {
    char tmpl[] = "/tmp/kv-fs-XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    root_ = tmpl;
    std::filesystem::create_directories(root_ + "/private/var/tmp");
    sim::setDeviceRoot(root_);
  }
  void TearDown() override {
    sim::setDeviceRoot("");
    std::filesystem::remove_all(root_);
  }

  // The contents of the file at real path `path` ("<missing>" when it cannot be read).
  static std::string contentsAt(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return "<missing>";
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
  }
  // The shared NSFileManager.
  static id fileManager() {
    return platform::sendClass<id>(platform::classNamed("NSFileManager"), kDefaultManager);
  }
  // [NSFileManager fileExistsAtPath:path].
  static bool exists(const std::string& path) {
    return platform::send<BOOL>(fileManager(), kFileExists, platform::makeString(path)) != 0;
  }
  // An autoreleased NSData holding `bytes`.
  static id dataOf(const std::string& bytes) {
    return platform::sendClass<id>(platform::classNamed("NSData"), kDataWithBytes,
                                   static_cast<const void*>(bytes.data()),
                                   static_cast<platform::UInteger>(bytes.size()));
  }
  // The bytes an NSData holds.
  static std::string bytesOf(id data) {
    auto* bytes = platform::send<const char*>(data, kBytes);
    return std::string(bytes == nullptr ? "" : bytes,
                       platform::send<platform::UInteger>(data, kLength));
  }

  platform::AutoreleasePool pool_;
  std::string root_;
};

TEST_F(FsRedirect, MapsDeviceFoldersUnderTheRoot) {
  const std::string& r = root_;
  struct Case {
    std::string device;
    std::string real;
  };
  const std::vector<Case> cases = {
      {"/var", r + "/private/var"},
      {"/var/", r + "/private/var/"},
      {"/var/mobile/Library/Preferences/x.plist",
       r + "/private/var/mobile/Library/Preferences/x.plist"},
      {"/private", r + "/private"},
      {"/private/var/tmp/.appL", r + "/private/var/tmp/.appL"},
      {"/tmp", r + "/private/var/tmp"},
      {"/tmp/syslog", r + "/private/var/tmp/syslog"},
      {"/Library/MobileSubstrate/DynamicLibraries/Pellum.dylib",
       r + "/Library/MobileSubstrate/DynamicLibraries/Pellum.dylib"},
      {"/bootstrap/Library/PreferenceBundles/KavelinPrefs.bundle",
       r + "/bootstrap/Library/PreferenceBundles/KavelinPrefs.bundle"},
      {"/System/Library/CoreServices/SystemVersion.plist",
       r + "/System/Library/CoreServices/SystemVersion.plist"},
      {"//var//mobile", r + "/private/var//mobile"},
      {"/./tmp/x", r + "/private/var/tmp/x"},
      // Not device folders, not absolute, or already real: unchanged.
      {"/varnish", "/varnish"},
      {"/tmpfs/x", "/tmpfs/x"},
      {"/Libraries", "/Libraries"},
      {"/System", "/System"},
      {"/System/Applications", "/System/Applications"},
      {"/etc/hostname", "/etc/hostname"},
      {"/", "/"},
      {"", ""},
      {"var/mobile", "var/mobile"},
      {"./tmp/x", "./tmp/x"},
      {r, r},
      {r + "/private/var/x", r + "/private/var/x"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(sim::realPathForDevicePath(c.device), c.real) << c.device;
  }

  sim::setDeviceRoot(r + "//");
  EXPECT_EQ(sim::deviceRoot(), r);
  EXPECT_THROW(sim::setDeviceRoot("relative/root"), std::invalid_argument);
  sim::setDeviceRoot("");
  EXPECT_EQ(sim::realPathForDevicePath("/var/mobile"), "/var/mobile");
}

TEST_F(FsRedirect, LibcCallsLandUnderTheRoot) {
  const std::string realTmp = root_ + "/private/var/tmp";
  for (const char* line : {"one\n", "two\n"}) {
    FILE* log = fopen("/tmp/syslog", "a");
    ASSERT_NE(log, nullptr);
    fputs(line, log);
    fclose(log);
  }
  EXPECT_EQ(contentsAt(realTmp + "/syslog"), "one\ntwo\n");
  struct stat info {};
  ASSERT_EQ(stat("/var/tmp/syslog", &info), 0);
  EXPECT_EQ(info.st_size, 8);
  EXPECT_EQ(access("/private/var/tmp/syslog", R_OK), 0);

  int fd = openat(AT_FDCWD, "/tmp/.lock", O_CREAT | O_WRONLY, 0600);
  ASSERT_GE(fd, 0);
  close(fd);
  ASSERT_EQ(stat((realTmp + "/.lock").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);

  ASSERT_EQ(rename("/tmp/syslog", "/var/tmp/syslog.0"), 0);
  EXPECT_EQ(contentsAt(realTmp + "/syslog.0"), "one\ntwo\n");
  ASSERT_EQ(symlink("/tmp/syslog.0", "/tmp/current"), 0);
  char target[64] = {};
  ASSERT_EQ(readlink((realTmp + "/current").c_str(), target, sizeof(target) - 1), 13);
  EXPECT_STREQ(target, "/tmp/syslog.0");  // link text is kept as written

  ASSERT_EQ(mkdir("/var/mobile", 0755), 0);
  DIR* dir = opendir("/private/var");
  ASSERT_NE(dir, nullptr);
  std::vector<std::string> names;
  while (dirent* entry = readdir(dir)) names.emplace_back(entry->d_name);
  closedir(dir);
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{".", "..", "mobile", "tmp"}));

  char resolved[PATH_MAX];
  ASSERT_NE(realpath("/var/mobile", resolved), nullptr);
  EXPECT_EQ(std::string(resolved),
            std::filesystem::canonical(root_).string() + "/private/var/mobile");

  EXPECT_EQ(unlink("/tmp/syslog.0"), 0);
  EXPECT_EQ(rmdir("/var/mobile"), 0);
  EXPECT_FALSE(std::filesystem::exists(realTmp + "/syslog.0"));
  EXPECT_FALSE(std::filesystem::exists(root_ + "/private/var/mobile"));
}

TEST_F(FsRedirect, TemporaryFilesFillTheCallersTemplate) {
  char file[] = "/tmp/kv.XXXXXX";
  int fd = mkstemp(file);
  ASSERT_GE(fd, 0);
  close(fd);
  EXPECT_EQ(std::string(file).find("XXXXXX"), std::string::npos) << file;
  EXPECT_EQ(std::string(file).rfind("/tmp/kv.", 0), 0u) << file;
  EXPECT_TRUE(std::filesystem::is_regular_file(root_ + "/private/var" + file));

  char suffixed[] = "/tmp/kv.XXXXXX.plist";
  fd = mkstemps(suffixed, 6);
  ASSERT_GE(fd, 0);
  close(fd);
  EXPECT_TRUE(std::filesystem::is_regular_file(root_ + "/private/var" + suffixed)) << suffixed;

  char dir[] = "/var/tmp/d.XXXXXX";
  ASSERT_EQ(mkdtemp(dir), dir);
  EXPECT_TRUE(std::filesystem::is_directory(root_ + "/private" + dir)) << dir;
}

TEST_F(FsRedirect, FoundationReadsAndWritesDeviceFiles) {
  id data = dataOf(std::string("\x01\x02secret\0end", 12));
  ASSERT_NE(platform::send<BOOL>(data, kWriteToFile, platform::makeString("/private/var/tmp/.appL"),
                                 static_cast<BOOL>(1)),
            0);
  EXPECT_EQ(contentsAt(root_ + "/private/var/tmp/.appL"), std::string("\x01\x02secret\0end", 12));
  id back = platform::sendClass<id>(platform::classNamed("NSData"), kDataWithContents,
                                    platform::makeString("/tmp/.appL"));
  EXPECT_EQ(bytesOf(back), std::string("\x01\x02secret\0end", 12));

  const Value prefs =
      Value::dictionary({{"enabled", Value::boolean(true)},
                         {"apps", Value::array({Value::string("com.apple.camera")})},
                         {"delay", Value::integer(30)}});
  ASSERT_NE(platform::send<BOOL>(fileManager(), kCreateDirectory,
                                 platform::makeString("/var/mobile/Library/Preferences"),
                                 static_cast<BOOL>(1), id{nullptr}, static_cast<id*>(nullptr)),
            0);
  const char* plist = "/var/mobile/Library/Preferences/com.kavelin.test.plist";
  ASSERT_NE(platform::send<BOOL>(platform::makeObject(prefs), kWriteToFile,
                                 platform::makeString(plist), static_cast<BOOL>(1)),
            0);
  EXPECT_TRUE(std::filesystem::is_regular_file(root_ + "/private" + plist));
  id read = platform::sendClass<id>(platform::classNamed("NSDictionary"), kDictionaryWithContents,
                                    platform::makeString(plist));
  EXPECT_TRUE(platform::valueOf(read) == prefs) << platform::valueOf(read).describe();
}

TEST_F(FsRedirect, FileManagerSeesOnlyTheDevice) {
  std::filesystem::create_directories(root_ + "/Library/MobileSubstrate/DynamicLibraries");
  std::ofstream(root_ + "/Library/MobileSubstrate/DynamicLibraries/Pellum.dylib") << "x";
  EXPECT_TRUE(exists("/Library/MobileSubstrate/DynamicLibraries/Pellum.dylib"));
  EXPECT_FALSE(exists("/Library/MobileSubstrate/DynamicLibraries/Other.dylib"));
  EXPECT_FALSE(exists("/bootstrap"));
  // The device's /Library holds only what the root holds, whatever the machine's own has.
  id listing = platform::send<id>(fileManager(), kContents, platform::makeString("/Library"),
                                  static_cast<id*>(nullptr));
  EXPECT_EQ(platform::stringListOf(listing), std::vector<std::string>{"MobileSubstrate"});
  // Real paths outside the device folders, and the root's own paths, are taken as they are.
  EXPECT_TRUE(exists(root_ + "/Library/MobileSubstrate"));
  EXPECT_EQ(exists("/etc"), std::filesystem::exists("/etc"));

  const char* logs = "/var/mobile/Library/Logs/Kavelin";
  ASSERT_NE(platform::send<BOOL>(fileManager(), kCreateDirectory, platform::makeString(logs),
                                 static_cast<BOOL>(1), id{nullptr}, static_cast<id*>(nullptr)),
            0);
  EXPECT_TRUE(std::filesystem::is_directory(root_ + "/private" + logs));
  ASSERT_NE(platform::send<BOOL>(dataOf("12345"), kWriteToFile,
                                 platform::makeString(std::string(logs) + "/a.log"),
                                 static_cast<BOOL>(0)),
            0);
  ASSERT_NE(platform::send<BOOL>(
                fileManager(), kMove, platform::makeString(std::string(logs) + "/a.log"),
                platform::makeString(std::string(logs) + "/b.log"), static_cast<id*>(nullptr)),
            0);
  listing = platform::send<id>(fileManager(), kContents, platform::makeString(logs),
                               static_cast<id*>(nullptr));
  EXPECT_EQ(platform::stringListOf(listing), std::vector<std::string>{"b.log"});
  id attributes = platform::send<id>(fileManager(), kAttributes,
                                     platform::makeString(std::string(logs) + "/b.log"),
                                     static_cast<id*>(nullptr));
  EXPECT_EQ(platform::integerOf(platform::objectForKey(attributes, "NSFileSize")), 5);

  ASSERT_NE(
      platform::send<BOOL>(fileManager(), kRemove, platform::makeString("/var/mobile/Library/Logs"),
                           static_cast<id*>(nullptr)),
      0);
  EXPECT_FALSE(std::filesystem::exists(root_ + "/private/var/mobile/Library/Logs"));
  EXPECT_TRUE(std::filesystem::is_directory(root_ + "/private/var/mobile/Library"));
}

}  // namespace
}  // namespace kv
