// The session flag under its former name, for the files not yet moved to
// base/session.h, where it now lives.
#pragma once

#include "base/session.h"

namespace kv::core {

using base::sessionUnlocked;

}  // namespace kv::core
