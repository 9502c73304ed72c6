// Draws captured views (sim/render/scene.h) onto a canvas, one generic walk
// for every kind: frame, transform, colour, alpha, corner and clipping, then
// what the kind draws of its own, then the subviews.
#pragma once

#include <functional>
#include <string>

#include "platform/value.h"
#include "sim/render/canvas.h"

namespace kv::sim::render {

// Where a device path of an image is on this machine ("" when nowhere).
using PathMap = std::function<std::string(const std::string& devicePath)>;

// Draws `node` and what it holds in the current user space of `canvas`
// (points of its superview's bounds).
void paintNode(Canvas& canvas, const platform::Value& node, const PathMap& paths);

}  // namespace kv::sim::render
