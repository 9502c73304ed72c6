// Fuzzes the simulated device's property-list reader, the one its
// preferences and request files go through: any file, binary or XML, reads
// as a value or as nothing, never an exception that would end the host; and
// what it reads, written back as a binary property list, reads back the same.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

#include "platform/foundation.h"
#include "sim/common/plist.h"
#include "sim/common/wire.h"

namespace {

using kv::platform::Value;

// A folder of this process's own for the files of one run.
const std::string& folder() {
  static const std::string path = [] {
    char pattern[] = "/tmp/kavelin-fuzz-plist-XXXXXX";
    const char* made = mkdtemp(pattern);
    if (made == nullptr) std::abort();
    return std::string(made);
  }();
  return path;
}

// Text as it comes back: GNUstep makes a string from UTF-8 without a leading
// byte-order mark, so one at the start of a string or key is not kept.
std::string asWritten(const std::string& text) {
  constexpr std::string_view kBom = "\xEF\xBB\xBF";
  return text.starts_with(kBom) ? text.substr(kBom.size()) : text;
}

// What a written property list can hold: a value with the objects that read
// as nothing (a null, an archive's reference) left out, as writing leaves them.
Value writable(const Value& v) {
  if (v.kind() == Value::Kind::kString) return Value::string(asWritten(v.asString()));
  if (v.kind() == Value::Kind::kArray) {
    Value::Array items;
    for (const auto& item : v.asArray()) {
      if (!item.isNone()) items.push_back(writable(item));
    }
    return Value::array(std::move(items));
  }
  if (v.kind() == Value::Kind::kDictionary) {
    // A keyed archive's reference reads as {"CF$UID": N}, and Foundation
    // writes such a dictionary back as a reference; GNUstep's binary writer
    // keeps only its low 16 bits (a device keeps 32). Nothing the library
    // reads is a reference, so the simulated files may keep that limit.
    const auto& d = v.asDictionary();
    if (d.size() == 1 && d.begin()->first == "CF$UID" &&
        d.begin()->second.kind() == Value::Kind::kInteger) {
      return Value::dictionary(
          {{"CF$UID", Value::integer(d.begin()->second.asInteger() & 0xFFFF)}});
    }
    Value::Dictionary entries;
    for (const auto& [key, item] : v.asDictionary()) {
      if (!item.isNone()) entries.emplace(asWritten(key), writable(item));
    }
    return Value::dictionary(std::move(entries));
  }
  return v;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kv::platform::AutoreleasePool pool;
  const std::string file = folder() + "/domain.plist";
  const std::string copy = folder() + "/copy.plist";
  {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  }
  auto value = kv::sim::readPlistFile(file);
  if (!value) return 0;
  // The preferences service writes a domain back in the binary format: what
  // it read must survive that.
  if (!kv::sim::writePlistFile(copy, *value, kv::sim::PlistFormat::kBinary)) return 0;
  auto back = kv::sim::readPlistFile(copy);
  if (!back || kv::sim::encodeValue(*back) != kv::sim::encodeValue(writable(*value))) std::abort();
  return 0;
}
