// SpringBoard's screens that the simulated device keeps as state rather than
// views: the lock screen, the home screen with its icons and open folder,
// the front app, and the switcher's cards.
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/system.h"
#include "sim/render/host/capture.h"
#include "sim/render/scene.h"

namespace kv::sim::render {

using platform::Value;

namespace {

// The display name of an installed app, or its bundle identifier.
std::string nameOf(const std::string& bundleIdentifier) {
  for (const auto& app : frameworks::installedApps()) {
    if (bundleIdentifier == app.bundleIdentifier) return app.displayName;
  }
  return bundleIdentifier;
}

Value names(const std::vector<std::string>& bundleIdentifiers) {
  Value::Array out;
  for (const auto& b : bundleIdentifiers) out.push_back(Value::string(nameOf(b)));
  return Value::array(std::move(out));
}

}  // namespace

Value captureSurface() {
  if (!frameworks::inProcess("SpringBoard")) return {};
  const frameworks::SpringBoardState& sb = frameworks::springBoard();
  Value::Array icons;
  for (const auto& app : frameworks::installedApps()) {
    icons.push_back(Value::dictionary({{key::kId, Value::string(app.bundleIdentifier)},
                                       {key::kName, Value::string(app.displayName)}}));
  }
  Value::Array folders;
  for (const auto& folder : frameworks::homeFolders()) {
    if (folder.newsstand && frameworks::atLeast(9)) continue;  // gone after iOS 8
    std::vector<std::string> apps(folder.apps.begin(), folder.apps.end());
    folders.push_back(Value::dictionary(
        {{key::kName, Value::string(folder.displayName)}, {key::kApps, names(apps)}}));
  }
  return Value::dictionary({
      {key::kLocked, Value::boolean(sb.locked)},
      {key::kScreenOn, Value::boolean(sb.screenOn)},
      {key::kFront, Value::string(sb.front)},
      {key::kFrontName, Value::string(sb.front == "home" ? "" : nameOf(sb.front))},
      {key::kIcons, Value::array(std::move(icons))},
      {key::kFolders, Value::array(std::move(folders))},
      {key::kOpenFolder, Value::string(sb.openFolder)},
      {key::kSwitcher, Value::dictionary({{key::kVisible, Value::boolean(sb.switcherVisible)},
                                          {key::kRecents, names(sb.recents)}})},
  });
}

}  // namespace kv::sim::render
