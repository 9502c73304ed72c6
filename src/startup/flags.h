// The version flags and the process role under their former names, for the
// files not yet moved to base/flags.h, where they now live.
#pragma once

#include "base/flags.h"

namespace kv::startup {

using base::computeFlag;
using base::flags;
using base::Role;
using base::role;
using base::setRole;
using base::springBoardFlags;
using base::SpringBoardFlags;
using base::VersionFlag;
using base::VersionFlags;

}  // namespace kv::startup
