// The state of each KavelinAlertView, keyed by the instance.
#include "prompt/alert_state.h"

#include <memory>
#include <unordered_map>

#include "platform/runtime.h"
#include "prompt/selectors.h"

namespace kv::prompt {

namespace {

// Touched on the main thread only, as every prompt method runs there.
std::unordered_map<id, std::unique_ptr<AlertViewState>>& states() {
  static auto* table = new std::unordered_map<id, std::unique_ptr<AlertViewState>>();
  return *table;
}

}  // namespace

AlertViewState& stateOf(id alert) {
  auto& slot = states()[alert];
  if (!slot) slot = std::make_unique<AlertViewState>();
  return *slot;
}

void forgetState(id alert) {
  // Taken out of the table first: releasing a view may reach the prompt again.
  auto node = states().extract(alert);
}

bool passcodeFieldShowing(const AlertViewState& s) {
  return platform::send<double>(s.passcodeField.get(), sel::kAlpha) > 0;
}

}  // namespace kv::prompt
