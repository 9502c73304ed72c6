// KavelinBlurView11 against the simulated UIKit: the blur filling the view,
// the text image centred at its own size and shown as the setting says; and
// the centring arithmetic on its own, for labels smaller and larger than the
// view. Each test is one device (ctest runs each in its own process).
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "settings/settings.h"
#include "sim/common/plist.h"
#include "sim/device/settings_bundle.h"
#include "sim/frameworks/frameworks.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/fs_redirect.h"
#include "springboard/blur_view.h"
#include "tests/sim/ui_test_support.h"

namespace kv::springboard {
namespace {

using platform::Retained;
using platform::Sel;
using platform::send;
using platform::Value;

TEST(CentredFrame, SitsInTheMiddleAtItsOwnSize) {
  struct Case {
    CGSize view, label;
    CGRect want;
  } cases[] = {
      {{300, 500}, {162, 36}, {{69, 232}, {162, 36}}},
      {{301, 501}, {100, 40}, {{100.5, 230.5}, {100, 40}}},  // halves stay halves
      {{100, 30}, {162, 36}, {{-31, -3}, {162, 36}}},        // larger: out on both sides
      {{0, 0}, {10, 10}, {{-5, -5}, {10, 10}}},
  };
  for (const auto& c : cases) {
    CGRect got = centredFrame(c.view, c.label);
    EXPECT_DOUBLE_EQ(got.origin.x, c.want.origin.x) << c.view.width << "x" << c.view.height;
    EXPECT_DOUBLE_EQ(got.origin.y, c.want.origin.y) << c.view.width << "x" << c.view.height;
    EXPECT_DOUBLE_EQ(got.size.width, c.want.size.width);
    EXPECT_DOUBLE_EQ(got.size.height, c.want.size.height);
  }
}

class BlurView : public ::testing::Test {
 protected:
  void TearDown() override {
    sim::setDeviceRoot("");
    if (!root_.empty()) std::filesystem::remove_all(root_);
  }

  void start(Value::Dictionary prefs) {
    char pattern[] = "/tmp/kavelin-blur-XXXXXX";
    root_ = mkdtemp(pattern);
    sim::setDeviceRoot(root_);
    std::filesystem::create_directories(root_ + "/private/var/mobile/Library/Preferences");
    std::filesystem::create_directories(root_ + "/private/var/tmp");
    sim::host::Profile p;
    p.processName = "SpringBoard";
    p.bundleIdentifier = "com.apple.springboard";
    p.osVersion = "11.1";
    p.osVersionString = "Version 11.1 (Build 15B93)";
    p.model = "iPhone";
    p.biometrics = "faceid";
    sim::host::setProfile(p);
    sim::host::applyProfile();
    ASSERT_EQ(sim::host::installVirtualTime(), std::vector<std::string>{});
    sim::host::setNowNanos(sim::frameworks::testing::kStart);
    sim::frameworks::defineFrameworks();
    defineBlurView();
    ASSERT_TRUE(sim::writePlistFile("/var/mobile/Library/Preferences/net.quorvan.kavelin.plist",
                                    Value::dictionary(std::move(prefs)),
                                    sim::PlistFormat::kBinary));
    settings::load();
  }

  // A cover as a card makes it, laid out.
  Retained cover(CGRect frame) {
    Retained view = Retained::adopt(sim::frameworks::newView(kBlurViewClass, frame));
    send<void>(view.get(), Sel("layoutSubviews"));
    return view;
  }

  static CGRect frameOf(id view) { return send<CGRect>(view, Sel("frame")); }
  static id label(id view) { return platform::ivar<id>(view, "_protectedLabel").value_or(nullptr); }

  std::string root_;
};

TEST_F(BlurView, BlurFillsTheViewAndTheTextSitsCentred) {
  ASSERT_NO_FATAL_FAILURE(start({}));
  Retained view = cover(platform::makeRect(10, 20, 300, 500));
  id effectView = send<id>(view.get(), Sel("visualEffectView"));
  ASSERT_TRUE(platform::isKindOf(effectView, "UIVisualEffectView"));
  EXPECT_EQ(platform::ivar<id>(view.get(), "visualEffectView"), effectView);
  CGRect blur = frameOf(effectView);
  EXPECT_EQ(blur.origin.x, 0);
  EXPECT_EQ(blur.origin.y, 0);
  EXPECT_EQ(blur.size.width, 300);
  EXPECT_EQ(blur.size.height, 500);
  EXPECT_EQ(send<platform::Integer>(send<id>(effectView, Sel("effect")), Sel("_style")), 1);
  EXPECT_NE(send<BOOL>(view.get(), Sel("clipsToBounds")), 0);
  EXPECT_NE(send<BOOL>(effectView, Sel("clipsToBounds")), 0);

  id text = label(view.get());
  ASSERT_NE(text, nullptr);
  std::string drawing = sim::frameworks::imageDrawingOf(send<id>(text, Sel("image")));
  EXPECT_NE(drawing.find("text \"Kavelined\" font .SFUIText-Semibold 30 color ffffff"),
            std::string::npos)
      << drawing;
  EXPECT_NE(drawing.find("shadow blur 3 color 555555 offset 0,2 at 0,0"), std::string::npos)
      << drawing;
  CGRect at = frameOf(text);
  EXPECT_GT(at.size.width, 0);
  EXPECT_DOUBLE_EQ(at.origin.x, (300 - at.size.width) / 2);
  EXPECT_DOUBLE_EQ(at.origin.y, (500 - at.size.height) / 2);
  EXPECT_EQ(send<double>(text, Sel("alpha")), 1.0);
}

TEST_F(BlurView, TextHiddenWhenTheSettingIsOff) {
  ASSERT_NO_FATAL_FAILURE(start({{"showKavelinedText", Value::boolean(false)}}));
  Retained view = cover(platform::makeRect(0, 0, 200, 100));
  EXPECT_EQ(send<double>(label(view.get()), Sel("alpha")), 0.0);
  // Laid out again at another size: still centred, still hidden.
  send<void>(view.get(), Sel("setFrame:"), platform::makeRect(0, 0, 400, 300));
  send<void>(view.get(), Sel("layoutSubviews"));
  CGRect at = frameOf(label(view.get()));
  EXPECT_DOUBLE_EQ(at.origin.x, (400 - at.size.width) / 2);
  EXPECT_EQ(send<double>(label(view.get()), Sel("alpha")), 0.0);
}

}  // namespace
}  // namespace kv::springboard
