// Pictures of the simulated device's screen: taken for a scenario's
// `snapshot` lines, and compared with reference pictures for `expect looks`.
#pragma once

#include <optional>
#include <string>

#include "sim/device/device.h"
#include "sim/render/album.h"
#include "sim/render/canvas.h"

namespace kv::sim {

// The screen as the running hosts show it now, drawn at `scale` pixels a
// point (0: the device's own scale); nullopt with *error when a host
// cannot say what it shows.
std::optional<render::Canvas> pictureOfScreen(Device& device, double scale, std::string* error);

// Takes a picture for `album` into its directory, named after the scenario
// file, line and name. False with *error when it cannot.
bool takeSnapshot(Device& device, render::Album& album, double scale,
                  const std::string& scenarioFile, int line, const std::string& name,
                  std::string* error);

// The reference picture NAME of a scenario: "NAME.png" beside the file.
std::string referencePath(const std::string& scenarioFile, const std::string& name);

// The scale of reference pictures: one pixel a point keeps them small.
constexpr double kReferenceScale = 1;

// Whether the screen matches the reference picture at `path`; *seen says
// how they differ, and where this run's picture and the difference were
// written (named after `label`). With `rewrite` the reference is written
// from the screen instead, and it holds.
bool looksLike(Device& device, const std::string& path, const std::string& label, bool rewrite,
               std::string* seen);

}  // namespace kv::sim
