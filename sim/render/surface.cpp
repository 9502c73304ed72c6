// SpringBoard's own screens, drawn from its state: wallpaper, icons, folder,
// lock screen, app in front, switcher, status bar.
#include "sim/render/surface.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>

#include "sim/render/art.h"
#include "sim/render/blur.h"
#include "sim/render/scene.h"
#include "sim/render/text.h"

namespace kv::sim::render {

using platform::Value;

namespace {

constexpr double kBlurDark = 2;
constexpr Rgba kWhite{1, 1, 1, 1}, kBlack{0, 0, 0, 1};

struct Layout {
  double width, height;
  bool ipad, tall;  // tall: the iPhone with the sensor housing (812 points)
  double statusBar() const { return tall ? 44 : 20; }
  double icon() const { return ipad ? 76 : 60; }
  int columns() const { return ipad ? 5 : 4; }
};

Layout layoutOf(const Canvas& canvas) {
  return Layout{canvas.width(), canvas.height(), canvas.width() >= 700, canvas.height() >= 800};
}

TextStyle style(double size, Weight weight, Rgba c, int align = 1) {
  TextStyle s;
  s.size = size;
  s.weight = weight;
  s.color[0] = c.r, s.color[1] = c.g, s.color[2] = c.b, s.color[3] = c.a;
  s.align = align;
  return s;
}

void fill(cairo_t* cr, double x, double y, double w, double h, double radius, Rgba c) {
  double r = std::min({radius, w / 2, h / 2});
  cairo_new_sub_path(cr);
  cairo_arc(cr, x + w - r, y + r, r, -M_PI / 2, 0);
  cairo_arc(cr, x + w - r, y + h - r, r, 0, M_PI / 2);
  cairo_arc(cr, x + r, y + h - r, r, M_PI / 2, M_PI);
  cairo_arc(cr, x + r, y + r, r, M_PI, 1.5 * M_PI);
  cairo_close_path(cr);
  cairo_set_source_rgba(cr, c.r, c.g, c.b, c.a);
  cairo_fill(cr);
}

void wallpaper(Canvas& canvas) {
  cairo_t* cr = canvas.cr();
  cairo_pattern_t* p = cairo_pattern_create_linear(0, 0, canvas.width() * 0.4, canvas.height());
  cairo_pattern_add_color_stop_rgb(p, 0, 0.13, 0.29, 0.52);
  cairo_pattern_add_color_stop_rgb(p, 0.55, 0.35, 0.31, 0.62);
  cairo_pattern_add_color_stop_rgb(p, 1, 0.85, 0.48, 0.45);
  cairo_rectangle(cr, 0, 0, canvas.width(), canvas.height());
  cairo_set_source(cr, p);
  cairo_fill(cr);
  cairo_pattern_destroy(p);
}

// An app's colour, the same every run: from its name.
Rgba colorOf(const std::string& name) {
  unsigned hash = 2166136261u;
  for (char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
  double hue = (hash % 360) / 60.0;
  double x = 1 - std::abs(std::fmod(hue, 2) - 1);
  Rgba rgb[] = {{1, x, 0, 1}, {x, 1, 0, 1}, {0, 1, x, 1}, {0, x, 1, 1}, {x, 0, 1, 1}, {1, 0, x, 1}};
  Rgba c = rgb[static_cast<int>(hue) % 6];
  // Saturation 0.6, value 0.85.
  auto tone = [](double v) { return 0.85 * (1 - 0.6 + 0.6 * v); };
  return Rgba{tone(c.r), tone(c.g), tone(c.b), 1};
}

void appIcon(cairo_t* cr, const std::string& name, double x, double y, double size) {
  fill(cr, x, y, size, size, size * 0.22, colorOf(name));
  drawText(cr, name.substr(0, 1), style(size * 0.5, Weight::kSemibold, kWhite), x, y, size, size);
}

void folderIcon(cairo_t* cr, const Value& folder, double x, double y, double size) {
  fill(cr, x, y, size, size, size * 0.22, Rgba{1, 1, 1, 0.35});
  double cell = size / 4.2, gap = (size - 3 * cell) / 4;
  const auto& apps = folder[key::kApps].asArray();
  for (size_t i = 0; i < apps.size() && i < 9; ++i) {
    double cx = x + gap + static_cast<double>(i % 3) * (cell + gap);
    double cy = y + gap + static_cast<double>(i / 3) * (cell + gap);
    fill(cr, cx, cy, cell, cell, cell * 0.22, colorOf(apps[i].asString()));
  }
}

void iconLabel(cairo_t* cr, const std::string& name, double x, double y, double size) {
  drawText(cr, name, style(11, Weight::kRegular, kWhite), x - 12, y + size + 4, size + 24, 14);
}

void homeScreen(Canvas& canvas, const Layout& l, const Value& surface) {
  cairo_t* cr = canvas.cr();
  wallpaper(canvas);
  double icon = l.icon();
  double margin = l.ipad ? 84 : 27;
  double step = (l.width - 2 * margin - icon) / (l.columns() - 1);
  double rowStep = icon + (l.ipad ? 64 : 30);
  double top = l.statusBar() + (l.ipad ? 56 : 14);
  int at = 0;
  auto position = [&](int index, double* x, double* y) {
    *x = margin + step * (index % l.columns());
    *y = top + rowStep * (index / l.columns());
  };
  for (const Value& app : surface[key::kIcons].asArray()) {
    double x, y;
    position(at++, &x, &y);
    appIcon(cr, app[key::kName].asString(), x, y, icon);
    iconLabel(cr, app[key::kName].asString(), x, y, icon);
  }
  for (const Value& folder : surface[key::kFolders].asArray()) {
    double x, y;
    position(at++, &x, &y);
    folderIcon(cr, folder, x, y, icon);
    iconLabel(cr, folder[key::kName].asString(), x, y, icon);
  }
}

// The open folder over the blurred home screen: its name and its apps.
void openFolder(Canvas& canvas, const Layout& l, const Value& surface) {
  const std::string& name = surface[key::kOpenFolder].asString();
  const Value* folder = nullptr;
  for (const Value& f : surface[key::kFolders].asArray()) {
    if (f[key::kName].asString() == name) folder = &f;
  }
  cairo_t* cr = canvas.cr();
  cairo_rectangle(cr, 0, 0, l.width, l.height);
  fillWithBlur(cr, canvas.surface(), kBlurDark);
  double side = l.ipad ? 360 : 280;
  double x = (l.width - side) / 2, y = (l.height - side) / 2;
  drawText(cr, name, style(30, Weight::kSemibold, kWhite), 0, y - 70, l.width, 40);
  fill(cr, x, y, side, side, 38, Rgba{1, 1, 1, 0.3});
  if (folder == nullptr) return;
  double icon = l.icon(), step = (side - 3 * icon) / 4;
  const auto& apps = (*folder)[key::kApps].asArray();
  for (size_t i = 0; i < apps.size() && i < 9; ++i) {
    double ix = x + step + static_cast<double>(i % 3) * (icon + step);
    double iy = y + step + static_cast<double>(i / 3) * (icon + step + 10);
    appIcon(cr, apps[i].asString(), ix, iy, icon);
    iconLabel(cr, apps[i].asString(), ix, iy, icon);
  }
}

void lockScreen(Canvas& canvas, const Layout& l, const Clock& clock) {
  wallpaper(canvas);
  cairo_t* cr = canvas.cr();
  double top = l.statusBar() + (l.ipad ? 80 : 30);
  drawText(cr, clock.time, style(80, Weight::kRegular, kWhite), 0, top, l.width, 96);
  drawText(cr, clock.date, style(20, Weight::kRegular, kWhite), 0, top + 96, l.width, 26);
}

// An app with no views of its own in the picture: its name in the
// navigation bar, its icon in the middle.
void appScreen(Canvas& canvas, const Layout& l, const Value& surface) {
  cairo_t* cr = canvas.cr();
  cairo_rectangle(cr, 0, 0, l.width, l.height);
  cairo_set_source_rgb(cr, 1, 1, 1);
  cairo_fill(cr);
  const std::string& name = surface[key::kFrontName].asString();
  fill(cr, 0, 0, l.width, l.statusBar() + 44, 0, Rgba{0.97, 0.97, 0.97, 1});
  fill(cr, 0, l.statusBar() + 44, l.width, 0.5, 0, Rgba{0, 0, 0, 0.3});
  drawText(cr, name, style(17, Weight::kSemibold, kBlack), 0, l.statusBar(), l.width, 44);
  double icon = 88;
  appIcon(cr, name, (l.width - icon) / 2, (l.height - icon) / 2 - 20, icon);
}

// The switcher: the recent apps' cards side by side, most recent in front.
void switcher(Canvas& canvas, const Layout& l, const Value& surface) {
  cairo_t* cr = canvas.cr();
  wallpaper(canvas);
  cairo_rectangle(cr, 0, 0, l.width, l.height);
  fillWithBlur(cr, canvas.surface(), kBlurDark);
  const auto& recents = surface[key::kSwitcher][key::kRecents].asArray();
  double w = l.width * 0.62, h = l.height * 0.62;
  double y = (l.height - h) / 2 + 20;
  size_t shown = std::min<size_t>(recents.size(), 3);
  for (size_t k = shown; k-- > 0;) {
    const std::string& name = recents[k].asString();
    double x = l.width * 0.06 + static_cast<double>(shown - 1 - k) * l.width * 0.16;
    fill(cr, x, y, w, h, 10, kWhite);
    fill(cr, x, y, w, 44, 0, Rgba{0.97, 0.97, 0.97, 1});
    drawText(cr, name, style(15, Weight::kSemibold, kBlack), x, y, w, 44);
    appIcon(cr, name, x + 8, y - 36, 28);
    drawText(cr, name, style(13, Weight::kRegular, kWhite, 0), x + 44, y - 36, w - 44, 28);
  }
}

void statusBar(Canvas& canvas, const Layout& l, const Clock& clock, Rgba ink) {
  cairo_t* cr = canvas.cr();
  double h = l.statusBar();
  if (l.tall) {
    drawText(cr, clock.time, style(15, Weight::kSemibold, ink), 20, 12, 60, 20);
  } else {
    drawText(cr, clock.time, style(12, Weight::kSemibold, ink), 0, 0, l.width, h);
  }
  // The battery, full.
  double bx = l.width - (l.tall ? 40 : 32), by = l.tall ? 17 : 6;
  cairo_set_source_rgba(cr, ink.r, ink.g, ink.b, ink.a);
  cairo_set_line_width(cr, 1);
  cairo_rectangle(cr, bx + 0.5, by + 0.5, 22, 10);
  cairo_stroke(cr);
  cairo_rectangle(cr, bx + 2, by + 2, 19, 7);
  cairo_rectangle(cr, bx + 23, by + 3.5, 1.5, 4);
  cairo_fill(cr);
}

}  // namespace

Clock clockAt(double secondsSince1970) {
  auto t = static_cast<std::time_t>(secondsSince1970);
  std::tm tm{};
  gmtime_r(&t, &tm);
  static const char* const kDays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                      "Thursday", "Friday", "Saturday"};
  static const char* const kMonths[] = {"January",   "February", "March",    "April",
                                        "May",       "June",     "July",     "August",
                                        "September", "October",  "November", "December"};
  char time[8];
  std::snprintf(time, sizeof time, "%d:%02d", tm.tm_hour, tm.tm_min);
  return Clock{time, std::string(kDays[tm.tm_wday]) + ", " + std::to_string(tm.tm_mday) + " " +
                         kMonths[tm.tm_mon]};
}

void paintSurface(Canvas& canvas, const Value& surface, const Clock& clock) {
  Layout l = layoutOf(canvas);
  cairo_t* cr = canvas.cr();
  if (!surface[key::kScreenOn].asBool(true)) {
    cairo_rectangle(cr, 0, 0, l.width, l.height);
    cairo_set_source_rgb(cr, 0, 0, 0);
    cairo_fill(cr);
    return;
  }
  Rgba ink = kWhite;
  if (surface[key::kLocked].asBool()) {
    lockScreen(canvas, l, clock);
  } else if (surface[key::kSwitcher][key::kVisible].asBool()) {
    switcher(canvas, l, surface);
  } else if (surface[key::kFront].asString() != "home") {
    appScreen(canvas, l, surface);
    ink = kBlack;
  } else {
    homeScreen(canvas, l, surface);
    if (!surface[key::kOpenFolder].asString().empty()) openFolder(canvas, l, surface);
  }
  statusBar(canvas, l, clock, ink);
}

}  // namespace kv::sim::render
