// The simulated device: it starts and stops host processes, owns what they
// share (notify state, the messaging centre's routing, the file system root,
// Wi-Fi, the clock), routes notifications and messages between them in a
// deterministic order, and keeps the event log.
#pragma once

#include <sys/types.h>

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/value.h"
#include "sim/common/wire.h"
#include "sim/device/event_log.h"
#include "sim/device/settings_bundle.h"

namespace kv::sim {

using platform::Value;

struct DeviceOptions {
  bool ipad = false;
  std::string version = "11.1";
  std::string biometrics = "touchid";  // "none", "touchid", "faceid"
  int identities = 1;
  bool passcode = true;
  bool passKitLate = false;                   // SpringBoard loads PassKit only on first use
  std::string hostPath;                       // the kavelin-host executable
  std::string libraryPath;                    // libkavelin.so; empty: hosts run without it
  std::vector<std::string> privateLibraries;  // private-function libraries present
  std::vector<std::string> extensions;        // other extensions installed (their library files)
  BundlePlace settingsBundle = BundlePlace::kLibrary;
  int hostTimeoutMs = 20000;  // how long a host may take to answer
};

class Device {
 public:
  explicit Device(DeviceOptions options);
  ~Device();

  // Asks every running host to quit and waits for it. Answers what went
  // wrong, or "": a host that did not quit, ended with a failure status, or
  // whose error output carries a sanitizer's report (an error or a leak).
  std::string shutDown();
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  // Describes the device anew; only before the first host starts.
  void configure(const DeviceOptions& options);
  const DeviceOptions& options() const { return options_; }

  // The device's file-system root on this machine, and a device path in it.
  const std::string& root() const { return root_; }
  std::string realPath(const std::string& devicePath) const;

  // Starts a host ("SpringBoard", "Preferences", "Camera", "InCallService",
  // "app:BUNDLE-ID") and lets it settle; false with *error when it cannot.
  bool start(const std::string& process, std::string* error);
  bool running(const std::string& process) const;

  // The operating-system process id of a running host, or -1.
  pid_t pidOf(const std::string& process) const;

  // The process dies at once, as a crash would, with nothing said to it; a
  // start brings it back. False with *error when it is not running.
  bool kill(const std::string& process, std::string* error);

  // SpringBoard's process ends and starts again, the library loading
  // afresh, as a respring does on a device.
  bool respring(std::string* error);

  // Performs an action inside a running host and lets the device settle.
  bool action(const std::string& process, const std::string& name,
              const std::vector<std::string>& args, const std::string& rest, Value* result,
              std::string* error);

  // Asks a running host a question about its state; nullopt with *error when
  // the host is not running or cannot answer.
  std::optional<Value> query(const std::string& process, const std::string& name,
                             const std::vector<std::string>& args, std::string* error);

  // A Darwin notification posted from outside the library's processes.
  void post(const std::string& name, std::optional<uint64_t> state, const std::string& poster);

  // Writes (or with a none value removes) one key of a preference domain
  // file as the settings pane does.
  void writePreference(const std::string& domain, const std::string& key, const Value& value);
  Value readPreference(const std::string& domain, const std::string& key) const;

  // Writes a property-list file at a device path.
  bool writeFile(const std::string& devicePath, const Value& value);

  // Writes these exact bytes to a file at a device path.
  bool writeRawFile(const std::string& devicePath, const std::vector<uint8_t>& bytes);

  // True iff a file exists at a device path.
  bool fileExists(const std::string& devicePath) const;

  // The network the device is associated with (none: Wi-Fi off); it
  // becomes a known network too.
  void setWifi(const Value& network);

  // A network the device knows (has joined before, with its stored
  // password), without joining it.
  void addKnownWifi(const Value& network);

  // A setting of the device as a process last set it ("airplane"), none
  // before any did.
  Value setting(const std::string& key) const {
    auto it = settings_.find(key);
    return it == settings_.end() ? Value() : it->second;
  }

  // Lets virtual time pass; due work runs in order.
  void advance(double seconds);

  // Seconds since the device started.
  double elapsed() const { return static_cast<double>(now_ - kStart) / 1e9; }

  EventLog& log() { return log_; }
  void note(const std::string& process, const std::string& kind, const std::string& details);

  // Notices hosts that died while nothing was asked of them (between
  // commands, while time passes): each becomes a fault, with its exit
  // status, now rather than at the next command it would have been sent.
  void watchHosts();

  // The first fatal fault (a host crashed or stopped answering), or "".
  const std::string& fault() const { return fault_; }

  // The state of a notification name as the device holds it.
  uint64_t state(const std::string& name) const;

  // The clock, in nanoseconds since the reference date: 2017-11-01 09:00:00 UTC.
  static constexpr int64_t kStart = 531219600LL * 1000000000LL;

 private:
  struct Host {
    std::string name;
    std::string bundle;
    pid_t pid = -1;
    std::unique_ptr<Channel> channel;
    std::optional<int64_t> next;  // its earliest queued work
    std::set<std::string> observes;
    bool alive = false;
  };

  std::optional<Value> runCommand(Host& host, Value command);
  bool handleReport(Host& host, const Value& report);
  void onPost(const std::string& name, const std::string& poster);
  void rememberNetwork(const Value& network);
  void deliverWifi();
  void settle();
  void lost(Host& host, const std::string& why);
  Value helloFor(const Host& host) const;
  Host* find(const std::string& process);
  void layOut();

  DeviceOptions options_;
  std::string root_;
  int64_t now_ = kStart;
  std::vector<std::unique_ptr<Host>> hosts_;
  std::map<std::string, uint64_t> states_;
  std::map<std::string, Host*> centers_;
  std::deque<std::pair<Host*, Value>> deliveries_;
  Value wifi_;
  Value::Array knownWifi_;                 // in the order the device learnt them
  std::map<std::string, Value> settings_;  // device settings processes change (airplane mode)
  EventLog log_;
  std::string fault_;
};

}  // namespace kv::sim
