// Methods the library adds to platform classes at start-up.
#include "startup/additions.h"

#include "platform/foundation.h"
#include "platform/runtime.h"

namespace kv::startup {

id objectOfClass(id self, SEL, id cls) {
  static const platform::Sel kIsKindOfClass("isKindOfClass:");
  platform::UInteger count = platform::arrayCount(self);
  for (platform::UInteger i = 0; i < count; ++i) {
    id element = platform::arrayObjectAt(self, i);
    if (platform::send<BOOL>(element, kIsKindOfClass, cls) != 0) return element;
  }
  return nullptr;
}

long long stackBlockLength(id, SEL) {
  return 0;
}

}  // namespace kv::startup
