// Fuzzes the scenario and JSON readers: any text must parse or be refused with a line, never
// crash, and JSON that parses must read back from its own rendering unchanged.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <variant>

#include "sim/common/json.h"
#include "sim/device/scenario.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view input(reinterpret_cast<const char*>(data), size);

  auto scenario = kv::sim::parseScenario(input, "fuzz.scn");
  if (auto* error = std::get_if<kv::sim::ParseError>(&scenario)) {
    if (error->line < 1 || error->message.empty()) std::abort();
  }

  std::string error;
  auto value = kv::sim::parseJson(input, &error);
  if (!value) {
    if (error.empty()) std::abort();
    return 0;
  }
  std::string written = kv::sim::toJson(*value);
  auto back = kv::sim::parseJson(written);
  if (!back || !(*back == *value) || kv::sim::toJson(*back) != written) std::abort();
  return 0;
}
