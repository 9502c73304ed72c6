// The simulated device.
#include "sim/device/device.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "sim/common/device_paths.h"
#include "sim/common/plist.h"
#include "sim/device/profiles.h"

extern char** environ;

namespace kv::sim {

namespace {

constexpr int kMaxSettleSteps = 100000;

// The folders every device has.
const char* const kStandardFolders[] = {
    "/var/mobile/Library/Preferences",
    "/var/mobile/Library/Logs",
    "/private/var/tmp",
    "/Library/PreferenceBundles",
    "/Library/MobileSubstrate/DynamicLibraries",
    "/bootstrap/Library/PreferenceBundles",
    "/System/Library/Frameworks/PassKit.framework",  // loaded by path when a process needs it
};

std::string machineFor(const DeviceOptions& o) {
  if (o.ipad) return "iPad6,3";
  if (o.biometrics == "faceid") return "iPhone10,3";
  if (o.biometrics == "none") return "iPhone5,2";
  return "iPhone8,1";
}

std::string describeStatus(int status) {
  if (WIFSIGNALED(status)) {
    int sig = WTERMSIG(status);
    return "signal " + std::to_string(sig) + " (" + strsignal(sig) + ")";
  }
  if (WIFEXITED(status)) return "exit status " + std::to_string(WEXITSTATUS(status));
  return "unknown status";
}

constexpr int kQuitTimeoutMs = 2000;    // a host asked to quit
constexpr int kStartTimeoutMs = 10000;  // a host starting: frameworks and the library load
constexpr int kCrashTimeoutMs = 1000;   // a host whose socket closed

// KAVELIN_SIM_POLL_EXIT=1 waits for hosts to end by looking every 10 ms,
// as the device once did, so that a benchmark can measure against it.
bool pollForExit() {
  static const bool poll = [] {
    const char* chosen = std::getenv("KAVELIN_SIM_POLL_EXIT");
    return chosen != nullptr && std::strcmp(chosen, "1") == 0;
  }();
  return poll;
}

// Waits up to `timeoutMs` for `pid` to end, without polling where the
// kernel can say when (a pidfd); answers whether it ended, with *status.
bool waitForExit(pid_t pid, int timeoutMs, int* status) {
  pid_t done = waitpid(pid, status, WNOHANG);
  if (done != 0) return done == pid;
  if (pollForExit()) {
    for (int waited = 0; waited < timeoutMs; waited += 10) {
      usleep(10000);
      if (waitpid(pid, status, WNOHANG) == pid) return true;
    }
    return false;
  }
  int fd = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
  if (fd >= 0) {
    pollfd p{fd, POLLIN, 0};
    poll(&p, 1, timeoutMs);
    close(fd);
    return waitpid(pid, status, WNOHANG) == pid;
  }
  for (int waited = 0; waited < timeoutMs; waited += 5) {
    if (waitpid(pid, status, WNOHANG) == pid) return true;
    usleep(5000);
  }
  return false;
}

// Ends `pid` for good: a last chance to exit within `timeoutMs`, then a kill.
// Answers whether it had to be killed.
bool endProcess(pid_t pid, int timeoutMs, int* status) {
  if (timeoutMs > 0 && waitForExit(pid, timeoutMs, status)) return false;
  ::kill(pid, SIGKILL);
  waitpid(pid, status, 0);
  return true;
}

// True iff `path`, with "." and ".." resolved, lies under the folder `root`.
bool isInside(const std::string& root, const std::string& path) {
  std::string normal = std::filesystem::path(path).lexically_normal().string();
  return normal.size() > root.size() && normal.compare(0, root.size(), root) == 0 &&
         normal[root.size()] == '/';
}

}  // namespace

Device::Device(DeviceOptions options) : options_(std::move(options)) {
  // The device's files live in memory where the machine has a memory file
  // system: making and removing a device's folder tree is most of a short
  // scenario's cost on a disk.
  // KAVELIN_SIM_FOLDER chooses another place (to measure against a disk).
  const char* chosen = std::getenv("KAVELIN_SIM_FOLDER");
  std::string parent = chosen != nullptr                      ? chosen
                       : access("/dev/shm", W_OK | X_OK) == 0 ? "/dev/shm"
                       : std::getenv("TMPDIR") != nullptr     ? std::getenv("TMPDIR")
                                                              : "/tmp";
  std::string pattern = parent + "/kavelin-sim-XXXXXX";
  const char* made = mkdtemp(pattern.data());
  // Without a folder of its own the device has nowhere to live, and its end
  // would remove whatever folder it had borrowed: stop here instead.
  if (made == nullptr) {
    std::fprintf(stderr, "kavelin-sim: cannot make a device folder under %s: %s\n", parent.c_str(),
                 std::strerror(errno));
    std::exit(2);
  }
  root_ = std::string(made) + "/root";
  layOut();
}

void Device::configure(const DeviceOptions& options) {
  options_ = options;
  layOut();
}

// The device's folders, its settings bundle and other extensions' libraries.
void Device::layOut() {
  for (const char* folder : kStandardFolders) {
    std::error_code ec;
    std::filesystem::create_directories(realPath(folder), ec);
  }
  installSettingsBundle(root_, options_.settingsBundle);
  for (const auto& extension : options_.extensions) {
    std::ofstream(realPath("/Library/MobileSubstrate/DynamicLibraries/" + extension + ".dylib"))
        << "extension library " << extension << "\n";
  }
}

std::string Device::shutDown() {
  for (auto& h : hosts_) {
    if (!h->alive) continue;
    h->channel->send(message("quit"));
  }
  std::string problems;
  for (auto& h : hosts_) {
    if (h->pid <= 0) continue;
    int status = 0;
    std::string problem;
    // A host under the leak checker takes its time to end: it gets the
    // time-out of any other step.
    if (endProcess(h->pid, std::max(kQuitTimeoutMs, options_.hostTimeoutMs), &status)) {
      problem = "did not quit and was killed";
    } else if (!(WIFEXITED(status) && WEXITSTATUS(status) == 0)) {
      problem = "ended with " + describeStatus(status);
    }
    h->pid = -1;
    h->alive = false;
    // A sanitizer's report counts even when the host exited cleanly.
    std::ifstream err(std::filesystem::path(root_).parent_path() / (h->name + ".stderr"));
    std::string line;
    while (std::getline(err, line)) {
      bool report = line.find("ERROR: AddressSanitizer") != std::string::npos ||
                    line.find("ERROR: LeakSanitizer") != std::string::npos ||
                    line.find("runtime error:") != std::string::npos;
      if (!report) continue;
      if (line.find("LeakSanitizer") != std::string::npos) {
        std::string summary;
        while (std::getline(err, summary)) {
          if (summary.find("SUMMARY:") != std::string::npos) line = summary;
        }
      }
      problem += (problem.empty() ? "" : "; ") + line;
      break;
    }
    if (problem.empty()) continue;
    note(h->name, "fault", problem);
    problems += (problems.empty() ? "" : "; ") + h->name + " " + problem;
  }
  return problems;
}

Device::~Device() {
  shutDown();
  std::error_code ec;
  std::filesystem::remove_all(std::filesystem::path(root_).parent_path(), ec);
}

std::string Device::realPath(const std::string& devicePath) const {
  return mapDevicePath(root_, devicePath);
}

void Device::note(const std::string& process, const std::string& kind, const std::string& details) {
  log_.add(elapsed(), process, kind, details);
}

uint64_t Device::state(const std::string& name) const {
  auto it = states_.find(name);
  return it == states_.end() ? 0 : it->second;
}

Device::Host* Device::find(const std::string& process) {
  for (auto& h : hosts_) {
    if (h->alive && (h->name == process || h->bundle == process)) return h.get();
  }
  return nullptr;
}

bool Device::running(const std::string& process) const {
  return const_cast<Device*>(this)->find(process) != nullptr;
}

pid_t Device::pidOf(const std::string& process) const {
  const Host* h = const_cast<Device*>(this)->find(process);
  return h == nullptr ? -1 : h->pid;
}

Value Device::helloFor(const Host& host) const {
  const OsProfile* os = osProfile(options_.version);
  Value::Array io;
  if (options_.biometrics == "touchid") io.push_back(Value::string("AppleMesa"));
  if (options_.biometrics == "faceid") io.push_back(Value::string("AppleH10PearlCam"));
  Value::Array privateLibraries;
  for (const auto& p : options_.privateLibraries) privateLibraries.push_back(Value::string(p));
  return message("hello",
                 {
                     {"now", Value::integer(now_)},
                     {"process", Value::string(host.name)},
                     {"bundle", Value::string(host.bundle)},
                     {"osVersion", Value::string(os ? os->version : options_.version)},
                     {"osVersionString",
                      Value::string(os ? os->versionString : "Version " + options_.version)},
                     {"model", Value::string(options_.ipad ? "iPad" : "iPhone")},
                     {"machine", Value::string(machineFor(options_))},
                     {"idiom", Value::integer(options_.ipad ? 1 : 0)},
                     {"biometrics", Value::string(options_.biometrics)},
                     {"passcode", Value::boolean(options_.passcode)},
                     {"identities", Value::integer(options_.identities)},
                     {"passKitLate", Value::boolean(options_.passKitLate)},
                     {"ioServices", Value::array(io)},
                     {"privateLibraries", Value::array(privateLibraries)},
                     {"root", Value::string(root_)},
                     {"library", Value::string(options_.libraryPath)},
                 });
}

bool Device::kill(const std::string& process, std::string* error) {
  ProcessProfile profile;
  Host* h = processProfile(process, &profile) ? find(profile.name) : find(process);
  if (h == nullptr) {
    *error = process + " is not running";
    return false;
  }
  ::kill(h->pid, SIGKILL);
  int status = 0;
  waitpid(h->pid, &status, 0);
  h->pid = -1;
  h->alive = false;
  for (auto it = centers_.begin(); it != centers_.end();) {
    it = it->second == h ? centers_.erase(it) : std::next(it);
  }
  note("device", "kill", h->name);
  return true;
}

bool Device::respring(std::string* error) {
  Host* h = find("SpringBoard");
  if (h == nullptr) {
    *error = "SpringBoard is not running";
    return false;
  }
  note("device", "respring", "SpringBoard ends and starts again");
  h->channel->send(message("quit"));
  int status = 0;
  endProcess(h->pid, kQuitTimeoutMs, &status);
  h->pid = -1;
  h->alive = false;
  for (auto it = centers_.begin(); it != centers_.end();) {
    it = it->second == h ? centers_.erase(it) : std::next(it);
  }
  return start("SpringBoard", error);
}

bool Device::start(const std::string& process, std::string* error) {
  ProcessProfile profile;
  if (!processProfile(process, &profile)) {
    *error = "unknown process " + process;
    return false;
  }
  if (find(profile.name) != nullptr) {
    *error = profile.name + " is already running";
    return false;
  }
  int fds[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds) != 0) {
    *error = std::string("socketpair: ") + std::strerror(errno);
    return false;
  }
  std::string logPath = std::filesystem::path(root_).parent_path() / (profile.name + ".stderr");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fds[1], 3);
  posix_spawn_file_actions_addopen(&actions, 2, logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND,
                                   0644);
  std::string home = realPath("/var/mobile");
  std::vector<std::string> env = {"HOME=" + home, "TZ=UTC"};
  for (char** e = environ; *e != nullptr; ++e) {
    std::string var = *e;
    if (var.rfind("ASAN_", 0) == 0 || var.rfind("LSAN_", 0) == 0 || var.rfind("UBSAN_", 0) == 0 ||
        var.rfind("PATH=", 0) == 0 || var.rfind("LD_", 0) == 0) {
      env.push_back(var);
    }
  }
  std::vector<char*> envp;
  for (auto& v : env) envp.push_back(v.data());
  envp.push_back(nullptr);
  std::string fdArg = "--fd=3";
  std::string path = options_.hostPath;
  char* argv[] = {path.data(), fdArg.data(), nullptr};
  pid_t pid = -1;
  int rc = posix_spawn(&pid, path.c_str(), &actions, nullptr, argv, envp.data());
  posix_spawn_file_actions_destroy(&actions);
  close(fds[1]);
  if (rc != 0) {
    close(fds[0]);
    *error = "cannot start " + path + ": " + std::strerror(rc);
    return false;
  }
  auto host = std::make_unique<Host>();
  host->name = profile.name;
  host->bundle = profile.bundleIdentifier;
  host->pid = pid;
  host->channel = std::make_unique<Channel>(fds[0]);
  host->alive = true;
  Host& h = *host;
  hosts_.push_back(std::move(host));
  note("device", "start", h.name);
  auto done = runCommand(h, helloFor(h));
  if (!done) {
    *error = fault_;
    return false;
  }
  if (!(*done)["error"].isNone()) {
    *error = h.name + ": " + (*done)["error"].asString();
    return false;
  }
  settle();
  return fault_.empty() || (*error = fault_, false);
}

bool Device::action(const std::string& process, const std::string& name,
                    const std::vector<std::string>& args, const std::string& rest, Value* result,
                    std::string* error) {
  Host* h = find(process);
  if (h == nullptr) {
    *error = process + " is not running";
    return false;
  }
  Value::Array words;
  for (const auto& a : args) words.push_back(Value::string(a));
  auto done = runCommand(*h, message("action", {{"action", Value::string(name)},
                                                {"args", Value::array(words)},
                                                {"rest", Value::string(rest)}}));
  if (!done) {
    *error = fault_;
    return false;
  }
  settle();
  if (!(*done)["error"].isNone()) {
    *error = (*done)["error"].asString();
    return false;
  }
  if (result != nullptr) *result = (*done)["result"];
  if (!fault_.empty()) {
    *error = fault_;
    return false;
  }
  return true;
}

std::optional<Value> Device::query(const std::string& process, const std::string& name,
                                   const std::vector<std::string>& args, std::string* error) {
  Host* h = find(process);
  if (h == nullptr) {
    *error = process + " is not running";
    return std::nullopt;
  }
  Value::Array words;
  for (const auto& a : args) words.push_back(Value::string(a));
  auto done = runCommand(
      *h, message("query", {{"query", Value::string(name)}, {"args", Value::array(words)}}));
  if (!done) {
    *error = fault_;
    return std::nullopt;
  }
  if (!(*done)["error"].isNone()) {
    *error = (*done)["error"].asString();
    return std::nullopt;
  }
  return (*done)["answer"];
}

void Device::post(const std::string& name, std::optional<uint64_t> state,
                  const std::string& poster) {
  if (state) states_[name] = *state;
  onPost(name, poster);
  settle();
}

void Device::onPost(const std::string& name, const std::string& poster) {
  auto it = states_.find(name);
  std::string details = name;
  if (it != states_.end()) details += " state=" + std::to_string(it->second);
  note(poster, "posted", details);
  for (auto& h : hosts_) {
    if (h->alive && h->observes.count(name) != 0) {
      deliveries_.emplace_back(h.get(), message("deliver", {{"name", Value::string(name)}}));
    }
  }
}

void Device::writePreference(const std::string& domain, const std::string& key,
                             const Value& value) {
  std::string path = realPath("/var/mobile/Library/Preferences/" + domain + ".plist");
  auto contents = readPlistFile(path);
  Value::Dictionary values = contents ? contents->asDictionary() : Value::Dictionary{};
  if (value.isNone()) {
    values.erase(key);
  } else {
    values[key] = value;
  }
  writePlistFile(path, Value::dictionary(values), PlistFormat::kBinary);
  note("device", "prefs", domain + " " + key + " = " + value.describe());
}

Value Device::readPreference(const std::string& domain, const std::string& key) const {
  auto contents = readPlistFile(realPath("/var/mobile/Library/Preferences/" + domain + ".plist"));
  return contents ? (*contents)[key] : Value();
}

bool Device::writeFile(const std::string& devicePath, const Value& value) {
  std::string path = realPath(devicePath);
  if (!isInside(root_, path)) {
    note("device", "file", devicePath + " (outside the device's root: not written)");
    return false;
  }
  std::error_code ec;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ec);
  bool ok = writePlistFile(path, value, PlistFormat::kXml);
  note("device", "file", devicePath + (ok ? "" : " (write failed)"));
  return ok;
}

bool Device::writeRawFile(const std::string& devicePath, const std::vector<uint8_t>& bytes) {
  std::string path = realPath(devicePath);
  if (!isInside(root_, path)) {
    note("device", "file", devicePath + " (outside the device's root: not written)");
    return false;
  }
  std::error_code ec;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ec);
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
  bool ok = out.good();
  note(
      "device", "file",
      devicePath + " (" + std::to_string(bytes.size()) + " bytes)" + (ok ? "" : " (write failed)"));
  return ok;
}

bool Device::fileExists(const std::string& devicePath) const {
  std::error_code ec;
  return std::filesystem::exists(realPath(devicePath), ec);
}

void Device::setWifi(const Value& network) {
  wifi_ = network;
  note("device", "wifi", network.isNone() ? "off" : network.describe());
  if (!network.isNone()) rememberNetwork(network);
  deliverWifi();
}

void Device::addKnownWifi(const Value& network) {
  note("device", "wifi-known", network.describe());
  rememberNetwork(network);
  deliverWifi();
}

// A network joined or learnt again keeps its place, with what is new.
void Device::rememberNetwork(const Value& network) {
  for (auto& known : knownWifi_) {
    if (known["bssid"] == network["bssid"]) {
      known = network;
      return;
    }
  }
  knownWifi_.push_back(network);
}

void Device::deliverWifi() {
  for (auto& h : hosts_) {
    if (h->alive)
      deliveries_.emplace_back(
          h.get(), message("wifi", {{"network", wifi_}, {"known", Value::array(knownWifi_)}}));
  }
  settle();
}

void Device::advance(double seconds) {
  int64_t target = now_ + (seconds > 0 ? std::llround(seconds * 1e9) : 0);
  for (;;) {
    watchHosts();
    settle();
    std::optional<int64_t> earliest;
    for (auto& h : hosts_) {
      if (h->alive && h->next && (!earliest || *h->next < *earliest)) earliest = h->next;
    }
    if (!earliest || *earliest > target || !fault_.empty()) break;
    if (*earliest > now_) now_ = *earliest;
    for (auto& h : hosts_) {
      if (h->alive && h->next && *h->next <= now_) {
        runCommand(*h, message("run"));
        settle();
      }
    }
  }
  now_ = target;
}

void Device::settle() {
  for (int step = 0; step < kMaxSettleSteps && fault_.empty(); ++step) {
    if (!deliveries_.empty()) {
      auto [host, command] = std::move(deliveries_.front());
      deliveries_.pop_front();
      if (host->alive) runCommand(*host, std::move(command));
      continue;
    }
    Host* due = nullptr;
    for (auto& h : hosts_) {
      if (h->alive && h->next && *h->next <= now_) {
        due = h.get();
        break;
      }
    }
    if (due == nullptr) return;
    runCommand(*due, message("run"));
  }
  if (fault_.empty())
    fault_ = "the device did not settle: the hosts keep handing work to each other";
}

void Device::watchHosts() {
  for (auto& h : hosts_) {
    int status = 0;
    if (!h->alive || h->pid <= 0 || waitpid(h->pid, &status, WNOHANG) != h->pid) continue;
    h->pid = -1;  // reaped: lost() has nothing left to wait for
    lost(*h, "crashed while idle: " + describeStatus(status));
  }
}

void Device::lost(Host& host, const std::string& why) {
  host.alive = false;
  int status = 0;
  std::string what = why;
  if (host.pid > 0) {
    // A host that went quiet past its time-out is ended at once; one whose
    // socket closed is crashing, and says how once it has ended.
    bool hung = why.find("wall time") != std::string::npos;
    if (endProcess(host.pid, hung ? 0 : kCrashTimeoutMs, &status)) {
      what += " and was killed";
    } else {
      what = "crashed: " + describeStatus(status);
    }
    host.pid = -1;
  }
  for (auto it = centers_.begin(); it != centers_.end();) {
    it = it->second == &host ? centers_.erase(it) : std::next(it);
  }
  // What the host said last on its error output (a sanitizer's report, an
  // uncaught exception) goes with the fault.
  std::ifstream err(std::filesystem::path(root_).parent_path() / (host.name + ".stderr"));
  std::string line, said;
  while (std::getline(err, line)) {
    if (line.find("ERROR:") != std::string::npos || line.find("exception") != std::string::npos ||
        line.find("runtime error:") != std::string::npos) {
      said = line;
    }
  }
  if (!said.empty()) what += " [" + said + "]";
  note(host.name, "fault", what);
  if (fault_.empty()) fault_ = host.name + " " + what;
}

std::optional<Value> Device::runCommand(Host& host, Value command) {
  if (!host.alive) return std::nullopt;
  Value::Dictionary fields = command.asDictionary();
  fields["now"] = Value::integer(now_);
  std::string op = fields["op"].asString();
  if (!host.channel->send(Value::dictionary(fields))) {
    lost(host, "stopped answering (socket closed)");
    return std::nullopt;
  }
  // A start does more than any step, and more still under the sanitizers on
  // a busy machine: it is never held to a step's shorter time-out.
  int limitMs =
      op == "hello" ? std::max(kStartTimeoutMs, options_.hostTimeoutMs) : options_.hostTimeoutMs;
  for (;;) {
    std::string why;
    auto incoming = host.channel->receive(limitMs, &why);
    if (!incoming) {
      lost(host, why == "timed out" ? "did not finish '" + op + "' within " +
                                          std::to_string(limitMs / 1000) + " s of wall time"
                                    : "stopped answering during '" + op + "'");
      return std::nullopt;
    }
    if (opOf(*incoming) == "done") {
      const Value& next = (*incoming)["next"];
      host.next = next.kind() == Value::Kind::kInteger ? std::optional<int64_t>(next.asInteger())
                                                       : std::nullopt;
      return incoming;
    }
    if (!handleReport(host, *incoming)) return std::nullopt;
  }
}

bool Device::handleReport(Host& host, const Value& report) {
  const std::string& op = opOf(report);
  if (op == "event") {
    note(host.name, report["kind"].asString(), report["details"].asString());
  } else if (op == "post") {
    onPost(report["name"].asString(), host.name);
  } else if (op == "observe") {
    host.observes.insert(report["name"].asString());
  } else if (op == "state-set") {
    const std::string& name = report["name"].asString();
    states_[name] = static_cast<uint64_t>(report["state"].asInteger());
    note(host.name, "state", name + " = " + std::to_string(states_[name]));
  } else if (op == "state-get") {
    auto state = static_cast<int64_t>(this->state(report["name"].asString()));
    host.channel->send(message("reply", {{"state", Value::integer(state)}}));
  } else if (op == "center-serve") {
    centers_[report["center"].asString()] = &host;
    note(host.name, "center", "serving " + report["center"].asString());
  } else if (op == "center-stop") {
    centers_.erase(report["center"].asString());
  } else if (op == "center-send") {
    const std::string& center = report["center"].asString();
    const std::string& name = report["name"].asString();
    bool wantReply = report["wantReply"].asBool();
    note(host.name, "sent",
         name + " to " + center +
             (report["userInfo"].isNone() ? "" : " " + report["userInfo"].describe()));
    auto server = centers_.find(center);
    Value handle = message("center-handle", {{"center", Value::string(center)},
                                             {"name", Value::string(name)},
                                             {"userInfo", report["userInfo"]}});
    if (!wantReply) {
      if (server != centers_.end()) deliveries_.emplace_back(server->second, handle);
      return true;
    }
    Value reply;
    if (server != centers_.end() && server->second->alive) {
      if (auto done = runCommand(*server->second, handle)) reply = (*done)["reply"];
    }
    note(host.name, "reply", name + " " + reply.describe());
    host.channel->send(message("reply", {{"reply", reply}}));
  } else if (op == "device-get") {
    const std::string& key = report["key"].asString();
    Value value = key == "wifi"         ? wifi_
                  : key == "known-wifi" ? Value::array(knownWifi_)
                                        : setting(key);
    host.channel->send(message("reply", {{"value", value}}));
  } else if (op == "device-set") {
    const std::string& key = report["key"].asString();
    settings_[key] = report["value"];
    note(host.name, "device", key + " = " + report["value"].describe());
  } else {
    note(host.name, "error", "unknown report '" + op + "'");
  }
  return host.alive;
}

}  // namespace kv::sim
