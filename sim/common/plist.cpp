// Property-list files through GNUstep's NSPropertyListSerialization.
#include "sim/common/plist.h"

#include "platform/foundation.h"
#include "platform/runtime.h"

namespace kv::sim {

using platform::Sel;
using platform::send;
using platform::sendClass;

namespace {
constexpr platform::UInteger kXmlFormat = 100;     // NSPropertyListXMLFormat_v1_0
constexpr platform::UInteger kBinaryFormat = 200;  // NSPropertyListBinaryFormat_v1_0
}  // namespace

std::optional<platform::Value> readPlistFile(const std::string& path) {
  platform::AutoreleasePool pool;
  id data = sendClass<id>(platform::classNamed("NSData"), Sel("dataWithContentsOfFile:"),
                          platform::makeString(path));
  if (data == nullptr || send<platform::UInteger>(data, Sel("length")) == 0) return std::nullopt;
  id error = nullptr;
  platform::UInteger format = 0;
  id plist = nullptr;
  try {
    plist = sendClass<id>(platform::classNamed("NSPropertyListSerialization"),
                          Sel("propertyListWithData:options:format:error:"), data,
                          platform::UInteger{0}, &format, &error);
  } catch (...) {
    // GNUstep's binary reader raises on some damaged headers (an offset size
    // it does not know) instead of returning an error: that is a bad file.
    return std::nullopt;
  }
  if (plist == nullptr) return std::nullopt;
  return platform::valueOf(plist);
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
