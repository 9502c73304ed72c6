// What a host tells the device it shows, for a picture of the screen: the
// keys of the "scene" answer, written once for the host that captures it
// and the device that draws it.
//
// A scene is a dictionary:
//   screen    {width, height, scale}                 points, and pixels a point
//   process   the process name, bundle              which host answered
//   windows   [node...]                            shown windows, lowest level first
//   keyboard  {frame, type} or absent              the keyboard, while it is up
//   surface   {...} or absent                      SpringBoard's own screens (below)
//
// A node is one visible view (hidden views and views of alpha 0 are left
// out, with what they hold):
//   class       its class name
//   frame       [x, y, width, height] in its superview
//   bounds      [x, y] its bounds origin, when not zero
//   transform   [a, b, c, d, tx, ty] about its centre, when not the identity
//   alpha       when below 1 (the view's alpha times its layer's opacity)
//   background  [r, g, b, a], when it has a colour
//   corner      its layer's corner radius, when not zero
//   clips       true when it clips what it holds to its bounds
//   children    [node...] back to front
// and what its kind draws (one of):
//   text      {string, size, weight ("regular", "semibold", "bold"), color, align, lines}
//   image     the device path of its image
//   glyph     {state, primary, secondary}         PassKit's biometric glyph
//   passcode  {fields, filled}                      a row of passcode entry fields
//   blur      {style}                               a blur of what lies beneath
//
// SpringBoard's surface, what it shows that is not made of views:
//   locked, screenOn, front (bundle id or "home"), frontName,
//   icons [{id, name}], folders [{name, apps [name...]}], openFolder,
//   switcher {visible, recents [name...]}
#pragma once

namespace kv::sim::render::key {

constexpr const char* kScreen = "screen";
constexpr const char* kWidth = "width";
constexpr const char* kHeight = "height";
constexpr const char* kScale = "scale";
constexpr const char* kProcess = "process";
constexpr const char* kBundle = "bundle";
constexpr const char* kWindows = "windows";
constexpr const char* kKeyboard = "keyboard";
constexpr const char* kType = "type";
constexpr const char* kSurface = "surface";

constexpr const char* kClass = "class";
constexpr const char* kFrame = "frame";
constexpr const char* kBounds = "bounds";
constexpr const char* kTransform = "transform";
constexpr const char* kAlpha = "alpha";
constexpr const char* kBackground = "background";
constexpr const char* kCorner = "corner";
constexpr const char* kClips = "clips";
constexpr const char* kChildren = "children";

constexpr const char* kText = "text";
constexpr const char* kString = "string";
constexpr const char* kSize = "size";
constexpr const char* kWeight = "weight";
constexpr const char* kColor = "color";
constexpr const char* kAlign = "align";
constexpr const char* kLines = "lines";
constexpr const char* kImage = "image";
constexpr const char* kGlyph = "glyph";
constexpr const char* kState = "state";
constexpr const char* kPrimary = "primary";
constexpr const char* kSecondary = "secondary";
constexpr const char* kPasscode = "passcode";
constexpr const char* kFields = "fields";
constexpr const char* kFilled = "filled";
constexpr const char* kBlur = "blur";
constexpr const char* kStyle = "style";

constexpr const char* kLocked = "locked";
constexpr const char* kScreenOn = "screenOn";
constexpr const char* kFront = "front";
constexpr const char* kFrontName = "frontName";
constexpr const char* kIcons = "icons";
constexpr const char* kId = "id";
constexpr const char* kName = "name";
constexpr const char* kFolders = "folders";
constexpr const char* kApps = "apps";
constexpr const char* kOpenFolder = "openFolder";
constexpr const char* kSwitcher = "switcher";
constexpr const char* kVisible = "visible";
constexpr const char* kRecents = "recents";

}  // namespace kv::sim::render::key
