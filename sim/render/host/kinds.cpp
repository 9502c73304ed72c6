// The kinds of view that draw something of their own, and what each adds
// to its node. A view of any other kind shows its frame, colour and
// subviews only.
#include <iterator>
#include <string>

#include "platform/foundation.h"
#include "platform/runtime.h"
#include "sim/frameworks/uikit.h"
#include "sim/render/host/capture.h"
#include "sim/render/scene.h"

namespace kv::sim::render {

using platform::Integer;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

const Sel kText("text"), kFont("font"), kFontName("fontName"), kPointSize("pointSize");
const Sel kTextColor("textColor"), kTextAlignment("textAlignment");
const Sel kNumberOfLines("numberOfLines"), kImage("image"), kState("state");
const Sel kPrimaryColor("primaryColor"), kSecondaryColor("secondaryColor");
const Sel kNumberOfEntryFields("numberOfEntryFields"), kEffect("effect");
const Sel kBlurStyle("_style"), kStyle("style");

// The weight a font's name tells: ".SFUIText-Semibold" is semibold.
std::string weightOf(const std::string& fontName) {
  if (fontName.find("Semibold") != std::string::npos) return "semibold";
  if (fontName.find("Bold") != std::string::npos) return "bold";
  return "regular";
}

void describeLabel(id view, Value::Dictionary& node) {
  std::string text = platform::toString(send<id>(view, kText));
  if (text.empty()) return;
  id font = send<id>(view, kFont);
  node[key::kText] = Value::dictionary({
      {key::kString, Value::string(text)},
      {key::kSize, Value::real(font != nullptr ? send<double>(font, kPointSize) : 17)},
      {key::kWeight, Value::string(weightOf(platform::toString(send<id>(font, kFontName))))},
      {key::kColor, colorValue(send<id>(view, kTextColor))},
      {key::kAlign, Value::integer(send<Integer>(view, kTextAlignment))},
      {key::kLines, Value::integer(send<Integer>(view, kNumberOfLines))},
  });
}

void describeImageView(id view, Value::Dictionary& node) {
  std::string path = frameworks::imagePathOf(send<id>(view, kImage));
  if (!path.empty()) node[key::kImage] = Value::string(path);
}

void describeGlyph(id view, Value::Dictionary& node) {
  node[key::kGlyph] = Value::dictionary({
      {key::kState, Value::integer(send<Integer>(view, kState))},
      {key::kPrimary, colorValue(send<id>(view, kPrimaryColor))},
      {key::kSecondary, colorValue(send<id>(view, kSecondaryColor))},
  });
}

void describePasscodeField(id view, Value::Dictionary& node) {
  node[key::kPasscode] = Value::dictionary({
      {key::kFields, Value::integer(send<Integer>(view, kNumberOfEntryFields))},
      {key::kFilled,
       Value::integer(static_cast<int64_t>(platform::toString(send<id>(view, kText)).size()))},
  });
}

// UIBlurEffect's style: 0 extra light, 1 light, 2 dark.
void describeEffectView(id view, Value::Dictionary& node) {
  id effect = send<id>(view, kEffect);
  Integer style = platform::respondsTo(effect, kBlurStyle) ? send<Integer>(effect, kBlurStyle) : 0;
  node[key::kBlur] = Value::dictionary({{key::kStyle, Value::integer(style)}});
}

// _UIBackdropView's styles are the system's private numbers, kept as they come.
void describeBackdrop(id view, Value::Dictionary& node) {
  node[key::kBlur] =
      Value::dictionary({{key::kStyle, Value::integer(send<Integer>(view, kStyle))}});
}

// The glyph draws itself: its fingerprint drawing view is part of it.
constexpr ViewKind kKinds[] = {
    {"UILabel", describeLabel, false},
    {"UIImageView", describeImageView, false},
    {"PKGlyphView", describeGlyph, true},
    {"PSPasscodeField", describePasscodeField, false},
    {"UIVisualEffectView", describeEffectView, false},
    {"_UIBackdropView", describeBackdrop, false},
};

}  // namespace

const ViewKind* viewKindOf(id view) {
  for (const auto& kind : kKinds) {
    if (platform::classNamed(kind.className) != nullptr &&
        platform::isKindOf(view, kind.className)) {
      return &kind;
    }
  }
  return nullptr;
}

}  // namespace kv::sim::render
