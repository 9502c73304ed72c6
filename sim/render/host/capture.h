// Inside a host: what the process shows, as a scene (sim/render/scene.h)
// that the device draws. Every view is captured alike (frame, transform,
// colour, alpha, corner, clipping); a kind of view that draws something of
// its own adds it through one row of the table in kinds.cpp.
#pragma once

#include "platform/objc.h"
#include "platform/value.h"

namespace kv::sim::render {

// What one kind of view draws of its own, added to its node.
struct ViewKind {
  const char* className;  // the class, and its subclasses
  void (*describe)(id view, platform::Value::Dictionary& node);
  bool ownsSubviews;  // its subviews are part of its own drawing: left out
};

// The kinds, most specific first: a view takes the first that fits.
const ViewKind* viewKindOf(id view);

// A UIColor as [r, g, b, a]; a none value for anything else.
platform::Value colorValue(id color);

// The node of `view` and what it holds; a none value when nothing of it
// shows (hidden, alpha 0).
platform::Value captureView(id view);

// The whole scene of this process.
platform::Value captureScene();

// SpringBoard's own screens, which are not views (host/surface.cpp); a
// none value in other processes.
platform::Value captureSurface();

// The frontmost shown view of kind `className` on the screen: the highest
// window first, and in a window the later subviews and what they hold
// before the earlier ones; nil when none shows.
id frontmostOnScreen(const char* className);

// Registers the "scene" query of this host, and the developer's action
// "nudge" (nudge.cpp), which changes a look on purpose.
void registerSceneQuery();
void registerNudgeAction();

}  // namespace kv::sim::render
