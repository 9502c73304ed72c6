// JSON reading and writing for property-list values: scenario files, the wire protocol and logs.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/value.h"

namespace kv::sim {

// Containers nested deeper than this are refused, so hostile input cannot exhaust the stack.
inline constexpr int kMaxJsonDepth = 256;

// Parses one JSON value (the whole text, surrounding whitespace allowed). Numbers without
// fraction or exponent that fit int64 are integers, others reals; null is a none value.
// On failure returns nullopt and sets *error (if non-null) to a short message with the offset.
std::optional<platform::Value> parseJson(std::string_view text, std::string* error = nullptr);

// Renders compact, deterministic JSON: dictionary keys sorted, reals in their shortest form that
// reads back as the same double (always with a '.' or exponent, so they stay reals), data as a
// base64 string, dates as reals, none and non-finite reals as null.
std::string toJson(const platform::Value& value);

}  // namespace kv::sim
