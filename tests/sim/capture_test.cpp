// What a host says it shows: views captured with only the looks they have,
// left out when nothing of them shows, each kind's own drawing; windows by
// level with the keyboard; the alert's own views laid out around its
// content; and the developer's nudge reaching the frontmost view.
#include "sim/render/host/capture.h"

#include "platform/retained.h"
#include "sim/render/scene.h"
#include "tests/sim/ui_test_support.h"

namespace kv::sim::frameworks::testing {
namespace {

using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendClass;
using platform::Value;
namespace key = render::key;

id cls(const char* name) {
  return platform::asId(platform::classNamed(name));
}
id str(const char* s) {
  return platform::makeString(s);
}
id rgba(double r, double g, double b, double a) {
  return send<id>(cls("UIColor"), Sel("colorWithRed:green:blue:alpha:"), r, g, b, a);
}
Retained view(const char* className, double x, double y, double w, double h) {
  return Retained::adopt(newView(className, platform::makeRect(x, y, w, h)));
}
std::vector<double> reals(const Value& v) {
  std::vector<double> out;
  for (const auto& x : v.asArray()) out.push_back(x.asReal());
  return out;
}

TEST(Capture, ViewsCarryOnlyTheLooksTheyHave) {
  ASSERT_NO_FATAL_FAILURE(startDevice("11.1"));
  Retained plain = view("UIView", 10, 20, 30, 40);
  Value n = render::captureView(plain.get());
  EXPECT_EQ(n[key::kClass].asString(), "UIView");
  EXPECT_EQ(reals(n[key::kFrame]), (std::vector<double>{10, 20, 30, 40}));
  for (const char* absent : {key::kBounds, key::kTransform, key::kAlpha, key::kBackground,
                             key::kCorner, key::kClips, key::kChildren}) {
    EXPECT_TRUE(n[absent].isNone()) << absent;
  }

  Retained styled = view("UIView", 0, 0, 50, 50);
  id v = styled.get();
  send<void>(v, Sel("setBackgroundColor:"), rgba(1, 0, 0, 1));
  send<void>(v, Sel("setAlpha:"), 0.5);
  send<void>(send<id>(v, Sel("layer")), Sel("setOpacity:"), 0.5f);
  send<void>(send<id>(v, Sel("layer")), Sel("setCornerRadius:"), 13.0);
  send<void>(send<id>(v, Sel("layer")), Sel("setMasksToBounds:"), BOOL{1});
  send<void>(v, Sel("setTransform:"), CGAffineTransform{2, 0, 0, 2, 0, 0});
  CATransform3D layerMove{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 7, 0, 1};
  send<void>(send<id>(v, Sel("layer")), Sel("setTransform:"), layerMove);
  send<void>(v, Sel("setBounds:"), platform::makeRect(3, 4, 50, 50));
  n = render::captureView(v);
  EXPECT_EQ(reals(n[key::kBackground]), (std::vector<double>{1, 0, 0, 1}));
  EXPECT_DOUBLE_EQ(n[key::kAlpha].asReal(), 0.25) << "the view's alpha times its layer's opacity";
  EXPECT_DOUBLE_EQ(n[key::kCorner].asReal(), 13);
  EXPECT_TRUE(n[key::kClips].asBool()) << "a masking layer clips";
  EXPECT_EQ(reals(n[key::kTransform]), (std::vector<double>{2, 0, 0, 2, 5, 7}))
      << "the view's transform, then its layer's";
  EXPECT_EQ(reals(n[key::kBounds]), (std::vector<double>{3, 4}));

  // A clear colour is no background; hidden or invisible views are left out
  // with what they hold.
  send<void>(v, Sel("setBackgroundColor:"), rgba(1, 0, 0, 0));
  Retained child = view("UIView", 1, 1, 2, 2);
  send<void>(v, Sel("addSubview:"), child.get());
  n = render::captureView(v);
  EXPECT_TRUE(n[key::kBackground].isNone());
  EXPECT_EQ(n[key::kChildren].asArray().size(), 1u);
  send<void>(child.get(), Sel("setHidden:"), BOOL{1});
  EXPECT_TRUE(render::captureView(v)[key::kChildren].isNone());
  send<void>(child.get(), Sel("setHidden:"), BOOL{0});
  send<void>(child.get(), Sel("setAlpha:"), 0.0);
  EXPECT_TRUE(render::captureView(v)[key::kChildren].isNone());
  send<void>(send<id>(v, Sel("layer")), Sel("setOpacity:"), 0.0f);
  EXPECT_TRUE(render::captureView(v).isNone());
  EXPECT_TRUE(render::captureView(nullptr).isNone());
}

TEST(Capture, EachKindAddsWhatItDraws) {
  ASSERT_NO_FATAL_FAILURE(startDevice("11.1"));
  Retained label = view("UILabel", 0, 116, 270, 20);
  send<void>(label.get(), Sel("setText:"), str("Messages"));
  send<void>(label.get(), Sel("setFont:"),
             send<id>(cls("UIFont"), Sel("boldSystemFontOfSize:"), 17.0));
  send<void>(label.get(), Sel("setTextColor:"), send<id>(cls("UIColor"), Sel("darkGrayColor")));
  send<void>(label.get(), Sel("setTextAlignment:"), Integer{1});
  send<void>(label.get(), Sel("setNumberOfLines:"), Integer{2});
  Value text = render::captureView(label.get())[key::kText];
  EXPECT_EQ(text[key::kString].asString(), "Messages");
  EXPECT_EQ(text[key::kWeight].asString(), "semibold");
  EXPECT_DOUBLE_EQ(text[key::kSize].asReal(), 17);
  EXPECT_NEAR(text[key::kColor].asArray()[0].asReal(), 1.0 / 3, 1e-9);
  EXPECT_EQ(text[key::kAlign].asInteger(), 1);
  EXPECT_EQ(text[key::kLines].asInteger(), 2);
  send<void>(label.get(), Sel("setFont:"), send<id>(cls("UIFont"), Sel("systemFontOfSize:"), 13.0));
  EXPECT_EQ(render::captureView(label.get())[key::kText][key::kWeight].asString(), "regular");
  send<void>(label.get(), Sel("setText:"), str(""));
  EXPECT_TRUE(render::captureView(label.get())[key::kText].isNone())
      << "an empty label draws nothing";

  id glyph =
      send<id>(send<id>(cls("PKGlyphView"), Sel("alloc")), Sel("initWithStyle:"), Integer{1});
  Retained keepGlyph = Retained::adopt(glyph);
  send<void>(glyph, Sel("setFrame:"), platform::makeRect(104, 50, 63, 63));
  send<void>(glyph, Sel("setState:"), Integer{5});
  Value g = render::captureView(glyph);
  EXPECT_EQ(g[key::kGlyph][key::kState].asInteger(), 5);
  EXPECT_EQ(reals(g[key::kGlyph][key::kPrimary]), (std::vector<double>{0.2, 0.2, 0.2, 1}));
  EXPECT_EQ(reals(g[key::kGlyph][key::kSecondary]), (std::vector<double>{0.6, 0.6, 0.6, 1}));
  EXPECT_TRUE(g[key::kChildren].isNone()) << "its drawing view is part of it";

  id field = send<id>(send<id>(cls("PSPasscodeField"), Sel("alloc")),
                      Sel("initWithNumberOfEntryFields:"), Integer{4});
  Retained keepField = Retained::adopt(field);
  send<void>(field, Sel("insertText:"), str("25"));
  Value p = render::captureView(field)[key::kPasscode];
  EXPECT_EQ(p[key::kFields].asInteger(), 4);
  EXPECT_EQ(p[key::kFilled].asInteger(), 2);

  id dark = send<id>(cls("UIBlurEffect"), Sel("effectWithStyle:"), Integer{2});
  Retained effect = Retained::adopt(
      send<id>(send<id>(cls("UIVisualEffectView"), Sel("alloc")), Sel("initWithEffect:"), dark));
  EXPECT_EQ(render::captureView(effect.get())[key::kBlur][key::kStyle].asInteger(), 2);
  Retained backdrop = Retained::adopt(send<id>(send<id>(cls("_UIBackdropView"), Sel("alloc")),
                                               Sel("initWithStyle:"), Integer{2060}));
  EXPECT_EQ(render::captureView(backdrop.get())[key::kBlur][key::kStyle].asInteger(), 2060);

  Retained plain = view("UIView", 0, 0, 1, 1);
  EXPECT_EQ(render::viewKindOf(plain.get()), nullptr);
  Retained image = view("UIImageView", 0, 0, 1, 1);
  EXPECT_TRUE(render::captureView(image.get())[key::kImage].isNone()) << "no image, nothing drawn";
}

// An alert on screen: its windows, its own views, the keyboard.
class CapturedAlert : public ::testing::Test {
 protected:
  id show(const char* message, std::vector<const char*> others) {
    id a = send<id>(send<id>(cls("UIAlertView"), Sel("alloc")),
                    Sel("initWithTitle:message:delegate:cancelButtonTitle:otherButtonTitles:"),
                    str("Kavelin"), str(message), id{nullptr}, str("Cancel"), id{nullptr});
    for (const char* o : others) send<Integer>(a, Sel("addButtonWithTitle:"), str(o));
    alert_ = Retained::adopt(a);
    send<void>(a, Sel("show"));
    return a;
  }
  // The alert's own views: the labels' texts and frames, in the top view.
  std::vector<std::pair<std::string, CGRect>> labels() {
    std::vector<std::pair<std::string, CGRect>> out;
    id container = alertContainer(alert_.get());
    visitSubviews(superviewOf(container) == nullptr ? container : alertTop(), [&](id v) {
      if (v == container) return false;
      if (platform::isKindOf(v, "UILabel") && !send<BOOL>(v, Sel("isHidden"))) {
        out.emplace_back(platform::toString(send<id>(v, Sel("text"))),
                         send<CGRect>(v, Sel("frame")));
      }
      return true;
    });
    return out;
  }
  id alertTop() {
    id top = alertContainer(alert_.get());
    while (superviewOf(top) != nullptr && !platform::isKindOf(superviewOf(top), "UIWindow")) {
      top = superviewOf(top);
    }
    return top;
  }
  Retained alert_;
};

TEST_F(CapturedAlert, TheAlertDrawsItsTitleMessageAndButtonsBehindItsContent) {
  ASSERT_NO_FATAL_FAILURE(startDevice("9.3"));
  platform::AutoreleasePool pool;
  show("\n\nPlease authenticate", {"Enter passcode"});
  auto l = labels();
  ASSERT_EQ(l.size(), 4u);
  EXPECT_EQ(l[0].first, "Kavelin");
  EXPECT_EQ(l[1].first, "\n\nPlease authenticate");
  EXPECT_EQ(l[1].second.size.height, 3 * 16) << "three lines of message";
  EXPECT_EQ(l[2].first, "Cancel");
  EXPECT_EQ(l[3].first, "Enter passcode");
  CGRect frame = send<CGRect>(alertTop(), Sel("frame"));
  EXPECT_EQ(frame.size.height, 44 + 48 + 20 + 44);
  EXPECT_EQ(l[2].second.origin.x, 0);
  EXPECT_EQ(l[3].second.origin.x, 135) << "two buttons side by side";
  EXPECT_EQ(l[3].second.origin.y, frame.size.height - 44);

  // The content container is in front of the alert's own views.
  id top = alertTop();
  auto siblings = subviewsOf(top);
  id container = alertContainer(alert_.get());
  while (superviewOf(container) != top) container = superviewOf(container);
  EXPECT_EQ(siblings.back(), container);

  // A longer message on screen grows the alert.
  send<void>(alert_.get(), Sel("setMessage:"),
             str("\n\nNot recognised. Authenticate with your fingerprint, then try once more"));
  EXPECT_GT(send<CGRect>(alertTop(), Sel("frame")).size.height, frame.size.height);

  // The window dims what lies behind; the cancel button is the bold one.
  Value scene = render::captureScene();
  ASSERT_EQ(scene[key::kWindows].asArray().size(), 1u);
  const Value& window = scene[key::kWindows].asArray()[0];
  const Value& dimming = window[key::kChildren].asArray()[0];
  EXPECT_EQ(reals(dimming[key::kBackground]), (std::vector<double>{0, 0, 0, 0.4}));
  std::vector<std::string> weights;
  std::function<void(const Value&)> walk = [&](const Value& n) {
    const Value& text = n[key::kText];
    if (text[key::kString].asString() == "Cancel" ||
        text[key::kString].asString() == "Enter passcode") {
      weights.push_back(text[key::kString].asString() + " " + text[key::kWeight].asString());
    }
    for (const Value& c : n[key::kChildren].asArray()) walk(c);
  };
  walk(window);
  EXPECT_EQ(weights, (std::vector<std::string>{"Cancel semibold", "Enter passcode regular"}));
}

TEST_F(CapturedAlert, ThreeButtonsStandOneARowAndTheSceneTellsTheKeyboard) {
  ASSERT_NO_FATAL_FAILURE(startDevice("11.1"));
  platform::AutoreleasePool pool;
  show("Hello", {"One", "Two"});
  auto l = labels();
  ASSERT_EQ(l.size(), 5u);
  EXPECT_EQ(l[2].second.size.width, 270);
  EXPECT_EQ(l[3].second.origin.y - l[2].second.origin.y, 44);
  EXPECT_EQ(l[4].second.origin.y - l[3].second.origin.y, 44);

  EXPECT_TRUE(render::captureScene()[key::kKeyboard].isNone());
  id field = send<id>(send<id>(cls("PSPasscodeField"), Sel("alloc")),
                      Sel("initWithNumberOfEntryFields:"), Integer{4});
  Retained keep = Retained::adopt(field);
  send<void>(alertContainer(alert_.get()), Sel("addSubview:"), field);
  ASSERT_TRUE(send<BOOL>(field, Sel("becomeFirstResponder")));
  Value scene = render::captureScene();
  EXPECT_EQ(scene[key::kKeyboard][key::kType].asInteger(), 4) << "the number pad";
  EXPECT_EQ(reals(scene[key::kKeyboard][key::kFrame]),
            (std::vector<double>{0, 667 - 216, 375, 216}));
  EXPECT_DOUBLE_EQ(scene[key::kScreen][key::kWidth].asReal(), 375);
  EXPECT_EQ(scene[key::kSurface][key::kFront].asString(), "home") << "SpringBoard's own screens";

  // A window of a higher level comes later, whatever the order shown.
  Retained high = Retained::adopt(newView("UIWindow", platform::makeRect(0, 0, 375, 667)));
  send<void>(high.get(), Sel("setWindowLevel:"), 3000.0);
  send<void>(high.get(), Sel("makeKeyAndVisible"));
  Retained low = Retained::adopt(newView("UIWindow", platform::makeRect(0, 0, 375, 667)));
  send<void>(low.get(), Sel("makeKeyAndVisible"));
  auto windows = render::captureScene()[key::kWindows].asArray();
  ASSERT_EQ(windows.size(), 3u);
  EXPECT_TRUE(windows[0][key::kChildren].isNone()) << "level 0 first";
  EXPECT_TRUE(windows[2][key::kChildren].isNone()) << "level 3000 last, the alert's between";
  EXPECT_FALSE(windows[1][key::kChildren].isNone());
}

// The developer's nudge works on the frontmost shown view of a kind.
TEST_F(CapturedAlert, TheFrontmostViewOfAKindIsTheOneOnTop) {
  ASSERT_NO_FATAL_FAILURE(startDevice("11.1"));
  platform::AutoreleasePool pool;
  EXPECT_EQ(render::frontmostOnScreen("UILabel"), nullptr);
  show("Hello", {});
  Retained item = view("UILabel", 0, 116, 270, 20);
  send<void>(item.get(), Sel("setText:"), str("Messages"));
  send<void>(alertContainer(alert_.get()), Sel("addSubview:"), item.get());
  EXPECT_EQ(render::frontmostOnScreen("UILabel"), item.get())
      << "the content is in front of the alert's own labels";
  send<void>(item.get(), Sel("setHidden:"), BOOL{1});
  id next = render::frontmostOnScreen("UILabel");
  ASSERT_NE(next, nullptr);
  EXPECT_EQ(platform::toString(send<id>(next, Sel("text"))), "Cancel")
      << "hidden views are passed by";
}

}  // namespace
}  // namespace kv::sim::frameworks::testing
