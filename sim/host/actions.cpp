// Host commands: run due work, deliver notifications, perform actions; and
// the core "send" action, which sends any message with JSON arguments.
#include "sim/host/actions.h"

#include <cctype>
#include <cstring>
#include <map>

#include "platform/foundation.h"
#include "platform/runtime.h"
#include "sim/common/json.h"
#include "sim/host/link.h"
#include "sim/host/run_loop.h"

namespace kv::sim::host {

void deliverDarwinNotification(const std::string& name);

using platform::Sel;
using platform::send;
using platform::Value;

namespace {

std::map<std::string, Action>& actions() {
  static auto* table = new std::map<std::string, Action>();
  return *table;
}

std::map<std::string, Query>& queries() {
  static auto* table = new std::map<std::string, Query>();
  return *table;
}

// Answers a query without running anything: the state as it stands.
Value::Dictionary runQuery(const Value& command) {
  const std::string& name = command["query"].asString();
  auto it = queries().find(name);
  if (it == queries().end()) {
    return {{"error", Value::string("no query " + name + " in " + processName())}};
  }
  std::vector<std::string> args;
  for (const auto& a : command["args"].asArray()) args.push_back(a.asString());
  platform::AutoreleasePool pool;
  return {{"answer", it->second(args)}};
}

// Skips type qualifiers (const, in, out, ...) of an encoding.
const char* bareType(const char* type) {
  while (type != nullptr && *type != '\0' && std::strchr("rnNoORV", *type) != nullptr) ++type;
  return type == nullptr ? "" : type;
}

// Stores `v` into `buffer` as the encoded type; false when they do not fit.
bool packArgument(const char* type, const Value& v, unsigned char* buffer, std::string* error) {
  auto integer = [&](auto zero) {
    auto x =
        static_cast<decltype(zero)>(v.kind() == Value::Kind::kBool ? v.asBool() : v.asInteger());
    std::memcpy(buffer, &x, sizeof x);
    return v.kind() == Value::Kind::kInteger || v.kind() == Value::Kind::kBool ||
           v.kind() == Value::Kind::kReal;
  };
  switch (*type) {
    case '@': {
      id obj = platform::makeObject(v);
      std::memcpy(buffer, &obj, sizeof obj);
      return true;
    }
    case ':': {
      SEL s = v.kind() == Value::Kind::kString ? platform::selector(v.asString().c_str()) : nullptr;
      std::memcpy(buffer, &s, sizeof s);
      return true;
    }
    case 'c': return integer(static_cast<signed char>(0));
    case 'C': return integer(static_cast<unsigned char>(0));
    case 'B': return integer(false);
    case 's': return integer(short{0});
    case 'S': return integer(static_cast<unsigned short>(0));
    case 'i': return integer(0);
    case 'I': return integer(0u);
    case 'l': return integer(0L);
    case 'L': return integer(0UL);
    case 'q': return integer(0LL);
    case 'Q': return integer(0ULL);
    case 'f': {
      float f = static_cast<float>(v.asReal());
      std::memcpy(buffer, &f, sizeof f);
      return true;
    }
    case 'd': {
      double d = v.asReal();
      std::memcpy(buffer, &d, sizeof d);
      return true;
    }
    case '^':  // a pointer or block: only null can be written in JSON
      std::memset(buffer, 0, sizeof(void*));
      return v.isNone();
    default: *error = std::string("cannot pass an argument of type ") + type; return false;
  }
}

Value unpackResult(const char* type, const unsigned char* buffer) {
  auto read = [&](auto zero) {
    decltype(zero) x;
    std::memcpy(&x, buffer, sizeof x);
    return x;
  };
  switch (*type) {
    case '@': return platform::valueOf(read(static_cast<id>(nullptr)));
    case 'c': return Value::integer(read(static_cast<signed char>(0)));
    case 'C': return Value::integer(read(static_cast<unsigned char>(0)));
    case 'B': return Value::boolean(read(false));
    case 's': return Value::integer(read(short{0}));
    case 'S': return Value::integer(read(static_cast<unsigned short>(0)));
    case 'i': return Value::integer(read(0));
    case 'I': return Value::integer(read(0u));
    case 'l': return Value::integer(read(0L));
    case 'L': return Value::integer(static_cast<int64_t>(read(0UL)));
    case 'q': return Value::integer(read(0LL));
    case 'Q': return Value::integer(static_cast<int64_t>(read(0ULL)));
    case 'f': return Value::real(read(0.0f));
    case 'd': return Value::real(read(0.0));
    default: return Value();
  }
}

// True for a selector whose method returns an object its caller owns:
// "new", "alloc", "copy" or "mutableCopy", alone or followed by a capital.
bool ownsResult(const std::string& selector) {
  for (const char* family : {"new", "alloc", "copy", "mutableCopy"}) {
    size_t n = std::strlen(family);
    if (selector.compare(0, n, family) == 0 &&
        (selector.size() == n || !std::islower(static_cast<unsigned char>(selector[n])))) {
      return true;
    }
  }
  return false;
}

// send TARGET SELECTOR [ARGS]: TARGET is a class (a class method) or
// shared:CLASS (its shared instance); ARGS is a JSON array of the arguments.
Value sendAction(const ActionRequest& request, std::string* error) {
  if (request.args.size() < 2) {
    *error = "send needs TARGET SELECTOR [ARGS]";
    return {};
  }
  std::string targetName = request.args[0];
  const std::string& selectorName = request.args[1];
  Value arguments = Value::array({});
  auto at = request.rest.find(selectorName);
  std::string json = at == std::string::npos ? "" : request.rest.substr(at + selectorName.size());
  if (json.find_first_not_of(" \t") != std::string::npos) {
    std::string why;
    auto parsed = parseJson(json, &why);
    if (!parsed || parsed->kind() != Value::Kind::kArray) {
      *error = "send ARGS must be a JSON array: " + (parsed ? std::string("not an array") : why);
      return {};
    }
    arguments = *parsed;
  }
  bool shared = targetName.rfind("shared:", 0) == 0;
  if (shared) targetName = targetName.substr(7);
  Class cls = platform::classNamed(targetName.c_str());
  if (cls == nullptr) {
    *error = "no class " + targetName + " in " + processName();
    return {};
  }
  id target = platform::asId(cls);
  if (shared) {
    // The application object's shared instance is its shared application.
    const char* accessor = platform::respondsTo(target, Sel("sharedInstance"))
                               ? "sharedInstance"
                               : "sharedApplication";
    target =
        platform::respondsTo(target, Sel(accessor)) ? send<id>(target, Sel(accessor)) : nullptr;
  }
  SEL sel = platform::selector(selectorName.c_str());
  if (target == nullptr || !platform::respondsTo(target, sel)) {
    *error = request.args[0] + " does not respond to " + selectorName;
    return {};
  }
  id signature = send<id>(target, Sel("methodSignatureForSelector:"), sel);
  auto count = send<platform::UInteger>(signature, Sel("numberOfArguments"));
  if (arguments.asArray().size() + 2 != count) {
    *error = selectorName + " takes " + std::to_string(count - 2) + " argument(s), given " +
             std::to_string(arguments.asArray().size());
    return {};
  }
  id invocation = platform::sendClass<id>(platform::classNamed("NSInvocation"),
                                          Sel("invocationWithMethodSignature:"), signature);
  send<void>(invocation, Sel("setTarget:"), target);
  send<void>(invocation, Sel("setSelector:"), sel);
  for (platform::UInteger i = 2; i < count; ++i) {
    alignas(16) unsigned char buffer[16] = {};
    const char* type = bareType(send<const char*>(signature, Sel("getArgumentTypeAtIndex:"), i));
    if (!packArgument(type, arguments.asArray()[i - 2], buffer, error)) {
      if (error->empty()) *error = "argument " + std::to_string(i - 1) + " has the wrong type";
      return {};
    }
    send<void>(invocation, Sel("setArgument:atIndex:"), static_cast<void*>(buffer),
               static_cast<platform::Integer>(i));
  }
  send<void>(invocation, Sel("invoke"));
  const char* returnType = bareType(send<const char*>(signature, Sel("methodReturnType")));
  alignas(16) unsigned char result[64] = {};
  if (*returnType != 'v' && *returnType != '{') {
    send<void>(invocation, Sel("getReturnValue:"), static_cast<void*>(result));
  }
  Value answer = unpackResult(returnType, result);
  // A method of the new, alloc or copy families hands its caller an object
  // it owns; nobody here keeps it, so it goes with the action's pool.
  if (*returnType == '@' && ownsResult(selectorName)) {
    id owned = nullptr;
    std::memcpy(&owned, result, sizeof owned);
    if (owned != nullptr) send<id>(owned, Sel("autorelease"));
  }
  logEvent("send", request.args[0] + " " + selectorName +
                       (*returnType == 'v' ? std::string() : " -> " + answer.describe()));
  return answer;
}

Value::Dictionary runAction(const Value& command) {
  ActionRequest request;
  request.name = command["action"].asString();
  for (const auto& a : command["args"].asArray()) request.args.push_back(a.asString());
  request.rest = command["rest"].asString();
  auto it = actions().find(request.name);
  if (it == actions().end()) {
    return {{"error", Value::string("no action " + request.name + " in " + processName())}};
  }
  std::string error;
  Value result;
  try {
    platform::AutoreleasePool pool;
    result = it->second(request, &error);
  } catch (...) {
    // An exception nobody caught: a device would end the process; here the
    // scenario goes on, and the timeline says what happened.
    logEvent("exception", "uncaught, from " + request.name);
  }
  runDue();
  if (!error.empty()) return {{"error", Value::string(error)}};
  return {{"result", result}};
}

}  // namespace

void registerAction(const std::string& name, Action action) {
  actions()[name] = std::move(action);
}

void registerQuery(const std::string& name, Query query) {
  queries()[name] = std::move(query);
}

void registerCoreCommands() {
  onCommand("run", [](const Value&) {
    runDue();
    return Value::Dictionary{};
  });
  onCommand("deliver", [](const Value& command) {
    deliverDarwinNotification(command["name"].asString());
    runDue();
    return Value::Dictionary{};
  });
  onCommand("action", runAction);
  onCommand("query", runQuery);
  registerAction("send", sendAction);
}

}  // namespace kv::sim::host
