// Captures the shown windows of a host, view by view, for a picture.
#include "sim/render/host/capture.h"

#include <algorithm>

#include "platform/foundation.h"
#include "platform/geometry.h"
#include "platform/runtime.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/actions.h"
#include "sim/host/link.h"
#include "sim/host/profile.h"
#include "sim/render/scene.h"

namespace kv::sim::render {

using platform::Integer;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

const Sel kAlpha("alpha"), kIsHidden("isHidden"), kFrame("frame"), kBounds("bounds");
const Sel kTransform("transform"), kLayer("layer"), kOpacity("opacity");
const Sel kBackgroundColor("backgroundColor"), kCornerRadius("cornerRadius");
const Sel kClipsToBounds("clipsToBounds"), kMasksToBounds("masksToBounds");
const Sel kGetRGBA("getRed:green:blue:alpha:"), kWindowLevel("windowLevel");
const Sel kKeyboardType("keyboardType");

Value number(double v) {
  return Value::real(v);
}

Value numbers(std::initializer_list<double> values) {
  Value::Array out;
  for (double v : values) out.push_back(number(v));
  return Value::array(std::move(out));
}

bool isIdentity(const CGAffineTransform& t) {
  return t.a == 1 && t.b == 0 && t.c == 0 && t.d == 1 && t.tx == 0 && t.ty == 0;
}

// `first` then `second`, as Core Graphics concatenates them.
CGAffineTransform concat(const CGAffineTransform& first, const CGAffineTransform& second) {
  return CGAffineTransform{first.a * second.a + first.b * second.c,
                           first.a * second.b + first.b * second.d,
                           first.c * second.a + first.d * second.c,
                           first.c * second.b + first.d * second.d,
                           first.tx * second.a + first.ty * second.c + second.tx,
                           first.tx * second.b + first.ty * second.d + second.ty};
}

// The view's transform, then its layer's, in the plane of the screen.
CGAffineTransform transformOf(id view, id layer) {
  CGAffineTransform t = send<CGAffineTransform>(view, kTransform);
  if (layer == nullptr) return t;
  auto l = send<CATransform3D>(layer, kTransform);
  return concat(t, CGAffineTransform{l.m11, l.m12, l.m21, l.m22, l.m41, l.m42});
}

bool answers(id obj, const Sel& op) {
  return obj != nullptr && platform::respondsTo(obj, op);
}

}  // namespace

Value colorValue(id color) {
  if (!answers(color, kGetRGBA)) return {};
  double r = 0, g = 0, b = 0, a = 0;
  send<BOOL>(color, kGetRGBA, &r, &g, &b, &a);
  return numbers({r, g, b, a});
}

Value captureView(id view) {
  if (view == nullptr || send<BOOL>(view, kIsHidden)) return {};
  id layer = send<id>(view, kLayer);
  double alpha =
      send<double>(view, kAlpha) * (answers(layer, kOpacity) ? send<float>(layer, kOpacity) : 1.0f);
  if (alpha <= 0) return {};
  Value::Dictionary node;
  node[key::kClass] = Value::string(platform::classNameOf(view));
  CGRect f = send<CGRect>(view, kFrame);
  node[key::kFrame] = numbers({f.origin.x, f.origin.y, f.size.width, f.size.height});
  CGRect b = send<CGRect>(view, kBounds);
  if (b.origin.x != 0 || b.origin.y != 0) node[key::kBounds] = numbers({b.origin.x, b.origin.y});
  CGAffineTransform t = transformOf(view, layer);
  if (!isIdentity(t)) node[key::kTransform] = numbers({t.a, t.b, t.c, t.d, t.tx, t.ty});
  if (alpha < 1) node[key::kAlpha] = number(alpha);
  Value background = colorValue(send<id>(view, kBackgroundColor));
  if (background.asArray().size() == 4 && background.asArray()[3].asReal() > 0) {
    node[key::kBackground] = std::move(background);
  }
  double corner = answers(layer, kCornerRadius) ? send<double>(layer, kCornerRadius) : 0;
  if (corner > 0) node[key::kCorner] = number(corner);
  if (send<BOOL>(view, kClipsToBounds) ||
      (answers(layer, kMasksToBounds) && send<BOOL>(layer, kMasksToBounds))) {
    node[key::kClips] = Value::boolean(true);
  }
  const ViewKind* kind = viewKindOf(view);
  if (kind != nullptr) kind->describe(view, node);
  if (kind == nullptr || !kind->ownsSubviews) {
    Value::Array children;
    for (id child : frameworks::subviewsOf(view)) {
      Value captured = captureView(child);
      if (!captured.isNone()) children.push_back(std::move(captured));
    }
    if (!children.empty()) node[key::kChildren] = Value::array(std::move(children));
  }
  return Value::dictionary(std::move(node));
}

Value captureScene() {
  id screen = platform::sendClass<id>(platform::classNamed("UIScreen"), Sel("mainScreen"));
  CGRect bounds = send<CGRect>(screen, kBounds);
  Value::Dictionary scene;
  scene[key::kScreen] =
      Value::dictionary({{key::kWidth, number(bounds.size.width)},
                         {key::kHeight, number(bounds.size.height)},
                         {key::kScale, number(send<double>(screen, Sel("scale")))}});
  scene[key::kProcess] = Value::string(host::processName());
  scene[key::kBundle] = Value::string(host::profile().bundleIdentifier);

  // Windows by level; those of one level in the order they were shown.
  id app = platform::sendClass<id>(platform::classNamed("UIApplication"), Sel("sharedApplication"));
  std::vector<id> windows;
  id list = send<id>(app, Sel("windows"));
  for (platform::UInteger i = 0; i < platform::arrayCount(list); ++i) {
    windows.push_back(platform::arrayObjectAt(list, i));
  }
  std::stable_sort(windows.begin(), windows.end(), [](id a, id b) {
    return send<double>(a, kWindowLevel) < send<double>(b, kWindowLevel);
  });
  Value::Array shown;
  for (id window : windows) {
    Value node = captureView(window);
    if (!node.isNone()) shown.push_back(std::move(node));
  }
  scene[key::kWindows] = Value::array(std::move(shown));

  if (frameworks::keyboardVisible()) {
    CGRect k = frameworks::keyboardFrameOnScreen();
    id responder = frameworks::firstResponder();
    Integer type = answers(responder, kKeyboardType) ? send<Integer>(responder, kKeyboardType) : 0;
    scene[key::kKeyboard] = Value::dictionary(
        {{key::kFrame, numbers({k.origin.x, k.origin.y, k.size.width, k.size.height})},
         {key::kType, Value::integer(type)}});
  }
  Value surface = captureSurface();
  if (!surface.isNone()) scene[key::kSurface] = std::move(surface);
  return Value::dictionary(std::move(scene));
}

void registerSceneQuery() {
  host::registerQuery("scene", [](const std::vector<std::string>&) { return captureScene(); });
  registerNudgeAction();
}

}  // namespace kv::sim::render
