// Asks the hosts what they show, and draws it.
#include "sim/device/pictures.h"

#include <cstdlib>
#include <filesystem>

#include "sim/render/compare.h"
#include "sim/render/scene.h"
#include "sim/render/screen.h"

namespace kv::sim {

namespace {

// The hosts that can be the app in front, besides SpringBoard itself.
constexpr const char* kAppHosts[] = {"Preferences", "Camera", "InCallService"};
// Seconds from 1970 to the simulated clock's reference date (2001).
constexpr double kReferenceDate = 978307200;

std::optional<Value> sceneOf(Device& device, const char* process, std::string* error) {
  if (!device.running(process)) return Value();
  return device.query(process, "scene", {}, error);
}

// Where a picture that did not match is left for a person to look at.
std::string lookDirectory() {
  const char* tmp = std::getenv("TMPDIR");
  return std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/kavelin-looks";
}

}  // namespace

std::optional<render::Canvas> pictureOfScreen(Device& device, double scale, std::string* error) {
  render::Screen screen;
  auto springBoard = sceneOf(device, "SpringBoard", error);
  if (!springBoard) return std::nullopt;
  screen.springBoard = std::move(*springBoard);
  const std::string& front =
      screen.springBoard[render::key::kSurface][render::key::kFront].asString();
  for (const char* process : kAppHosts) {
    auto scene = sceneOf(device, process, error);
    if (!scene) return std::nullopt;
    if (!front.empty() && (*scene)[render::key::kBundle].asString() == front) {
      screen.frontApp = std::move(*scene);
    }
  }
  screen.clock = render::clockAt(static_cast<double>(Device::kStart) / 1e9 + kReferenceDate +
                                 device.elapsed());
  return render::paintScreen(screen, scale,
                             [&device](const std::string& path) { return device.realPath(path); });
}

bool takeSnapshot(Device& device, render::Album& album, double scale,
                  const std::string& scenarioFile, int line, const std::string& name,
                  std::string* error) {
  auto picture = pictureOfScreen(device, scale, error);
  if (!picture) return false;
  std::string file = render::Album::fileName(scenarioFile, line, name);
  if (!picture->writePng(album.directory() + "/" + file, error)) return false;
  std::string stem = scenarioFile.substr(scenarioFile.rfind('/') + 1);
  album.addPicture(stem + ":" + std::to_string(line) + " " + name, file);
  return true;
}

std::string referencePath(const std::string& scenarioFile, const std::string& name) {
  auto slash = scenarioFile.rfind('/');
  std::string directory = slash == std::string::npos ? "." : scenarioFile.substr(0, slash);
  return directory + "/" + name + ".png";
}

bool looksLike(Device& device, const std::string& path, const std::string& label, bool rewrite,
               std::string* seen) {
  auto picture = pictureOfScreen(device, kReferenceScale, seen);
  if (!picture) return false;
  if (rewrite) {
    std::error_code ec;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ec);
    return picture->writePng(path, seen);
  }
  auto reference = render::readPng(path, seen);
  if (!reference) {
    *seen += " (write it with scripts/update-looks.sh)";
    return false;
  }
  render::Difference difference = render::compareSurfaces(picture->surface(), reference->get());
  if (difference.matches()) return true;
  std::string directory = lookDirectory();
  std::error_code ec;
  std::filesystem::create_directories(directory, ec);
  std::string actual = directory + "/" + label + ".png";
  std::string diff = directory + "/" + label + "-diff.png";
  std::string ignored;
  picture->writePng(actual, &ignored);
  render::writeDifference(picture->surface(), reference->get(), diff, &ignored);
  *seen = "looks differ from " + path + ": " + difference.describe() + "; this run's picture is " +
          actual + ", the difference " + diff;
  return false;
}

}  // namespace kv::sim
