// Layers of the screen, bottom to top.
#include "sim/render/screen.h"

#include "sim/render/scene.h"

namespace kv::sim::render {

using platform::Value;

namespace {

constexpr double kPhoneWidth = 375, kPhoneHeight = 667;

void paintWindows(Canvas& canvas, const Value& scene, const PathMap& paths) {
  for (const Value& window : scene[key::kWindows].asArray()) paintNode(canvas, window, paths);
}

}  // namespace

Canvas paintScreen(const Screen& screen, double scale, const PathMap& paths) {
  const Value& measured = !screen.springBoard.isNone() ? screen.springBoard[key::kScreen]
                                                       : screen.frontApp[key::kScreen];
  double width = measured[key::kWidth].asReal(kPhoneWidth);
  double height = measured[key::kHeight].asReal(kPhoneHeight);
  if (scale <= 0) scale = measured[key::kScale].asReal(2);
  Canvas canvas(width, height, scale);
  cairo_t* cr = canvas.cr();
  cairo_rectangle(cr, 0, 0, width, height);
  cairo_set_source_rgb(cr, 1, 1, 1);
  cairo_fill(cr);

  const Value& surface = screen.springBoard[key::kSurface];
  if (!surface.isNone()) paintSurface(canvas, surface, screen.clock);
  bool dark = !surface[key::kScreenOn].asBool(true);
  if (dark) return canvas;  // a dark screen shows nothing, not even an alert
  paintWindows(canvas, screen.frontApp, paths);
  paintWindows(canvas, screen.springBoard, paths);
  for (const Value* scene : {&screen.frontApp, &screen.springBoard}) {
    if (const Value& keyboard = (*scene)[key::kKeyboard]; !keyboard.isNone()) {
      paintKeyboard(canvas, keyboard);
    }
  }
  return canvas;
}

}  // namespace kv::sim::render
