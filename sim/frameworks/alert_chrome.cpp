// The system's own views of an alert, as UIKit draws an alert 270 points
// wide: the dimming behind it, its blurred rounded body, the title, the
// message, and the buttons with their hairlines. Extra content (the
// prompt's) sits in the container above them.
#include <algorithm>
#include <cmath>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/uikit.h"

namespace kv::sim::frameworks {

id alertTopView(id alert);
id alertOwnContainer(id alert);

using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendClass;

namespace {

constexpr double kWidth = 270;
constexpr double kInset = 16;  // the texts' side margins
constexpr double kTitleTop = 20, kTitleLine = 22, kTitleFont = 17;
constexpr double kMessageGap = 2, kMessageLine = 16, kMessageFont = 13, kMessageBottom = 20;
constexpr double kButtonHeight = 44, kButtonFont = 17;
constexpr double kCornerRadius = 13;
constexpr double kHairline = 0.5;
constexpr double kDimming = 0.4;  // black over the screen behind an alert
constexpr Integer kExtraLightBlur = 0;
constexpr Integer kCentred = 1;
// The system font's mean advance in ems, to tell where a message wraps.
constexpr double kMeanAdvance = 0.5;

struct Chrome {
  Retained body, title, message;
  std::vector<Retained> buttons, hairlines;
};

id cls(const char* name) {
  return platform::asId(platform::classNamed(name));
}

Retained label(double size, bool bold, id color) {
  Retained view = Retained::adopt(newView("UILabel", CGRect{}));
  id font = sendClass<id>(platform::classNamed("UIFont"),
                          Sel(bold ? "boldSystemFontOfSize:" : "systemFontOfSize:"), size);
  send<void>(view.get(), Sel("setFont:"), font);
  send<void>(view.get(), Sel("setTextColor:"), color);
  send<void>(view.get(), Sel("setTextAlignment:"), kCentred);
  send<void>(view.get(), Sel("setNumberOfLines:"), Integer{0});
  return view;
}

id color(double white, double alpha) {
  return send<id>(cls("UIColor"), Sel("colorWithWhite:alpha:"), white, alpha);
}

id buttonBlue() {
  return send<id>(cls("UIColor"), Sel("colorWithRed:green:blue:alpha:"), 0.0, 0.478, 1.0, 1.0);
}

// Lines a text takes at `size` points in the alert's text width.
double linesOf(const std::string& text, double size) {
  if (text.empty()) return 0;
  double perLine = (kWidth - 2 * kInset) / (kMeanAdvance * size);
  double lines = 0;
  size_t start = 0;
  for (;;) {
    size_t end = text.find('\n', start);
    size_t length = (end == std::string::npos ? text.size() : end) - start;
    lines += std::max(1.0, std::ceil(static_cast<double>(length) / perLine));
    if (end == std::string::npos) return lines;
    start = end + 1;
  }
}

double messageTop(const std::string& title) {
  return title.empty() ? kTitleTop : kTitleTop + kTitleLine + kMessageGap;
}

size_t buttonRows(size_t buttons) {
  return buttons > 2 ? buttons : 1;
}

std::string textOf(id alert, const char* selector) {
  return platform::toString(send<id>(alert, Sel(selector)));
}

void place(const Retained& view, double x, double y, double w, double h) {
  send<void>(view.get(), Sel("setFrame:"), platform::makeRect(x, y, w, h));
}

Retained hairline() {
  Retained line = Retained::adopt(newView("UIView", CGRect{}));
  send<void>(line.get(), Sel("setBackgroundColor:"), color(0.0, 0.2));
  return line;
}

// The views, made once per alert, behind the alert's container.
Chrome& chromeOf(id alert) {
  Chrome& c = stateOf<Chrome>(alert);
  if (c.body) return c;
  id blur = send<id>(cls("UIBlurEffect"), Sel("effectWithStyle:"), kExtraLightBlur);
  c.body = Retained::adopt(
      send<id>(send<id>(cls("UIVisualEffectView"), Sel("alloc")), Sel("initWithEffect:"), blur));
  send<void>(c.body.get(), Sel("setBackgroundColor:"), color(1.0, 0.6));
  send<void>(send<id>(c.body.get(), Sel("layer")), Sel("setCornerRadius:"), kCornerRadius);
  send<void>(c.body.get(), Sel("setClipsToBounds:"), BOOL{1});
  c.title = label(kTitleFont, true, color(0.0, 1.0));
  c.message = label(kMessageFont, false, color(0.0, 1.0));
  id top = alertTopView(alert);
  Integer at = 0;
  for (const Retained* view : {&c.body, &c.title, &c.message}) {
    send<void>(top, Sel("insertSubview:atIndex:"), view->get(), at++);
  }
  return c;
}

}  // namespace

double alertHeight(const std::string& title, const std::string& message, size_t buttons) {
  double text = messageTop(title) + linesOf(message, kMessageFont) * kMessageLine + kMessageBottom;
  return text + kButtonHeight * static_cast<double>(buttonRows(buttons));
}

// Lays the alert's own views out for its title, message and buttons in an
// alert `height` points high.
void layOutAlertChrome(id alert, double height) {
  Chrome& c = chromeOf(alert);
  const std::string title = textOf(alert, "title");
  const std::string message = textOf(alert, "message");
  place(c.body, 0, 0, kWidth, height);
  send<void>(c.title.get(), Sel("setText:"), platform::makeString(title));
  place(c.title, kInset, kTitleTop, kWidth - 2 * kInset, title.empty() ? 0 : kTitleLine);
  send<void>(c.message.get(), Sel("setText:"), platform::makeString(message));
  place(c.message, kInset, messageTop(title), kWidth - 2 * kInset,
        linesOf(message, kMessageFont) * kMessageLine);

  // Buttons: side by side when there are two, else one a row.
  auto count = static_cast<size_t>(send<Integer>(alert, Sel("numberOfButtons")));
  Integer cancel = send<Integer>(alert, Sel("cancelButtonIndex"));
  id top = alertTopView(alert);
  id container = alertOwnContainer(alert);
  while (c.buttons.size() < count) {
    c.buttons.push_back(label(kButtonFont, false, buttonBlue()));
    c.hairlines.push_back(hairline());
    for (const Retained* view : {&c.hairlines.back(), &c.buttons.back()}) {
      send<void>(top, Sel("insertSubview:belowSubview:"), view->get(), container);
    }
  }
  double rowsTop = height - kButtonHeight * static_cast<double>(buttonRows(count));
  for (size_t i = 0; i < c.buttons.size(); ++i) {
    const Retained& button = c.buttons[i];
    bool shown = i < count;
    send<void>(button.get(), Sel("setHidden:"), static_cast<BOOL>(!shown));
    send<void>(c.hairlines[i].get(), Sel("setHidden:"), static_cast<BOOL>(!shown));
    if (!shown) continue;
    auto index = static_cast<Integer>(i);
    send<void>(button.get(), Sel("setText:"), send<id>(alert, Sel("buttonTitleAtIndex:"), index));
    send<void>(button.get(), Sel("setFont:"),
               sendClass<id>(platform::classNamed("UIFont"),
                             Sel(index == cancel ? "boldSystemFontOfSize:" : "systemFontOfSize:"),
                             kButtonFont));
    bool sideBySide = count == 2;
    double w = sideBySide ? kWidth / 2 : kWidth;
    double x = sideBySide ? w * static_cast<double>(i) : 0;
    double y = sideBySide ? rowsTop : rowsTop + kButtonHeight * static_cast<double>(i);
    place(button, x, y, w, kButtonHeight);
    // A hairline above each row, and between the two buttons of a row.
    if (sideBySide && i == 1) {
      place(c.hairlines[i], w - kHairline / 2, y, kHairline, kButtonHeight);
    } else {
      place(c.hairlines[i], 0, y, kWidth, kHairline);
    }
  }
}

// The dimming UIKit puts over the screen behind an alert, in its window.
void dimBehindAlert(id window) {
  CGRect screen = send<CGRect>(window, Sel("bounds"));
  Retained dimming = Retained::adopt(newView("UIView", screen));
  send<void>(dimming.get(), Sel("setBackgroundColor:"), color(0.0, kDimming));
  send<void>(window, Sel("insertSubview:atIndex:"), dimming.get(), Integer{0});
}

}  // namespace kv::sim::frameworks
