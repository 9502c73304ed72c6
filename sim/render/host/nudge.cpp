// The developer's action "nudge": changes one look of the frontmost shown
// view of a class through the platform's own setters, so that a scenario
// can show that a reference picture notices such a change.
#include <algorithm>
#include <cstdlib>
#include <functional>

#include "platform/foundation.h"
#include "platform/geometry.h"
#include "platform/runtime.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/actions.h"
#include "sim/render/host/capture.h"

namespace kv::sim::render {

using platform::Sel;
using platform::send;
using platform::Value;

namespace {

const Sel kFrame("frame"), kSetFrame("setFrame:"), kSetHidden("setHidden:");
const Sel kIsHidden("isHidden"), kAlpha("alpha"), kWindowLevel("windowLevel");
const Sel kSetTextColor("setTextColor:"), kSetBackgroundColor("setBackgroundColor:");
const Sel kSetPrimary("_setPrimaryColor:animated:"), kSetSecondary("_setSecondaryColor:animated:");
const Sel kColorWithRGBA("colorWithRed:green:blue:alpha:");

bool shows(id view) {
  return !send<BOOL>(view, kIsHidden) && send<double>(view, kAlpha) > 0;
}

// The frontmost shown view of kind `className` below `view`: later subviews
// are in front of earlier ones and of what those hold.
id frontmost(id view, const char* className) {
  std::vector<id> children = frameworks::subviewsOf(view);
  for (auto it = children.rbegin(); it != children.rend(); ++it) {
    if (!shows(*it)) continue;
    if (id found = frontmost(*it, className)) return found;
    if (platform::isKindOf(*it, className)) return *it;
  }
  return nullptr;
}

}  // namespace

id frontmostOnScreen(const char* className) {
  id app = platform::sendClass<id>(platform::classNamed("UIApplication"), Sel("sharedApplication"));
  id list = send<id>(app, Sel("windows"));
  std::vector<id> windows;
  for (platform::UInteger i = 0; i < platform::arrayCount(list); ++i) {
    windows.push_back(platform::arrayObjectAt(list, i));
  }
  std::stable_sort(windows.begin(), windows.end(), [](id a, id b) {
    return send<double>(a, kWindowLevel) > send<double>(b, kWindowLevel);
  });
  for (id window : windows) {
    if (!shows(window)) continue;
    if (id found = frontmost(window, className)) return found;
  }
  return nullptr;
}

namespace {

// "ff3b30" as a UIColor; nil for anything else.
id colorOfHex(const std::string& hex) {
  if (hex.size() != 6 || hex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
    return nullptr;
  }
  long value = std::strtol(hex.c_str(), nullptr, 16);
  auto byte = [value](int shift) { return static_cast<double>((value >> shift) & 0xff) / 255.0; };
  return platform::sendClass<id>(platform::classNamed("UIColor"), kColorWithRGBA, byte(16), byte(8),
                                 byte(0), 1.0);
}

bool parsePoints(const std::string& word, double* out) {
  char* end = nullptr;
  *out = std::strtod(word.c_str(), &end);
  return !word.empty() && end != nullptr && *end == '\0';
}

// The colours a view shows, set as its kind sets them.
void recolor(id view, id color) {
  if (platform::respondsTo(view, kSetPrimary)) {
    send<void>(view, kSetPrimary, color, BOOL{0});
    send<void>(view, kSetSecondary, color, BOOL{0});
  } else if (platform::respondsTo(view, kSetTextColor)) {
    send<void>(view, kSetTextColor, color);
  } else {
    send<void>(view, kSetBackgroundColor, color);
  }
}

constexpr const char* kUsage =
    "nudge CLASS move DX DY | nudge CLASS color RRGGBB | nudge CLASS hide";

Value nudgeAction(const host::ActionRequest& request, std::string* error) {
  const auto& a = request.args;
  if (a.size() < 2) {
    *error = kUsage;
    return {};
  }
  id view = frontmostOnScreen(a[0].c_str());
  if (view == nullptr) {
    *error = "no " + a[0] + " shows on the screen";
    return {};
  }
  double dx = 0, dy = 0;
  if (a[1] == "move" && a.size() == 4 && parsePoints(a[2], &dx) && parsePoints(a[3], &dy)) {
    CGRect f = send<CGRect>(view, kFrame);
    f.origin.x += dx;
    f.origin.y += dy;
    send<void>(view, kSetFrame, f);
  } else if (a[1] == "color" && a.size() == 3 && colorOfHex(a[2]) != nullptr) {
    recolor(view, colorOfHex(a[2]));
  } else if (a[1] == "hide" && a.size() == 2) {
    send<void>(view, kSetHidden, BOOL{1});
  } else {
    *error = kUsage;
  }
  return {};
}

}  // namespace

void registerNudgeAction() {
  host::registerAction("nudge", nudgeAction);
}

}  // namespace kv::sim::render
