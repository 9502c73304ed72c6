// Exception logging and the line writer.
#include "startup/diagnostics.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <ctime>

#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/hook.h"
#include "platform/runtime.h"
#include "settings/bundle.h"

namespace kv::startup {

namespace {

using platform::Sel;

const Sel kAlloc("alloc");
const Sel kInit("init");
const Sel kRelease("release");
const Sel kAutorelease("autorelease");
const Sel kInitWithFormatArguments("initWithFormat:arguments:");
const Sel kDescription("description");
const Sel kCallStackSymbols("callStackSymbols");
const Sel kCallStackReturnAddresses("callStackReturnAddresses");
const Sel kPointerValue("pointerValue");
const Sel kUnsignedValue("unsignedLongLongValue");
const Sel kDate("date");
const Sel kStringFromDate("stringFromDate:");
const Sel kDateFromString("dateFromString:");
const Sel kSetDateFormat("setDateFormat:");
const Sel kSetLocale("setLocale:");
const Sel kSetCalendar("setCalendar:");
const Sel kLocaleWithIdentifier("localeWithLocaleIdentifier:");
const Sel kInitWithCalendarIdentifier("initWithCalendarIdentifier:");
const Sel kTimeIntervalSince1970("timeIntervalSince1970");
const Sel kProcessInfo("processInfo");
const Sel kProcessName("processName");
const Sel kOperatingSystemVersionString("operatingSystemVersionString");
const Sel kDefaultManager("defaultManager");
const Sel kCreateDirectory("createDirectoryAtPath:withIntermediateDirectories:attributes:error:");
const Sel kContentsOfDirectory("contentsOfDirectoryAtPath:error:");
const Sel kRemoveItem("removeItemAtPath:error:");
const Sel kWriteToFile("writeToFile:atomically:encoding:error:");
const Sel kBundleWithPath("bundleWithPath:");
const Sel kPathForResource("pathForResource:ofType:");
const Sel kDictionaryWithContentsOfFile("dictionaryWithContentsOfFile:");

constexpr const char* kProduct = "Kavelin";
constexpr const char* kLogDirectory = "/var/mobile/Library/Logs/Kavelin";
constexpr const char* kFileNameFormat = "dd-MMM-yyyy-HH-mm-ss";
constexpr const char* kDisplayFormat = "dd MMM yyyy HH:mm:ss";
constexpr const char* kContentTemplate =
    "\nDate:%@\nOS:%@\nDevice:%@\nProcess:%@\n\nException: %@\n\nReason: %@\n\nuserinfo:%@\n"
    "Call Stack Symbols: %@\nCall Stack Return Addresses:%@\n";
constexpr size_t kFilesKept = 10;
constexpr unsigned long kUTF8 = 4;  // NSUTF8StringEncoding

// The platform creates exceptions while the file is written (a missing
// directory, a bad date); those go straight to the platform.
thread_local bool tHandling = false;

// The path of the image this library was loaded from.
const std::string& ownImagePath() {
  static const std::string path =
      platform::imagePathOf(reinterpret_cast<const void*>(&exceptionInit));
  return path;
}

std::string describe(id obj) {
  return obj == nullptr ? "(null)" : platform::toString(platform::send<id>(obj, kDescription));
}

// A Gregorian, en_US_POSIX formatter; the caller releases it.
id newFormatter() {
  id formatter = platform::send<id>(
      platform::sendClass<id>(platform::classNamed("NSDateFormatter"), kAlloc), kInit);
  id calendar =
      platform::send<id>(platform::sendClass<id>(platform::classNamed("NSCalendar"), kAlloc),
                         kInitWithCalendarIdentifier, platform::makeString("gregorian"));
  platform::send<void>(formatter, kSetCalendar, calendar);
  platform::send<void>(calendar, kRelease);
  platform::send<void>(
      formatter, kSetLocale,
      platform::sendClass<id>(platform::classNamed("NSLocale"), kLocaleWithIdentifier,
                              platform::makeString("en_US_POSIX")));
  return formatter;
}

std::string formatNow(id formatter, const char* format) {
  platform::send<void>(formatter, kSetDateFormat, platform::makeString(format));
  id now = platform::sendClass<id>(platform::classNamed("NSDate"), kDate);
  return platform::toString(platform::send<id>(formatter, kStringFromDate, now));
}

// The device's marketing name from the settings bundle's "devices" table,
// keyed by the machine identifier; empty when either is missing.
std::string deviceName() {
  struct utsname system {};
  if (uname(&system) != 0) return "";
  id bundle = platform::sendClass<id>(platform::classNamed("NSBundle"), kBundleWithPath,
                                      platform::makeString(settings::bundlePath()));
  if (bundle == nullptr) return "";
  id path = platform::send<id>(bundle, kPathForResource, platform::makeString("devices"),
                               platform::makeString("plist"));
  if (path == nullptr) return "";
  id table = platform::sendClass<id>(platform::classNamed("NSDictionary"),
                                     kDictionaryWithContentsOfFile, path);
  return platform::stringOf(platform::objectForKey(table, system.machine)).value_or("");
}

std::string replaceAll(std::string text, const std::string& what, const std::string& with) {
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at)) {
    text.replace(at, what.size(), with);
    at += with.size();
  }
  return text;
}

// The records of the directory's files, in listing order; the formatter
// still holds the display format, so names in the file-name format read 0.
std::vector<LogFileRecord> listLogFiles(id manager, id formatter) {
  std::vector<LogFileRecord> records;
  id names = platform::send<id>(manager, kContentsOfDirectory, platform::makeString(kLogDirectory),
                                static_cast<id*>(nullptr));
  for (platform::UInteger i = 0; i < platform::arrayCount(names); ++i) {
    std::string name = platform::toString(platform::arrayObjectAt(names, i));
    std::string stamp = replaceAll(replaceAll(name, std::string(kProduct) + "-", ""), ".log", "");
    id date = platform::send<id>(formatter, kDateFromString, platform::makeString(stamp));
    int64_t seconds =
        date == nullptr
            ? 0
            : static_cast<int64_t>(platform::send<double>(date, kTimeIntervalSince1970));
    records.push_back({name, seconds});
  }
  return records;
}

void writeExceptionFile(id name, id reason, id userInfo, const std::string& symbols) {
  id formatter = newFormatter();
  id info = platform::sendClass<id>(platform::classNamed("NSProcessInfo"), kProcessInfo);
  id thread = platform::classNamed("NSThread") == nullptr
                  ? nullptr
                  : platform::asId(platform::classNamed("NSThread"));
  std::string content =
      fillTemplate(kContentTemplate,
                   {formatNow(formatter, kDisplayFormat),
                    platform::toString(platform::send<id>(info, kOperatingSystemVersionString)),
                    deviceName(), platform::toString(platform::send<id>(info, kProcessName)),
                    describe(name), describe(reason), describe(userInfo), symbols,
                    describe(platform::send<id>(thread, kCallStackReturnAddresses))});

  id manager = platform::sendClass<id>(platform::classNamed("NSFileManager"), kDefaultManager);
  platform::send<BOOL>(manager, kCreateDirectory, platform::makeString(kLogDirectory), BOOL{1},
                       static_cast<id>(nullptr), static_cast<id*>(nullptr));

  for (const std::string& old : filesToPrune(listLogFiles(manager, formatter))) {
    platform::send<BOOL>(manager, kRemoveItem,
                         platform::makeString(std::string(kLogDirectory) + "/" + old),
                         static_cast<id*>(nullptr));
  }

  std::string path = std::string(kLogDirectory) + "/" + kProduct + "-" +
                     formatNow(formatter, kFileNameFormat) + ".log";
  platform::send<BOOL>(platform::makeString(content), kWriteToFile, platform::makeString(path),
                       BOOL{1}, kUTF8, static_cast<id*>(nullptr));
  platform::send<void>(formatter, kRelease);
}

// Returns true iff a frame that called this interception (directly or
// further down) lies in this library's image. The interception's own frame
// does not count: the search starts at the frame of its caller, found by
// its return address; where the trace does not show that address, every
// frame is searched.
bool libraryCalled(id symbols, id addresses, void* caller) {
  const platform::UInteger count = platform::arrayCount(symbols);
  platform::UInteger first = 0;
  for (platform::UInteger i = 0; i < platform::arrayCount(addresses) && i < count; ++i) {
    id address = platform::arrayObjectAt(addresses, i);
    uintptr_t value =
        platform::respondsTo(address, kPointerValue)
            ? reinterpret_cast<uintptr_t>(platform::send<void*>(address, kPointerValue))
            : static_cast<uintptr_t>(platform::send<unsigned long long>(address, kUnsignedValue));
    if (value == reinterpret_cast<uintptr_t>(caller)) {
      first = i;
      break;
    }
  }
  std::vector<std::string> frames;
  for (platform::UInteger i = first; i < count; ++i) {
    frames.push_back(platform::toString(platform::arrayObjectAt(symbols, i)));
  }
  return symbolsMention(frames, ownImagePath());
}

}  // namespace

std::vector<std::string> filesToPrune(std::vector<LogFileRecord> listing) {
  std::stable_sort(
      listing.begin(), listing.end(),
      [](const LogFileRecord& a, const LogFileRecord& b) { return b.timestamp < a.timestamp; });
  std::vector<std::string> names;
  if (listing.size() < kFilesKept) return names;
  for (size_t i = kFilesKept; i < listing.size(); ++i) names.push_back(listing[i].name);
  return names;
}

std::string fillTemplate(const std::string& text, const std::vector<std::string>& values) {
  std::string out;
  size_t next = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text.compare(i, 2, "%@") == 0) {
      out += next < values.size() ? values[next] : "";
      ++next;
      ++i;
    } else {
      out += text[i];
    }
  }
  return out;
}

bool symbolsMention(const std::vector<std::string>& frames, const std::string& imagePath) {
  auto lower = [](std::string s) {
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
  };
  std::string image = lower(imagePath.substr(imagePath.find_last_of('/') + 1));
  if (image.empty()) return false;
  for (const std::string& frame : frames) {
    if (lower(frame).find(image) != std::string::npos) return true;
  }
  return false;
}

void exceptionRaise(id self, SEL cmd, id name, id format, ...) {
  using Raise = platform::Hook<&exceptionRaise>;
  if (format == nullptr || tHandling) {
    Raise::original(self, cmd, name, format);
    return;
  }
  id reason = nullptr;
  try {
    platform::AutoreleasePool pool;
    NSLog(platform::makeString("NSEXCEPTION RAISE:%@ FORMAT:%@"), name, format);
  } catch (...) {
  }
  // The variadic part is spent here; the platform gets the finished reason.
  va_list args;
  va_start(args, format);
  reason = platform::send<id>(platform::sendClass<id>(platform::classNamed("NSString"), kAlloc),
                              kInitWithFormatArguments, format, args);
  va_end(args);
  reason = platform::send<id>(reason, kAutorelease);
  Raise::original(self, cmd, name, platform::makeString("%@"), reason);
}

id exceptionInit(id self, SEL cmd, id name, id reason, id userInfo) {
  using Init = platform::Hook<&exceptionInit>;
  if (tHandling) return Init::original(self, cmd, name, reason, userInfo);
  tHandling = true;
  try {
    platform::AutoreleasePool pool;
    NSLog(platform::makeString("NSEXCEPTION WITH NAME %@ REASON %@ userinfo %@"), name, reason,
          userInfo);
    id thread = platform::asId(platform::classNamed("NSThread"));
    id symbols = platform::send<id>(thread, kCallStackSymbols);
    id addresses = platform::send<id>(thread, kCallStackReturnAddresses);
    if (libraryCalled(symbols, addresses, __builtin_return_address(0))) {
      writeExceptionFile(name, reason, userInfo, describe(symbols));
    }
  } catch (...) {
    // Logging never changes what the exception does.
  }
  tHandling = false;
  return Init::original(self, cmd, name, reason, userInfo);
}

}  // namespace kv::startup

extern "C" void KavelinLogLine(const char* text) {
  static const char* const kMonths[] = {"January",   "February", "March",    "April",
                                        "May",       "June",     "July",     "August",
                                        "September", "October",  "November", "December"};
  time_t now = time(nullptr);
  struct tm local {};
  if (localtime_r(&now, &local) == nullptr) return;
  FILE* file = fopen("/tmp/syslog", "a");
  if (file == nullptr) return;
  char prefix[256];
  snprintf(prefix, sizeof prefix, "%.3s %d %.2d:%.2d:%.2d %s[%d]", kMonths[local.tm_mon % 12],
           local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, kv::platform::programName(),
           static_cast<int>(getpid()));
  fprintf(file, "%s %s\n", prefix, text == nullptr ? "" : text);
  fclose(file);
}
