// The item line inside the prompt.
#include "prompt/item_line.h"

#include <string>

#include "base/flags.h"
#include "platform/foundation.h"
#include "platform/geometry.h"
#include "platform/runtime.h"
#include "prompt/selectors.h"
#include "settings/settings.h"

namespace kv::prompt {

namespace {

using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendClass;

constexpr const char* kLockScreenMark = "(LockScreen)";
constexpr const char* kLockScreenSuffix = " (LockScreen)";

constexpr double kTop = 116;
constexpr double kLineHeight = 20;
constexpr double kFontSize = 17;
constexpr Integer kCentred = 1;  // NSTextAlignmentCenter

// `text` with every `part` taken out.
std::string without(std::string text, const std::string& part) {
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at)) {
    text.erase(at, part.size());
  }
  return text;
}

}  // namespace

id itemName(id identifier) {
  static const Sel kSharedInstance("sharedInstance"), kDisplayName("displayName");
  static const Sel kByBundle("applicationWithBundleIdentifier:");
  static const Sel kByDisplay("applicationWithDisplayIdentifier:");
  id controller = sendClass<id>(platform::classNamed("SBApplicationController"), kSharedInstance);
  const Sel& lookup = base::flags().isIOS8OrLater ? kByBundle : kByDisplay;
  id app =
      platform::respondsTo(controller, lookup) ? send<id>(controller, lookup, identifier) : nullptr;
  id name = send<id>(app, kDisplayName);
  return name != nullptr ? name : identifier;
}

void addItemLine(AlertViewState& s, id container) {
  static const Sel kCopy("copy"), kSetText("setText:"), kSetTextAlignment("setTextAlignment:");
  static const Sel kSetNumberOfLines("setNumberOfLines:"), kSetFont("setFont:");
  static const Sel kSetTextColor("setTextColor:"), kBoldSystemFont("boldSystemFontOfSize:");
  static const Sel kDarkGray("darkGrayColor"), kSetClipsToBounds("setClipsToBounds:");
  if (!settings::current().showProtectedItemName || !s.inRestrictTitle) return;

  // A lock-screen item is remembered and stored back without its suffix.
  std::string identifier = platform::toString(s.inRestrictTitle.get());
  bool lockScreen = identifier.find(kLockScreenMark) != std::string::npos;
  if (lockScreen) {
    s.inRestrictTitle = Retained::adopt(
        send<id>(platform::makeString(without(identifier, kLockScreenSuffix)), kCopy));
  }

  // The application's display name, or the identifier itself. The
  // lock-screen suffix takes a line of its own: its space becomes a break.
  std::string text = platform::toString(itemName(s.inRestrictTitle.get()));
  Integer lines = 1;
  if (lockScreen) {
    text += "\n" + std::string(kLockScreenMark);
    lines = 2;
  }
  CGRect bounds = send<CGRect>(container, sel::kBounds);
  s.textLabel = Retained::adopt(send<id>(
      sendClass<id>(platform::classNamed("UILabel"), sel::kAlloc), sel::kInitWithFrame,
      platform::makeRect(0, kTop, bounds.size.width, kLineHeight * static_cast<double>(lines))));
  id label = s.textLabel.get();
  send<void>(label, kSetText, platform::makeString(text));
  send<void>(label, kSetNumberOfLines, lines);

  // Centred, bold, dark grey; the container does not clip it.
  send<void>(label, kSetTextAlignment, kCentred);
  send<void>(label, kSetFont,
             sendClass<id>(platform::classNamed("UIFont"), kBoldSystemFont, kFontSize));
  send<void>(label, kSetTextColor, sendClass<id>(platform::classNamed("UIColor"), kDarkGray));
  send<void>(container, sel::kAddSubview, label);
  send<void>(container, kSetClipsToBounds, BOOL{0});
}

}  // namespace kv::prompt
