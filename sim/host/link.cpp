// The host's link to the device.
#include "sim/host/link.h"

#include <cstdio>
#include <map>

#include "sim/common/wire.h"
#include "sim/host/run_loop.h"

namespace kv::sim::host {

namespace {

Channel*& channelSlot() {
  static Channel* c = new Channel();
  return c;
}
Channel& channel() {
  return *channelSlot();
}

std::map<std::string, CommandHandler>& handlers() {
  static auto* table = new std::map<std::string, CommandHandler>();
  return *table;
}

std::string& name() {
  static auto* n = new std::string("host");
  return *n;
}

// Handles one command and sends its answer. Returns false for "quit".
bool handle(const Value& command) {
  const std::string& op = opOf(command);
  if (op == "quit") return false;
  const Value& clock = command["now"];
  if (clock.kind() == Value::Kind::kInteger) setNowNanos(clock.asInteger());
  Value::Dictionary answer;
  auto it = handlers().find(op);
  if (it == handlers().end()) {
    answer["error"] = Value::string("unknown command " + op);
  } else {
    answer = it->second(command);
  }
  if (auto due = nextDue()) answer["next"] = Value::integer(*due);
  channel().send(message("done", std::move(answer)));
  return true;
}

}  // namespace

void attachToDevice(int fd) {
  delete channelSlot();
  channelSlot() = new Channel(fd);
}
bool attached() {
  return channel().fd() >= 0;
}

void report(const char* op, Value::Dictionary fields) {
  if (!attached()) return;
  channel().send(message(op, std::move(fields)));
}

void logEvent(const std::string& kind, const std::string& details) {
  if (!attached()) {
    std::fprintf(stderr, "[%s] %s %s\n", name().c_str(), kind.c_str(), details.c_str());
    return;
  }
  report("event", {{"kind", Value::string(kind)}, {"details", Value::string(details)}});
}

Value request(const char* op, Value::Dictionary fields) {
  if (!attached()) return {};
  if (!channel().send(message(op, std::move(fields)))) return {};
  for (;;) {
    auto incoming = channel().receive(-1);
    if (!incoming) std::_Exit(3);  // the device is gone: nothing left to serve
    if (opOf(*incoming) == "reply") return *incoming;
    if (!handle(*incoming)) std::_Exit(0);
  }
}

void onCommand(const std::string& op, CommandHandler handler) {
  handlers()[op] = std::move(handler);
}

const std::string& processName() {
  return name();
}
void setProcessName(std::string n) {
  name() = std::move(n);
}

void serve() {
  for (;;) {
    auto command = channel().receive(-1);
    if (!command || !handle(*command)) return;
  }
}

}  // namespace kv::sim::host
