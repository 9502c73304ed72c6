// The view the prompt's own content goes into, found the way each system
// version exposes it.
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "prompt/alert_view.h"
#include "prompt/selectors.h"

namespace kv::prompt {

namespace {

using platform::respondsTo;
using platform::Sel;

// valueForKey: raises for a key the object lacks, so each step asks first.
id keyOf(id obj, const char* key) {
  return respondsTo(obj, platform::selector(key)) ? platform::valueForKey(obj, key) : nullptr;
}

}  // namespace

id contentContainer(id alert) {
  static const Sel kView("view");
  id controller = keyOf(alert, "alertController");
  id content = keyOf(platform::send<id>(controller, kView), "contentView");
  if (id container = platform::send<id>(content, sel::kSuperview)) return container;
  return keyOf(keyOf(alert, "_representedModalItem"), "_representedView");
}

}  // namespace kv::prompt
