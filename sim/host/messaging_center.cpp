// CPDistributedMessagingCenter: named request/reply messaging between
// processes. The device routes each message to the process serving the
// centre; a request waits for the server's main thread to answer.
#include <map>
#include <string>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::host {

using platform::Retained;
using platform::Sel;
using platform::Value;

namespace {

struct Handler {
  Retained target;
  SEL selector;
};

struct Center {
  std::string name;
  std::map<std::string, Handler> handlers;
};

// The centres of this process, by object.
std::map<id, Center>& centers() {
  static auto* table = new std::map<id, Center>();
  return *table;
}

const std::string& centerName(id self) {
  static const std::string kNone;
  auto it = centers().find(self);
  return it == centers().end() ? kNone : it->second.name;
}

id centerNamed(id cls, SEL, id name) {
  static auto* byName = new std::map<std::string, Retained>();
  std::string n = platform::toString(name);
  auto it = byName->find(n);
  if (it != byName->end()) return it->second.get();
  id center = Retained::adopt(newObject(reinterpret_cast<Class>(cls))).take();
  (*byName)[n] = Retained::adopt(center);
  centers()[center].name = n;
  return center;
}

void runServerOnCurrentThread(id self, SEL) {
  report("center-serve", {{"center", Value::string(centerName(self))}});
}

void stopServer(id self, SEL) {
  report("center-stop", {{"center", Value::string(centerName(self))}});
}

void registerForMessageName(id self, SEL, id name, id target, SEL selector) {
  auto n = platform::stringOf(name);
  if (!n) return;
  centers()[self].handlers[*n] = Handler{Retained(target), selector};
}

id sendAndReceive(id self, SEL, id name, id userInfo) {
  Value reply = request("center-send", {{"center", Value::string(centerName(self))},
                                        {"name", Value::string(platform::toString(name))},
                                        {"userInfo", platform::valueOf(userInfo)},
                                        {"wantReply", Value::boolean(true)}});
  return platform::makeObject(reply["reply"]);
}

BOOL sendOneWay(id self, SEL, id name, id userInfo) {
  report("center-send", {{"center", Value::string(centerName(self))},
                         {"name", Value::string(platform::toString(name))},
                         {"userInfo", platform::valueOf(userInfo)},
                         {"wantReply", Value::boolean(false)}});
  return 1;
}

// Runs this process's handler for a message; answers its reply (none when
// there is no handler or it answers nil).
Value::Dictionary handleMessage(const Value& command) {
  const std::string& center = command["center"].asString();
  const std::string& name = command["name"].asString();
  for (auto& [obj, c] : centers()) {
    if (c.name != center) continue;
    auto it = c.handlers.find(name);
    if (it == c.handlers.end()) break;
    platform::AutoreleasePool pool;
    Handler h = it->second;
    id info = platform::makeObject(command["userInfo"]);
    id reply = platform::send<id>(h.target.get(), Sel("performSelector:withObject:withObject:"),
                                  h.selector, platform::makeString(name), info);
    return {{"reply", platform::valueOf(reply)}};
  }
  return {{"reply", Value()}};
}

}  // namespace

void defineMessagingCenter() {
  ClassBuilder("CPDistributedMessagingCenter", "NSObject")
      .classMethod("centerNamed:", imp(centerNamed), "@@:@")
      .instance("runServerOnCurrentThread", imp(runServerOnCurrentThread), "v@:")
      .instance("stopServer", imp(stopServer), "v@:")
      .instance("registerForMessageName:target:selector:", imp(registerForMessageName), "v@:@@:")
      .instance("sendMessageAndReceiveReplyName:userInfo:", imp(sendAndReceive), "@@:@@")
      .instance("sendMessageName:userInfo:", imp(sendOneWay), "C@:@@")
      .build();
  onCommand("center-handle", handleMessage);
}

}  // namespace kv::sim::host
