// Fuzzes the file request channel the way a sandboxed app uses it: a
// message name packed in the channel's state (any 64 bits), a request file
// of any bytes, a property list of any shape or none, and sometimes an old
// reply file. Whatever the app wrote:
//  - a state that names no message touches no file;
//  - a named request's file is gone once it was handled;
//  - a query's reply file is a keyed archive that reads back as the reply
//    the handler gives for the same request;
//  - a message answered with nothing leaves an older reply file as it was.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "core/file_channel.h"
#include "core/messages.h"
#include "fuzz/fuzzed_values.h"
#include "fuzz/springboard.h"
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "settings/notifications.h"
#include "sim/common/plist.h"
#include "sim/common/wire.h"
#include "sim/host/fs_redirect.h"

namespace {

using kv::fuzz::Words;
using kv::platform::Sel;
using kv::platform::Value;

const char* const kNames[] = {"appL", "idsn", "hasP", "bcol", "bc11", "bcam", "bcc9",
                              "bfc1", "rlc2", "rqrl", "tcID", "sesx", "fldr", "delc",
                              "bapc", "ricn", "prrc", "pcip", "wifi", "wfls", "aeap",
                              "spsi", "gpsi", "trwf", "enab", "prta", "hcnp", "blrc"};
// The names whose handlers only answer, so that asking again answers the same.
const char* const kQueries[] = {"appL", "idsn", "hasP", "rqrl", "tcID", "sesx", "fldr",
                                "wfls", "aeap", "gpsi", "trwf", "enab", "prta", "hcnp"};
const Words kRequestKeys = {"settingsName", "appid", "showsInLockScreen", ""};
const Words kStrings = {"Kavelin", "General", "com.apple.MobileSMS", "com.apple.camera", "1"};

void check(bool holds) {
  if (!holds) std::abort();
}

std::string realPath(const std::string& devicePath) {
  return kv::sim::realPathForDevicePath(devicePath);
}

std::optional<std::string> contents(const std::string& devicePath) {
  std::ifstream in(realPath(devicePath), std::ios::binary);
  if (!in) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(in), {});
}

void writeFile(const std::string& devicePath, const std::string& bytes) {
  std::ofstream out(realPath(devicePath), std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

bool isQuery(const std::string& name) {
  for (const char* q : kQueries) {
    if (name == q) return true;
  }
  return false;
}

// The reply file read as the app reads it: a keyed archive.
Value unarchived(const std::string& bytes) {
  id data = kv::platform::sendClass<id>(
      kv::platform::classNamed("NSData"), Sel("dataWithBytes:length:"),
      static_cast<const void*>(bytes.data()), static_cast<kv::platform::UInteger>(bytes.size()));
  return kv::platform::valueOf(kv::platform::sendClass<id>(
      kv::platform::classNamed("NSKeyedUnarchiver"), Sel("unarchiveObjectWithData:"), data));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  kv::fuzz::startSpringBoard("11.1");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  kv::platform::AutoreleasePool pool;

  // The name: one the centre serves, packed as a client packs it, or any state.
  uint64_t state = 0;
  if (in.ConsumeBool()) {
    const char* name = kNames[in.ConsumeIntegralInRange<size_t>(0, std::size(kNames) - 1)];
    for (int i = 0; i < 4; ++i) state = (state << 8) | static_cast<unsigned char>(name[i]);
    state |= static_cast<uint64_t>(in.ConsumeIntegral<uint32_t>()) << 32;
  } else {
    state = in.ConsumeIntegral<uint64_t>();
  }
  auto name = kv::core::unpackMessageName(state);
  const std::string requestPath = "/private/var/tmp/." + name.value_or("none");
  const std::string replyPath = requestPath + "-reply";

  // The request file: none, raw bytes, or a property list of any shape.
  Value request;
  switch (in.ConsumeIntegralInRange<int>(0, 3)) {
    case 0: break;
    case 1: writeFile(requestPath, in.ConsumeRandomLengthString(256)); break;
    case 2:
      request = kv::fuzz::fuzzedValue(in, kStrings);
      kv::sim::writePlistFile(requestPath, request, kv::sim::PlistFormat::kBinary);
      break;
    default:
      request = Value::dictionary(kv::fuzz::fuzzedDictionary(in, kRequestKeys, kStrings, 3));
      kv::sim::writePlistFile(
          requestPath, request,
          in.ConsumeBool() ? kv::sim::PlistFormat::kXml : kv::sim::PlistFormat::kBinary);
  }
  // An older reply, left by an earlier request of the same name.
  std::optional<std::string> oldReply;
  if (in.ConsumeBool()) {
    oldReply = in.ConsumeRandomLengthString(64);
    writeFile(replyPath, *oldReply);
  }
  std::optional<std::string> requestBefore = contents(requestPath);
  // The request as the channel will read it, for asking the handler again.
  Value asked = kv::platform::valueOf(kv::platform::sendClass<id>(
      kv::platform::classNamed("NSDictionary"), Sel("dictionaryWithContentsOfFile:"),
      kv::platform::makeString(requestPath)));

  kv::settings::setState(kv::settings::Note::kIpcOverride, state);
  kv::core::fileRequest(nullptr, nullptr, nullptr, nullptr, nullptr);

  if (!name) {
    check(contents(requestPath) == requestBefore);
    check(contents(replyPath) == oldReply);
  } else {
    check(!contents(requestPath).has_value());
    auto reply = contents(replyPath);
    if (isQuery(*name)) {
      // The same request, asked again directly, answers the same.
      Value expected = kv::platform::valueOf(kv::core::handleMessageNamed(
          kv::platform::makeString(*name), kv::platform::makeObject(asked),
          kv::core::Channel::kFileChannel));
      if (expected.isNone()) {
        check(reply == oldReply);
      } else {
        check(reply.has_value());
        check(kv::sim::encodeValue(unarchived(*reply)) == kv::sim::encodeValue(expected));
      }
    } else {
      check(reply == oldReply);  // actions, "spsi" and the reserved names answer nothing
    }
  }
  std::filesystem::remove(realPath(requestPath));
  std::filesystem::remove(realPath(replyPath));
  kv::fuzz::settle();
  return 0;
}
