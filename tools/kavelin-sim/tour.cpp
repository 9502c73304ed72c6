// The built-in tour of a simulated iPhone. It grows with the product.
#include "tour.h"

namespace kv::tools {

const char* tourScenario() {
  return R"(# A simulated iPhone: two processes, one device.
device iphone ios 11.1 touchid
start SpringBoard Preferences

# The settings pane writes a preference; SpringBoard reads the domain file.
prefs Enabled true
SpringBoard: send SimProbe preference:domain: ["Enabled", "net.quorvan.kavelin"]

# A notification's state set in one process is read in another.
Preferences: send SimProbe observe: ["tour.hello"]
SpringBoard: send SimProbe setState:forName: [7, "tour.hello"]
SpringBoard: send SimProbe post: ["tour.hello"]
expect posted tour.hello state 7
Preferences: send SimProbe stateForName: ["tour.hello"]

# A request over the messaging centre is answered by SpringBoard's main thread.
SpringBoard: send SimProbe serve:names: ["tour.center", ["ping"]]
Preferences: send SimProbe sendMessage:center:userInfo: ["ping", "tour.center", {"from": "Settings"}]
expect sent Preferences ping

# Time is virtual: a 5-second delay costs no wall time.
SpringBoard: send SimProbe performLater:delay: ["five seconds later", 5]
advance 5
expect log "fired five seconds later"
)";
}

}  // namespace kv::tools
