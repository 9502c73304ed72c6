// Fuzzes the type-encoding reader: any bytes a runtime could hand back must
// parse or be refused, never crash, and compatibility must be symmetric for
// well-formed input compared with itself.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/encoding.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view input(reinterpret_cast<const char*>(data), size);
  auto split = input.find('|');
  std::string_view a = input.substr(0, split);
  std::string_view b = split == std::string_view::npos ? input : input.substr(split + 1);
  bool ab = kv::platform::encodingsCompatible(a, b);
  bool ba = kv::platform::encodingsCompatible(b, a);
  if (ab != ba) std::abort();
  if (kv::platform::encodingArgumentCount(a) >= 0 && !kv::platform::encodingsCompatible(a, a)) {
    std::abort();
  }
  return 0;
}
