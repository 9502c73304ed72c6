// Inside a host: what the process shows, as a scene (sim/render/scene.h)
// that the device draws. Every view is captured alike (frame, transform,
// colour, alpha, corner, clipping); a kind of view that draws something of
// its own adds it through one row of the table in capture_kinds.cpp.
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

// SpringBoard's own screens, which are not views (capture_surface.cpp); a
// none value in other processes.
platform::Value captureSurface();

// Registers the "scene" query of this host.
void registerSceneQuery();

}  // namespace kv::sim::render
