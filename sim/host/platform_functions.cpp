// The platform C functions the library calls, as this simulated device
// provides them: Darwin notify and the Darwin notification centre,
// preferences, the main dispatch queue, the clock, the dynamic loader's
// image callbacks, the I/O registry, process spawning and the system log.
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdarg>
#include <cstring>
#include <map>
#include <optional>
#include <vector>

#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/retained.h"
#include "sim/common/plist.h"
#include "sim/host/link.h"
#include "sim/host/profile.h"
#include "sim/host/run_loop.h"

using kv::platform::Retained;
using kv::platform::Sel;
using kv::platform::Value;
namespace host = kv::sim::host;

namespace {

// ---- Darwin notify: tokens are this process's; states are the device's ----

std::map<int, std::string>& tokens() {
  static auto* table = new std::map<int, std::string>();
  return *table;
}
int gNextToken = 1;

// States kept here when no device is attached (unit tests of host parts).
std::map<std::string, uint64_t>& localStates() {
  static auto* table = new std::map<std::string, uint64_t>();
  return *table;
}

struct DarwinObserver {
  const void* observer;
  CFNotificationCallback callback;
  std::string name;
};
std::vector<DarwinObserver>& darwinObservers() {
  static auto* list = new std::vector<DarwinObserver>();
  return *list;
}
int gDarwinCenter;  // its address is the Darwin centre

void postNotification(const std::string& name) {
  host::report("post", {{"name", Value::string(name)}});
}

// ---- Preferences: a per-process cache of each domain's file ----

// The identity of a domain's file as last read: a synchronise re-reads it
// only when another process has written it since, as the device's
// preferences service keeps its domains in memory.
struct FileIdentity {
  ino_t inode = 0;
  off_t size = -1;
  int64_t modifiedNanos = 0;
  bool operator==(const FileIdentity&) const = default;
};

struct Domain {
  Value::Dictionary values;
  // The objects handed out for its keys: the preferences service keeps its
  // values in memory and hands out the same immutable object until the
  // value changes, so a caller can tell an unchanged value by its identity.
  std::map<std::string, Retained> objects;
  bool loaded = false;
  bool dirty = false;
  std::optional<FileIdentity> read;  // none: never read, or there was no file
};
std::map<std::string, Domain>& domains() {
  static auto* table = new std::map<std::string, Domain>();
  return *table;
}

std::string domainPath(const std::string& domain) {
  return "/var/mobile/Library/Preferences/" + domain + ".plist";
}

std::optional<FileIdentity> identityOf(const std::string& path) {
  struct stat st {};
  if (stat(path.c_str(), &st) != 0) return std::nullopt;
  return FileIdentity{st.st_ino, st.st_size,
                      static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec};
}

void loadDomain(const std::string& name, Domain& d) {
  std::string path = domainPath(name);
  auto identity = identityOf(path);
  if (d.loaded && identity && d.read == identity) return;  // unchanged since it was read
  kv::sim::PlistReading reading = kv::sim::readPlist(path);
  bool dictionary = reading.value.kind() == Value::Kind::kDictionary;
  d.values = dictionary ? reading.value.asDictionary() : Value::Dictionary{};
  d.objects.clear();
  d.loaded = true;
  d.read = identity;
  // A file the service cannot read is a domain with nothing in it, as on a
  // device; the line says which domain, once for each version of the file.
  using Status = kv::sim::PlistReading::Status;
  if (reading.status == Status::kCorrupt || (reading.status == Status::kRead && !dictionary)) {
    std::string why =
        reading.status == Status::kCorrupt ? reading.problem : "its top object is not a dictionary";
    host::logEvent("prefs", name + ": unreadable preferences file (" + why + "), read as empty");
  }
}

Domain& domainNamed(const std::string& name) {
  Domain& d = domains()[name];
  if (!d.loaded) loadDomain(name, d);
  return d;
}

// ---- Image-added callbacks ----

using ImageCallback = void (*)(const struct mach_header*, intptr_t);
std::vector<ImageCallback>& imageCallbacks() {
  static auto* list = new std::vector<ImageCallback>();
  return *list;
}

}  // namespace

namespace kv::sim::host {

// Delivers a Darwin notification to this process's observers of `name`, on
// the run loop, in the order they were added.
void deliverDarwinNotification(const std::string& name) {
  for (const auto& o : darwinObservers()) {
    if (o.name != name) continue;
    DarwinObserver copy = o;
    scheduleAfter(0, [copy] {
      platform::AutoreleasePool pool;
      copy.callback(reinterpret_cast<CFNotificationCenterRef>(&gDarwinCenter),
                    const_cast<void*>(copy.observer),
                    kv::platform::cf(kv::platform::makeString(copy.name)), nullptr, nullptr);
    });
  }
}

// Tells every registered image-added callback that a library was loaded.
void announceImageAdded() {
  for (auto callback : imageCallbacks()) callback(nullptr, 0);
}

}  // namespace kv::sim::host

extern "C" {

uint32_t notify_post(const char* name) {
  if (name == nullptr) return NOTIFY_STATUS_INVALID_NAME;
  postNotification(name);
  return NOTIFY_STATUS_OK;
}

uint32_t notify_register_check(const char* name, int* out_token) {
  if (name == nullptr || out_token == nullptr) return NOTIFY_STATUS_INVALID_NAME;
  int token = gNextToken++;
  tokens()[token] = name;
  *out_token = token;
  return NOTIFY_STATUS_OK;
}

uint32_t notify_set_state(int token, uint64_t state) {
  auto it = tokens().find(token);
  if (it == tokens().end()) return NOTIFY_STATUS_INVALID_TOKEN;
  if (!host::attached()) {
    localStates()[it->second] = state;
    return NOTIFY_STATUS_OK;
  }
  host::report("state-set", {{"name", Value::string(it->second)},
                             {"state", Value::integer(static_cast<int64_t>(state))}});
  return NOTIFY_STATUS_OK;
}

uint32_t notify_get_state(int token, uint64_t* state) {
  auto it = tokens().find(token);
  if (it == tokens().end() || state == nullptr) return NOTIFY_STATUS_INVALID_TOKEN;
  if (!host::attached()) {
    *state = localStates()[it->second];
    return NOTIFY_STATUS_OK;
  }
  Value reply = host::request("state-get", {{"name", Value::string(it->second)}});
  *state = static_cast<uint64_t>(reply["state"].asInteger());
  return NOTIFY_STATUS_OK;
}

uint32_t notify_cancel(int token) {
  return tokens().erase(token) != 0 ? NOTIFY_STATUS_OK : NOTIFY_STATUS_INVALID_TOKEN;
}

CFNotificationCenterRef CFNotificationCenterGetDarwinNotifyCenter(void) {
  return reinterpret_cast<CFNotificationCenterRef>(&gDarwinCenter);
}

void CFNotificationCenterAddObserver(CFNotificationCenterRef, const void* observer,
                                     CFNotificationCallback callBack, CFStringRef name, const void*,
                                     CFNotificationSuspensionBehavior) {
  auto n = kv::platform::stringOf(kv::platform::ns(name));
  if (callBack == nullptr || !n) return;
  darwinObservers().push_back({observer, callBack, *n});
  host::report("observe", {{"name", Value::string(*n)}});
}

void CFNotificationCenterRemoveEveryObserver(CFNotificationCenterRef, const void* observer) {
  auto& list = darwinObservers();
  std::erase_if(list, [observer](const DarwinObserver& o) { return o.observer == observer; });
}

void CFNotificationCenterPostNotification(CFNotificationCenterRef, CFNotificationName name,
                                          const void*, CFDictionaryRef, Boolean) {
  if (auto n = kv::platform::stringOf(kv::platform::ns(name))) postNotification(*n);
}

Boolean CFPreferencesAppSynchronize(CFStringRef applicationID) {
  auto app = kv::platform::stringOf(kv::platform::ns(applicationID));
  if (!app) return 0;
  Domain& d = domains()[*app];
  bool ok = true;
  if (d.dirty) {
    ok = kv::sim::writePlistFile(domainPath(*app), Value::dictionary(d.values),
                                 kv::sim::PlistFormat::kBinary);
    d.dirty = false;
    host::logEvent("prefs", "synchronized " + *app + (ok ? "" : " (write failed)"));
  }
  loadDomain(*app, d);
  return ok ? 1 : 0;
}

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef applicationID) {
  auto k = kv::platform::stringOf(kv::platform::ns(key));
  auto app = kv::platform::stringOf(kv::platform::ns(applicationID));
  if (!k || !app) return nullptr;
  Domain& d = domainNamed(*app);
  auto it = d.values.find(*k);
  if (it == d.values.end()) return nullptr;
  Retained& kept = d.objects[*k];
  if (!kept) {
    kv::platform::AutoreleasePool pool;
    kept =
        Retained::adopt(kv::platform::send<id>(kv::platform::makeObject(it->second), Sel("copy")));
  }
  return Retained(kept).take();  // the caller owns a reference to the value
}

void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID) {
  auto k = kv::platform::stringOf(kv::platform::ns(key));
  auto app = kv::platform::stringOf(kv::platform::ns(applicationID));
  if (!k || !app) return;
  Domain& d = domainNamed(*app);
  Value v = kv::platform::valueOf(kv::platform::ns(value));
  if (v.isNone()) {
    d.values.erase(*k);
  } else {
    d.values[*k] = v;
  }
  d.objects.erase(*k);
  d.dirty = true;
  host::logEvent("prefs", "set " + *app + " " + *k + " = " + v.describe());
}

void CFRelease(CFTypeRef cf) {
  if (cf != nullptr) kv::platform::send<void>(kv::platform::ns(cf), Sel("release"));
}

CFTypeRef CFRetain(CFTypeRef cf) {
  if (cf != nullptr) kv::platform::send<id>(kv::platform::ns(cf), Sel("retain"));
  return cf;
}

CFAbsoluteTime CFAbsoluteTimeGetCurrent(void) {
  return host::now();
}

// ---- The main dispatch queue on the virtual run loop ----

static int gMainQueue;

dispatch_queue_t dispatch_get_main_queue(void) {
  return reinterpret_cast<dispatch_queue_t>(&gMainQueue);
}

dispatch_time_t dispatch_time(dispatch_time_t when, int64_t delta) {
  // Virtual nanoseconds since the reference date; "now" is the clock's now.
  int64_t base = when == DISPATCH_TIME_NOW ? host::nowNanos() : static_cast<int64_t>(when);
  int64_t t = base + delta;
  return t < 1 ? 1 : static_cast<dispatch_time_t>(t);
}

void dispatch_async(dispatch_queue_t, dispatch_block_t block) {
  if (block == nullptr) return;
  id copied = kv::platform::copyBlock(kv::platform::asObject(block));
  host::scheduleAfter(0, [copied] {
    kv::platform::callBlock<void()>(copied);
    kv::platform::releaseBlock(copied);
  });
}

void dispatch_after(dispatch_time_t when, dispatch_queue_t, dispatch_block_t block) {
  if (block == nullptr) return;
  int64_t due = when == DISPATCH_TIME_NOW ? host::nowNanos() : static_cast<int64_t>(when);
  id copied = kv::platform::copyBlock(kv::platform::asObject(block));
  host::scheduleAt(due, [copied] {
    kv::platform::callBlock<void()>(copied);
    kv::platform::releaseBlock(copied);
  });
}

// ---- The dynamic loader ----

void _dyld_register_func_for_add_image(void (*func)(const struct mach_header*, intptr_t)) {
  if (func == nullptr) return;
  imageCallbacks().push_back(func);
  func(nullptr, 0);  // as on a device: called at once for the images already loaded
}

// ---- The I/O registry ----

const mach_port_t kIOMasterPortDefault = 0;

CFMutableDictionaryRef IOServiceMatching(const char* name) {
  if (name == nullptr) return nullptr;
  Value matching = Value::dictionary({{"IOProviderClass", Value::string(name)}});
  return reinterpret_cast<CFMutableDictionaryRef>(
      Retained(kv::platform::makeObject(matching)).take());
}

io_service_t IOServiceGetMatchingService(mach_port_t, CFDictionaryRef matching) {
  if (matching == nullptr) return 0;
  std::string name = kv::platform::toString(
      kv::platform::objectForKey(kv::platform::ns(matching), "IOProviderClass"));
  CFRelease(matching);  // the call consumes one reference
  const auto& services = host::profile().ioServices;
  for (size_t i = 0; i < services.size(); ++i) {
    if (services[i] == name) return static_cast<io_service_t>(0x1000 + i);
  }
  return 0;
}

kern_return_t IOObjectRelease(io_object_t) {
  return 0;
}

// ---- Spawning: recorded, never run ----

int posix_spawn(pid_t* pid, const char* path, const posix_spawn_file_actions_t*,
                const posix_spawnattr_t*, char* const argv[], char* const[]) {
  std::string line = path;
  for (int i = 1; argv[i] != nullptr; ++i) {
    line += ' ';
    line += argv[i];
  }
  host::logEvent("spawn", line);
  static pid_t nextPid = 500;
  if (pid != nullptr) *pid = nextPid++;
  return 0;
}

// ---- The machine identifier ----

int uname(struct utsname* buf) {
  if (syscall(SYS_uname, buf) != 0) return -1;
  const std::string& machine = host::profile().machine;
  if (!machine.empty()) {
    std::strncpy(buf->machine, machine.c_str(), sizeof buf->machine - 1);
    buf->machine[sizeof buf->machine - 1] = '\0';
  }
  return 0;
}

// ---- The system log ----

void NSLog(id format, ...) {
  va_list args;
  va_start(args, format);
  kv::platform::AutoreleasePool pool;
  id text = kv::platform::send<id>(
      kv::platform::sendClass<id>(kv::platform::classNamed("NSString"), Sel("alloc")),
      Sel("initWithFormat:arguments:"), format, args);
  va_end(args);
  host::logEvent("nslog", kv::platform::toString(text));
  kv::platform::send<void>(text, Sel("release"));
}

}  // extern "C"
