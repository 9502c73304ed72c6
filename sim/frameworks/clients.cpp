// What other processes and apps do to reach SpringBoard's authority: send a
// messaging-centre message (and wait for the reply, or not), or, from a
// sandboxed app, write a request file, post the channel's notification and
// read the reply file back. A reply becomes the scenario's last reply.
#include <cstdint>
#include <string>

#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/runtime.h"
#include "sim/common/json.h"
#include "sim/host/actions.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

void defineClients();

namespace {

using platform::Sel;
using platform::send;
using platform::sendClass;
using platform::Value;

constexpr const char* kCenter = "net.quorvan.kavelin.center";
constexpr const char* kChannelNote = "net.quorvan.kavelin.ipcoverride";
constexpr const char* kRequestDirectory = "/private/var/tmp/.";

// The request object after the message name: normally a JSON object, or
// none. Any other JSON value is sent as it stands, as a careless or hostile
// client could pass one through the centre's API.
bool requestOf(const host::ActionRequest& request, Value* out, std::string* error) {
  std::string rest = request.rest;
  size_t at = rest.find(request.args[0]);
  std::string json = at == std::string::npos ? "" : rest.substr(at + request.args[0].size());
  if (json.find_first_not_of(" \t") == std::string::npos) {
    *out = Value();
    return true;
  }
  std::string why;
  auto parsed = parseJson(json, &why);
  if (!parsed) {
    *error = "expected a JSON value after the message name" + (why.empty() ? "" : ": " + why);
    return false;
  }
  *out = *parsed;
  return true;
}

id center() {
  return sendClass<id>(platform::classNamed("CPDistributedMessagingCenter"), Sel("centerNamed:"),
                       platform::makeString(kCenter));
}

// The answer that becomes the last reply: {"reply": VALUE}, none for nil.
Value lastReply(id reply) {
  return Value::dictionary(
      {{"reply", platform::valueOf(reply)}, {"replied", Value::boolean(true)}});
}

Value messageAction(const host::ActionRequest& request, std::string* error) {
  Value info;
  if (!requestOf(request, &info, error)) return {};
  platform::AutoreleasePool pool;
  id reply = send<id>(center(), Sel("sendMessageAndReceiveReplyName:userInfo:"),
                      platform::makeString(request.args[0]), platform::makeObject(info));
  return lastReply(reply);
}

Value messageOnewayAction(const host::ActionRequest& request, std::string* error) {
  Value info;
  if (!requestOf(request, &info, error)) return {};
  platform::AutoreleasePool pool;
  send<BOOL>(center(), Sel("sendMessageName:userInfo:"), platform::makeString(request.args[0]),
             platform::makeObject(info));
  return {};
}

// The name's four characters in the state's low 32 bits, first character
// in the most significant byte.
uint64_t packedName(const std::string& name) {
  uint32_t packed = 0;
  for (size_t i = 0; i < 4; ++i) {
    packed = (packed << 8) | (i < name.size() ? static_cast<unsigned char>(name[i]) : 0u);
  }
  return packed;
}

Value requestAction(const host::ActionRequest& request, std::string* error) {
  Value info;
  if (!requestOf(request, &info, error)) return {};
  platform::AutoreleasePool pool;
  const std::string& name = request.args[0];
  if (!info.isNone()) {
    send<BOOL>(platform::makeObject(info), Sel("writeToFile:atomically:"),
               platform::makeString(kRequestDirectory + name), BOOL{1});
  }
  int token = NOTIFY_TOKEN_INVALID;
  notify_register_check(kChannelNote, &token);
  notify_set_state(token, packedName(name));
  notify_post(kChannelNote);
  notify_cancel(token);
  return {};
}

// Reads and deletes the reply file, decoding it as a client would.
Value readReplyAction(const host::ActionRequest& request, std::string*) {
  platform::AutoreleasePool pool;
  id path = platform::makeString(kRequestDirectory + request.args[0] + "-reply");
  id manager = sendClass<id>(platform::classNamed("NSFileManager"), Sel("defaultManager"));
  if (send<BOOL>(manager, Sel("fileExistsAtPath:"), path) == 0) {
    host::logEvent("reply", request.args[0] + " no reply file");
    return lastReply(nullptr);
  }
  id data = sendClass<id>(platform::classNamed("NSData"), Sel("dataWithContentsOfFile:"), path);
  send<BOOL>(manager, Sel("removeItemAtPath:error:"), path, static_cast<id*>(nullptr));
  id reply = data == nullptr ? nullptr
                             : sendClass<id>(platform::classNamed("NSKeyedUnarchiver"),
                                             Sel("unarchiveObjectWithData:"), data);
  host::logEvent("reply", request.args[0] + " " + platform::valueOf(reply).describe());
  return lastReply(reply);
}

}  // namespace

void defineClients() {
  host::registerAction("message", messageAction);
  host::registerAction("message-oneway", messageOnewayAction);
  host::registerAction("request", requestAction);
  host::registerAction("read-reply", readReplyAction);
}

}  // namespace kv::sim::frameworks
