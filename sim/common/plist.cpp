// Property-list files: binary ones decoded here, XML ones through GNUstep's
// NSPropertyListSerialization once they have passed the checks that keep
// its parser safe; written through NSPropertyListSerialization.
#include "sim/common/plist.h"

#include <fstream>
#include <iterator>
#include <vector>

#include "platform/foundation.h"
#include "platform/runtime.h"
#include "sim/common/bplist.h"

namespace kv::sim {

using platform::Sel;
using platform::send;
using platform::sendClass;

namespace {
constexpr platform::UInteger kXmlFormat = 100;     // NSPropertyListXMLFormat_v1_0
constexpr platform::UInteger kBinaryFormat = 200;  // NSPropertyListBinaryFormat_v1_0
constexpr int kMaxTextDepth = 512;                 // open elements, as for binary files

PlistReading corrupt(std::string problem) {
  return {PlistReading::Status::kCorrupt, {}, std::move(problem)};
}

// Answers why text bytes are unfit for the text parser, or "".
std::string textProblem(std::span<const uint8_t> bytes) {
  int depth = 0;
  for (size_t i = 0; i < bytes.size(); ++i) {
    uint8_t c = bytes[i];
    if (c == 0) return "a NUL byte at offset " + std::to_string(i);
    // Neither text format has control characters outside tab and line
    // ends; GNUstep reads some leading ones as its own archive's header
    // and allocates whatever length follows.
    if (c < 0x20 && c != '\t' && c != '\n' && c != '\r') {
      return "a control character at offset " + std::to_string(i);
    }
    if (c >= 0x80) {  // a UTF-8 sequence: its length, then its continuation bytes
      size_t more = (c & 0xE0) == 0xC0 ? 1 : (c & 0xF0) == 0xE0 ? 2 : (c & 0xF8) == 0xF0 ? 3 : 0;
      uint32_t code = c & (0x3F >> more);
      bool ok = more != 0 && i + more < bytes.size();
      for (size_t k = 1; ok && k <= more; ++k) {
        ok = (bytes[i + k] & 0xC0) == 0x80;
        code = (code << 6) | (bytes[i + k] & 0x3F);
      }
      constexpr uint32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
      if (!ok || code < kLeast[more] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
        return "invalid UTF-8 at offset " + std::to_string(i);
      }
      i += more;
      continue;
    }
    // Elements opened and closed: the text parser descends once per level.
    if (c != '<' || i + 1 >= bytes.size()) continue;
    uint8_t next = bytes[i + 1];
    if (next == '/') {
      --depth;
    } else if (next != '?' && next != '!') {
      size_t close = i + 1;
      while (close < bytes.size() && bytes[close] != '>') ++close;
      bool empty = close < bytes.size() && bytes[close - 1] == '/';
      if (!empty && ++depth > kMaxTextDepth) return "elements nested too deeply";
    }
  }
  return {};
}

// Reads text property lists (XML, or the older text format) with Foundation.
PlistReading parseText(std::span<const uint8_t> bytes) {
  if (std::string problem = textProblem(bytes); !problem.empty()) return corrupt(problem);
  try {
    platform::AutoreleasePool pool;
    id data = sendClass<id>(platform::classNamed("NSData"), Sel("dataWithBytes:length:"),
                            static_cast<const void*>(bytes.data()),
                            static_cast<platform::UInteger>(bytes.size()));
    id error = nullptr;
    platform::UInteger format = 0;
    id plist = sendClass<id>(platform::classNamed("NSPropertyListSerialization"),
                             Sel("propertyListWithData:options:format:error:"), data,
                             platform::UInteger{0}, &format, &error);
    if (plist == nullptr) return corrupt("not a property list");
    return {PlistReading::Status::kRead, platform::valueOf(plist), {}};
  } catch (...) {
    // GNUstep raises on some malformed text instead of answering nil.
    return corrupt("the property-list parser raised an exception");
  }
}

}  // namespace

PlistReading parsePlist(std::span<const uint8_t> bytes) {
  if (bytes.empty()) return corrupt("an empty file");
  if (looksLikeBinaryPlist(bytes)) {
    std::string problem;
    auto value = decodeBinaryPlist(bytes, &problem);
    if (!value) return corrupt(problem);
    return {PlistReading::Status::kRead, std::move(*value), {}};
  }
  return parseText(bytes);
}

PlistReading readPlist(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return {};
  std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                             std::istreambuf_iterator<char>());
  if (in.bad()) return corrupt("the file cannot be read");
  return parsePlist(bytes);
}

std::optional<platform::Value> readPlistFile(const std::string& path) {
  PlistReading reading = readPlist(path);
  if (reading.status != PlistReading::Status::kRead) return std::nullopt;
  return std::move(reading.value);
}

bool writePlistFile(const std::string& path, const platform::Value& value, PlistFormat format) {
  platform::AutoreleasePool pool;
  id plist = platform::makeObject(value);
  if (plist == nullptr) return false;
  id error = nullptr;
  id data = sendClass<id>(platform::classNamed("NSPropertyListSerialization"),
                          Sel("dataWithPropertyList:format:options:error:"), plist,
                          format == PlistFormat::kXml ? kXmlFormat : kBinaryFormat,
                          platform::UInteger{0}, &error);
  if (data == nullptr) return false;
  return send<BOOL>(data, Sel("writeToFile:atomically:"), platform::makeString(path), BOOL{1}) != 0;
}

}  // namespace kv::sim
