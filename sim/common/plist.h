// Property-list files, binary or XML, read and written through Foundation.
#pragma once

#include <optional>
#include <string>

#include "platform/value.h"

namespace kv::sim {

enum class PlistFormat { kXml, kBinary };

// Reads a property-list file (either format); nullopt when it is missing,
// empty, truncated or not a property list.
std::optional<platform::Value> readPlistFile(const std::string& path);

// Writes `value` atomically as a property list; false on failure.
bool writePlistFile(const std::string& path, const platform::Value& value, PlistFormat format);

}  // namespace kv::sim
