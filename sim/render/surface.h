// What SpringBoard shows that is not made of views (its surface in the
// scene), the status bar, and the keyboard.
#pragma once

#include <string>

#include "platform/value.h"
#include "sim/render/canvas.h"

namespace kv::sim::render {

// The device's clock as the status bar and lock screen show it.
struct Clock {
  std::string time;  // "9:00"
  std::string date;  // "Wednesday, 1 November"
};

// The clock `secondsSince1970` (UTC) shows.
Clock clockAt(double secondsSince1970);

// Draws SpringBoard's surface over the whole canvas: a dark screen, the lock
// screen, the home screen (with an open folder), an app in front, or the
// switcher's cards. The status bar shows unless the screen is dark.
void paintSurface(Canvas& canvas, const platform::Value& surface, const Clock& clock);

// Draws the keyboard of the scene's "keyboard" entry: the number pad for a
// number-pad field, else the letters.
void paintKeyboard(Canvas& canvas, const platform::Value& keyboard);

}  // namespace kv::sim::render
