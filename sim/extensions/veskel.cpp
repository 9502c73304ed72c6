// Veskel: a quick switcher of its own. Its gesture opens a window holding
// an icon list of the apps it saw used lately, which the list lays out as
// it is made; tapping an icon closes the quick switcher and launches the
// app through SpringBoard, as extensions do.
#include <map>
#include <vector>

#include "platform/geometry.h"
#include "platform/retained.h"
#include "sim/extensions/extension.h"

namespace kv::sim::extensions {

namespace {

using platform::Retained;
using platform::Sel;
using platform::send;
using platform::UInteger;
using platform::Value;

constexpr UInteger kTouchUpInside = 1 << 6;  // UIControlEventTouchUpInside
constexpr double kIconSize = 60;
constexpr double kIconSpacing = 80;

// What Veskel keeps: the apps it lists, newest first, its window, and the
// list on screen while the quick switcher is open.
struct QuickSwitcher {
  std::vector<std::string> recents;
  Retained window;
  Retained list;
};

QuickSwitcher& quickSwitcher() {
  static auto* state = new QuickSwitcher();
  return *state;
}

// The app each icon stands for.
std::map<id, std::string>& iconApps() {
  static auto* table = new std::map<id, std::string>();
  return *table;
}

CGRect screenBounds() {
  return send<CGRect>(platform::sendClass<id>(platform::classNamed("UIScreen"), Sel("mainScreen")),
                      Sel("bounds"));
}

std::vector<id> subviews(id view) {
  id array = send<id>(view, Sel("subviews"));
  std::vector<id> out;
  for (UInteger i = 0; i < platform::arrayCount(array); ++i) {
    out.push_back(platform::arrayObjectAt(array, i));
  }
  return out;
}

// ---- VeskelIconView: a button with an app's icon ----

id iconApplication(id self, SEL) {
  auto it = iconApps().find(self);
  return it == iconApps().end() ? nullptr : applicationFor(it->second);
}

void iconDealloc(id self, SEL cmd) {
  iconApps().erase(self);
  platform::sendSuper<void>(platform::classNamed("UIButton"), self, cmd);
}

// ---- VeskelQuickSwitcherIconListView: the icons in a row ----

id listInitWithFrame(id self, SEL cmd, CGRect frame) {
  self = platform::sendSuper<id>(platform::classNamed("UIView"), self, cmd, frame);
  if (self == nullptr) return nullptr;
  double x = kIconSpacing - kIconSize;
  for (const auto& app : quickSwitcher().recents) {
    id icon =
        send<id>(platform::sendClass<id>(platform::classNamed("VeskelIconView"), Sel("alloc")),
                 Sel("initWithFrame:"), platform::makeRect(x, 100, kIconSize, kIconSize));
    if (icon == nullptr) continue;
    iconApps()[icon] = app;
    send<void>(icon, Sel("addTarget:action:forControlEvents:"), self, Sel("iconTapped:"),
               kTouchUpInside);
    send<void>(self, Sel("addSubview:"), icon);
    send<void>(icon, Sel("release"));
    x += kIconSpacing;
  }
  return self;
}

void dismissQuickSwitcher(id, SEL) {
  QuickSwitcher& s = quickSwitcher();
  if (!s.list) return;
  send<void>(s.list.get(), Sel("removeFromSuperview"));
  s.list.reset();
  send<void>(s.window.get(), Sel("setHidden:"), BOOL{1});
  host::logEvent("veskel", "quick switcher closes");
}

id sharedQuickSwitcher(id, SEL) {
  static id instance = newInstance("VeskelQuickSwitcher");
  return instance;
}

id sharedSwitcher() {
  return platform::sendClass<id>(platform::classNamed("VeskelQuickSwitcher"),
                                 Sel("sharedInstance"));
}

void listIconTapped(id, SEL, id icon) {
  auto it = iconApps().find(icon);
  if (it == iconApps().end()) return;
  const std::string app = it->second;
  send<void>(sharedSwitcher(), Sel("dismiss"));
  launchApplication(platform::makeString(app));
}

// ---- VeskelQuickSwitcher: opening and closing ----

std::string listed(id list) {
  std::string out;
  for (id view : subviews(list)) {
    auto it = iconApps().find(view);
    if (it != iconApps().end()) out += (out.empty() ? "" : ", ") + it->second;
  }
  return "[" + out + "]";
}

void presentQuickSwitcher(id, SEL) {
  QuickSwitcher& s = quickSwitcher();
  if (s.list) return;
  if (!s.window) {
    s.window = Retained::adopt(
        send<id>(platform::sendClass<id>(platform::classNamed("UIWindow"), Sel("alloc")),
                 Sel("initWithFrame:"), screenBounds()));
  }
  s.list = Retained::adopt(
      send<id>(platform::sendClass<id>(platform::classNamed("VeskelQuickSwitcherIconListView"),
                                       Sel("alloc")),
               Sel("initWithFrame:"), screenBounds()));
  if (!s.list) return;
  send<void>(s.window.get(), Sel("addSubview:"), s.list.get());
  send<void>(s.window.get(), Sel("makeKeyAndVisible"));
  host::logEvent("veskel", "quick switcher shows " + listed(s.list.get()));
}

// ---- What a person does ----

// What UIKit's hit-testing lets a finger reach: a view in a window, and
// neither it nor a view above it hidden, (nearly) transparent or closed to
// touches.
bool touchable(id view) {
  if (send<id>(view, Sel("window")) == nullptr) return false;
  for (id v = view; v != nullptr; v = send<id>(v, Sel("superview"))) {
    if (send<BOOL>(v, Sel("isHidden")) != 0 || send<double>(v, Sel("alpha")) < 0.01 ||
        send<BOOL>(v, Sel("isUserInteractionEnabled")) == 0) {
      return false;
    }
  }
  return true;
}

// veskel-open [BUNDLE-ID...]: Veskel's gesture opens its quick switcher,
// listing the apps given (the ones it saw used lately, newest first; the
// previous ones when none is given).
Value openAction(const host::ActionRequest& request, std::string*) {
  if (!request.args.empty()) quickSwitcher().recents = request.args;
  send<void>(sharedSwitcher(), Sel("present"));
  return {};
}

// veskel-tap BUNDLE-ID: a finger on that app's icon in the quick switcher.
Value tapAction(const host::ActionRequest& request, std::string* error) {
  Retained list = quickSwitcher().list;
  if (!list) {
    *error = "Veskel's quick switcher is not open";
    return {};
  }
  Retained icon;
  for (id view : subviews(list.get())) {
    auto it = iconApps().find(view);
    if (it != iconApps().end() && it->second == request.args[0]) icon = Retained(view);
  }
  if (!icon) {
    host::logEvent("veskel", "no icon of " + request.args[0] + " to tap");
    return {};
  }
  if (!touchable(icon.get())) {
    host::logEvent("veskel", "the tap on " + request.args[0] + " reaches nothing");
    return {};
  }
  send<void>(icon.get(), Sel("touchesBegan:withEvent:"), id{nullptr}, id{nullptr});
  send<void>(icon.get(), Sel("touchesEnded:withEvent:"), id{nullptr}, id{nullptr});
  return {};
}

// veskel-close: a tap outside the list closes the quick switcher.
Value closeAction(const host::ActionRequest&, std::string*) {
  send<void>(sharedSwitcher(), Sel("dismiss"));
  return {};
}

__attribute__((constructor)) void loadVeskel() {
  static const std::string initTypes = platform::methodEncoding<id, CGRect>();
  defineClass("VeskelIconView", "UIButton",
              {{"application", imp(iconApplication), "@@:"}, {"dealloc", imp(iconDealloc), "v@:"}});
  defineClass("VeskelQuickSwitcherIconListView", "UIView",
              {{"initWithFrame:", imp(listInitWithFrame), initTypes.c_str()},
               {"iconTapped:", imp(listIconTapped), "v@:@"}});
  defineClass("VeskelQuickSwitcher", "NSObject",
              {{"present", imp(presentQuickSwitcher), "v@:"},
               {"dismiss", imp(dismissQuickSwitcher), "v@:"}},
              {{"sharedInstance", imp(sharedQuickSwitcher), "@@:"}});
  host::registerAction("veskel-open", openAction);
  host::registerAction("veskel-tap", tapAction);
  host::registerAction("veskel-close", closeAction);
}

}  // namespace

}  // namespace kv::sim::extensions
