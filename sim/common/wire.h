// The device and its hosts talk over one socket per host: frames that each
// carry one Value (a dictionary with an "op" entry and the op's fields).
#pragma once

#include <optional>
#include <string>

#include "platform/value.h"

namespace kv::sim {

// Encodes a value as bytes (a compact tagged format) and back. decode
// answers nullopt for bytes that are not one whole encoded value.
std::string encodeValue(const platform::Value& value);
std::optional<platform::Value> decodeValue(std::string_view bytes);

// One end of a host's socket.
class Channel {
 public:
  explicit Channel(int fd = -1) : fd_(fd) {}
  ~Channel();
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;

  int fd() const { return fd_; }

  // Sends one frame; false when the other end is gone.
  bool send(const platform::Value& message);

  // Waits up to `timeoutMs` (negative: forever) for one frame. nullopt on
  // end of file, a broken frame or time-out; `why` says which.
  std::optional<platform::Value> receive(int timeoutMs, std::string* why = nullptr);

  void close();

 private:
  bool readFully(char* out, size_t n, int timeoutMs, std::string* why);
  int fd_;
};

// A message: {"op": OP} plus fields.
platform::Value message(const char* op, platform::Value::Dictionary fields = {});

// Returns the op of a message ("" when it has none).
const std::string& opOf(const platform::Value& message);

}  // namespace kv::sim
