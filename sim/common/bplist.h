// Binary property lists ("bplist00"), decoded without trusting a byte of
// them: every offset, count, reference and string is checked before use.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/value.h"

namespace kv::sim {

// True iff `bytes` begin as a binary property list does ("bplist").
bool looksLikeBinaryPlist(std::span<const uint8_t> bytes);

// Decodes a binary property list. Answers nullopt with *problem (one short
// phrase) when the bytes are not a sound one: wrong magic or version, a
// trailer that does not fit the file, an offset, length or object
// reference out of range, a cycle, nesting deeper than any real file, more
// values than a preferences file could hold once shared objects are
// expanded, a non-ASCII byte in an ASCII string, an unpaired UTF-16
// surrogate, a dictionary key that is not a string, or an unknown marker.
// UIDs come back as {"CF$UID": N}, as an XML property list writes them;
// sets as arrays; a null object as a none value.
std::optional<platform::Value> decodeBinaryPlist(std::span<const uint8_t> bytes,
                                                 std::string* problem);

}  // namespace kv::sim
