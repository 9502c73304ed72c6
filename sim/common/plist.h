// Property-list files, binary or XML: read without trusting their bytes,
// written through Foundation.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/value.h"

namespace kv::sim {

enum class PlistFormat { kXml, kBinary };

// What reading a property-list file found.
struct PlistReading {
  enum class Status {
    kRead,     // value holds the file's contents
    kMissing,  // no file (a domain never written)
    kCorrupt,  // bytes that are not a sound property list; problem says why
  };
  Status status = Status::kMissing;
  platform::Value value;
  std::string problem;
};

// Reads property-list bytes of either format. Binary ones are decoded here,
// checking every offset and reference; others go to Foundation only after
// the checks that keep its parser safe (well-formed UTF-8, no NUL byte,
// bounded nesting), and an exception it raises counts as corruption. Never
// throws.
PlistReading parsePlist(std::span<const uint8_t> bytes);

// Reads a property-list file; see parsePlist.
PlistReading readPlist(const std::string& path);

// Reads a property-list file (either format); nullopt when it is missing,
// empty, truncated or not a property list.
std::optional<platform::Value> readPlistFile(const std::string& path);

// Writes `value` atomically as a property list; false on failure.
bool writePlistFile(const std::string& path, const platform::Value& value, PlistFormat format);

}  // namespace kv::sim
