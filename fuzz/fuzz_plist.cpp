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

// What a written property list can hold: a value with the objects that read
// as nothing (a null, an archive's reference) left out, as writing leaves them.
Value writable(const Value& v) {
  if (v.kind() == Value::Kind::kArray) {
    Value::Array items;
    for (const auto& item : v.asArray()) {
      if (!item.isNone()) items.push_back(writable(item));
    }
    return Value::array(std::move(items));
  }
  if (v.kind() == Value::Kind::kDictionary) {
    Value::Dictionary entries;
    for (const auto& [key, item] : v.asDictionary()) {
      if (!item.isNone()) entries.emplace(key, writable(item));
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
