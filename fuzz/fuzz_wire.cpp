// Fuzzes the host wire protocol: any bytes decode to one whole value or are
// refused; a value that decodes encodes to bytes that decode to the same
// value; and a stream of frames on a host's socket is read frame by frame
// until it ends or breaks, never past what was sent.
#include <sys/socket.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "sim/common/wire.h"

namespace {

using kv::platform::Value;

// Encoded, decoded and encoded again, a value must come back as it was
// (compared by its encoding, which also holds for reals that are NaN).
void roundTrip(const Value& value) {
  std::string once = kv::sim::encodeValue(value);
  auto back = kv::sim::decodeValue(once);
  if (!back || kv::sim::encodeValue(*back) != once) std::abort();
}

// The bytes as a stream on a socket whose other end then closes: every
// frame read is whole, and reading stops at the end or at a broken frame.
void readStream(std::string_view bytes) {
  int fds[2];
  if (socketpair(AF_UNIX, SOCK_STREAM, 0, fds) != 0) return;
  // A socket buffer holds the small inputs the fuzzer makes; longer ones
  // are cut rather than blocking the writer.
  size_t n = std::min<size_t>(bytes.size(), 64 * 1024);
  ssize_t wrote = write(fds[1], bytes.data(), n);
  ::close(fds[1]);
  if (wrote < 0) {
    ::close(fds[0]);
    return;
  }
  kv::sim::Channel channel(fds[0]);
  size_t frames = 0;
  std::string why;
  while (auto message = channel.receive(0, &why)) {
    roundTrip(*message);
    (void)kv::sim::opOf(*message);
    if (++frames > n / 5 + 1) std::abort();  // a frame takes at least five bytes
  }
  if (why.empty()) std::abort();  // the reader says why it stopped
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (auto value = kv::sim::decodeValue(bytes)) {
    // One whole value: its encoding is the input itself, up to the order of
    // a dictionary's keys and keys given twice.
    roundTrip(*value);
    if (kv::sim::encodeValue(*value).size() > size) std::abort();
  }
  readStream(bytes);
  return 0;
}
