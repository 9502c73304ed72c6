// The built-in tour: a scenario that shows a simulated iPhone at work.
#pragma once

namespace kv::tools {

// The tour's scenario text.
const char* tourScenario();

}  // namespace kv::tools
