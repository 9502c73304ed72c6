// What the two sides of gate_bench agree on: the ids, the apps and the
// action that measures one size inside SpringBoard.
#pragma once

#include <string>
#include <vector>

namespace kv::bench {

constexpr const char* kProtectedApp = "com.apple.MobileSMS";
constexpr const char* kOtherApp = "com.apple.calculator";
constexpr const char* kBenchAction = "gate-bench";
constexpr const char* kDomain = "net.quorvan.kavelin";

// The protected ids of a size: the protected app among made-up others.
inline std::vector<std::string> protectedIds(int count) {
  std::vector<std::string> ids;
  for (int i = 1; i < count; ++i) ids.push_back("com.example.vendor" + std::to_string(i) + ".app");
  ids.insert(ids.begin() + static_cast<long>(ids.size() / 2), kProtectedApp);
  return ids;
}

}  // namespace kv::bench
