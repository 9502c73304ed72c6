// The built-in tour of a simulated iPhone. It grows with the product.
#include "tour.h"

namespace kv::tools {

const char* tourScenario() {
  return R"(# An iPhone on iOS 11 with Touch ID. The owner protects Messages and keeps
# a Kavelin passcode of their own.
device iphone ios 11.1 touchid
prefs protected ["com.apple.MobileSMS"]
prefs passcode "2580"
start SpringBoard Preferences

# An unprotected app opens as usual.
SpringBoard: tap com.apple.mobilesafari
expect launched com.apple.mobilesafari
SpringBoard: home

# Messages is protected: the tap is held back and the prompt comes up,
# naming the app, taking the fingerprint sensor from the lock screen.
# Each snapshot is a picture of the screen (scripts/tour.sh shows where).
SpringBoard: tap com.apple.MobileSMS
expect prompt title "Messages"
expect not front com.apple.MobileSMS
snapshot prompt

# A wrong finger is reported on the prompt; the app stays closed.
finger nomatch
expect prompt message "Not recognised"
snapshot not-recognised

# The passcode button shows the field; a wrong passcode is refused too.
SpringBoard: prompt button 1
expect prompt passcode-field
SpringBoard: prompt passcode 1111
expect prompt
snapshot wrong-passcode

# The right finger replays the held-back tap: Messages comes to the front.
finger match
expect launched com.apple.MobileSMS
expect not prompt
snapshot messages

# Without keepSession every launch asks again; cancelling drops it and
# tells other processes.
SpringBoard: home
SpringBoard: tap com.apple.MobileSMS
expect prompt
SpringBoard: prompt button 0
expect posted net.quorvan.kavelin.alertCancelled
expect front home

# Time is virtual: the settings pane's change is read at once and again half
# a second later, at no cost in wall time.
prefs keepSession true
advance 0.5
)";
}

}  // namespace kv::tools
