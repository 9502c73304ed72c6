// A picture of the whole screen from the scenes of the hosts that show
// something: SpringBoard's surface, the front app's windows, SpringBoard's
// windows (its alerts) above them, and the keyboard on top.
#pragma once

#include <optional>

#include "platform/value.h"
#include "sim/render/canvas.h"
#include "sim/render/painter.h"
#include "sim/render/surface.h"

namespace kv::sim::render {

struct Screen {
  platform::Value springBoard;  // SpringBoard's scene (none when it is not running)
  platform::Value frontApp;     // the scene of the front app's host, when it runs
  Clock clock;
};

// Draws the screen at `scale` pixels a point (the screen's own scale when
// `scale` is 0).
Canvas paintScreen(const Screen& screen, double scale, const PathMap& paths);

}  // namespace kv::sim::render
