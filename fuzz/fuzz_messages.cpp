// Fuzzes SpringBoard's message handler, reached the way the messaging
// centre reaches it (`handleMessageNamed:userInfo:` on the shared
// controller) and the way the file channel does, with any name and any
// request object, on settings of the fuzzer's choosing, and with a person
// cancelling or answering the prompts the requests raise. Whatever arrives:
//  - a query replies a dictionary of exactly its keys, or nil where the
//    request lacks what decides it;
//  - an action message, an unknown name or the reserved "bfc1" and "rlc2"
//    reply nil.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <set>
#include <string>

#include "core/controller.h"
#include "core/messages.h"
#include "fuzz/fuzzed_values.h"
#include "fuzz/springboard.h"
#include "platform/foundation.h"
#include "platform/runtime.h"

namespace {

using kv::fuzz::Words;
using kv::platform::Value;

const Words kNames = {"appL", "idsn", "hasP", "bcol", "bc11", "bcam", "bcc9",
                      "bfc1", "rlc2", "rqrl", "tcID", "sesx", "fldr", "delc",
                      "bapc", "ricn", "prrc", "pcip", "wifi", "wfls", "aeap",
                      "spsi", "gpsi", "trwf", "enab", "prta", "hcnp", "blrc"};
const Words kRequestKeys = {"settingsName", "appid", "showsInLockScreen", "name", ""};
const Words kStrings = {
    "Kavelin", "General", "WIFI", "com.apple.MobileSMS", "com.apple.mobileslideshow",
    "YES",     "1",       "0"};
const Words kPrefKeys = {"Enabled",   "passcode",         "onlyPasscode", "keepSession",
                         "protected", "protectedFolders", "allowedWiFis", "callerNameProtected"};

// The keys each query's reply holds; a query may also reply nil where noted.
const std::map<std::string, std::set<std::string>> kQueryKeys = {
    {"hcnp", {"isEnabled", "hasCallerNameProtected"}},
    {"trwf", {"onTrustedWiFi"}},
    {"enab", {"isEnabled"}},
    {"prta", {"protectedApps"}},
    {"gpsi", {"showsInLockScreen"}},
    {"aeap", {"appEnabledAndProtected"}},
    {"wfls", {"networks"}},
    {"appL", {"apps"}},
    {"idsn", {"idsn"}},
    {"hasP", {"hasPasscode"}},
    {"rqrl", {"requiresRelock"}},
    {"tcID", {"Touch ID"}},
    {"sesx", {"sessionExists"}},
    {"fldr", {"foldersRepresentation"}},
};

void check(bool holds) {
  if (!holds) std::abort();
}

void checkReply(const std::string& name, const Value& request, const Value& reply) {
  auto query = kQueryKeys.find(name);
  if (query == kQueryKeys.end()) {
    check(reply.isNone());  // actions, "spsi", reserved and unknown names
    return;
  }
  if (reply.isNone()) {
    check(name == "aeap" && request["appid"].kind() != Value::Kind::kString);
    return;
  }
  check(reply.kind() == Value::Kind::kDictionary);
  std::set<std::string> keys;
  for (const auto& [key, item] : reply.asDictionary()) keys.insert(key);
  check(keys == query->second);
}

void sendOne(FuzzedDataProvider& in) {
  kv::platform::AutoreleasePool pool;
  std::string name = kNames.pick(in);
  Value request;
  switch (in.ConsumeIntegralInRange<int>(0, 3)) {
    case 0: break;                                                 // no request
    case 1: request = kv::fuzz::fuzzedValue(in, kStrings); break;  // anything at all
    default: request = Value::dictionary(kv::fuzz::fuzzedDictionary(in, kRequestKeys, kStrings, 3));
  }
  id reply = nullptr;
  if (in.ConsumeBool()) {
    reply = kv::platform::send<id>(
        kv::core::controller(), kv::platform::Sel("handleMessageNamed:userInfo:"),
        kv::platform::makeString(name), kv::platform::makeObject(request));
  } else {
    reply = kv::core::handleMessageNamed(kv::platform::makeString(name),
                                         kv::platform::makeObject(request),
                                         kv::core::Channel::kFileChannel);
  }
  // Anything but a dictionary reaches the handlers as no request.
  if (request.kind() != Value::Kind::kDictionary) request = Value();
  checkReply(name, request, kv::platform::valueOf(reply));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  kv::fuzz::startSpringBoard("10.3");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  if (in.ConsumeBool()) {
    Value::Dictionary prefs = kv::fuzz::fuzzedDictionary(in, kPrefKeys, kStrings, 4);
    if (in.ConsumeBool()) prefs["passcode"] = Value::string("1234");
    kv::fuzz::storePrefs(std::move(prefs));
  }
  for (int steps = 0; steps < 8 && in.remaining_bytes() > 0; ++steps) {
    switch (in.ConsumeIntegralInRange<int>(0, 5)) {
      case 0: kv::fuzz::tapCancel(); break;
      case 1: kv::fuzz::typePasscode(in.ConsumeBool() ? "1234" : "0000"); break;
      case 2: kv::fuzz::advance(in.ConsumeIntegralInRange<int>(0, 30) / 10.0); break;
      default: sendOne(in);
    }
  }
  kv::fuzz::settle();
  return 0;
}
