// KavelinAlertView against the simulated UIKit, PassKit glyph, passcode field
// and SpringBoard: its looks by IconColor and hardware, the item line, the
// passcode button, the scanner, error and passcode states, the glyph states
// with and without the face camera, and the deferred repairs on virtual time.
// Each test is one device (ctest runs each in its own process).
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <sstream>

#include "base/flags.h"
#include "core/controller.h"
#include "core/state.h"
#include "platform/classes.h"
#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "prompt/alert_view.h"
#include "prompt/glyph_timing.h"
#include "prompt/passcode_field_hooks.h"
#include "prompt/texts.h"
#include "settings/settings.h"
#include "sim/common/plist.h"
#include "sim/device/settings_bundle.h"
#include "sim/frameworks/frameworks.h"
#include "sim/host/fs_redirect.h"
#include "tests/sim/ui_test_support.h"
#include "tests/support/springboard_process.h"

namespace kv::prompt {
namespace {

using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendClass;
using platform::Value;
using sim::frameworks::describeAlertContent;
using sim::frameworks::testing::advance;
using sim::frameworks::testing::calls;
using sim::frameworks::testing::Calls;
using sim::frameworks::testing::kStart;

id str(const std::string& s) {
  return platform::makeString(s);
}

void clicked(id, SEL, id, Integer i) {
  calls().push_back("clicked " + std::to_string(i));
}
void didDismiss(id, SEL, id, Integer i) {
  calls().push_back("did-dismiss " + std::to_string(i));
}

// The animation keys on a view's layer.
std::vector<std::string> keys(id view) {
  id layer = send<id>(view, Sel("layer"));
  return platform::stringListOf(send<id>(layer, Sel("animationKeys")))
      .value_or(std::vector<std::string>{});
}
using Keys = std::vector<std::string>;

double alpha(id view) {
  return send<double>(view, Sel("alpha"));
}
float layerSpeed(id view) {
  return send<float>(send<id>(view, Sel("layer")), Sel("speed"));
}
CGRect frameOf(id view) {
  return send<CGRect>(view, Sel("frame"));
}

using Device = kv::testing::SpringBoardDevice;

class Prompt : public ::testing::Test {
 protected:
  void TearDown() override {
    prompts_.clear();
    sim::setDeviceRoot("");
    if (!root_.empty()) std::filesystem::remove_all(root_);
  }

  // Makes this process SpringBoard on `d`, with its frameworks, the settings
  // bundle, the version flags, the classes of the library, and `prefs`.
  void start(Device d, Value::Dictionary prefs = {}) {
    char pattern[] = "/tmp/kavelin-prompt-XXXXXX";
    const char* made = mkdtemp(pattern);
    ASSERT_NE(made, nullptr);
    root_ = made;
    ASSERT_EQ(kv::testing::becomeSpringBoard(root_, d, kStart), "");
    platform::defineClass("PromptWatcher", "NSObject",
                          {platform::method("alertView:clickedButtonAtIndex:", clicked),
                           platform::method("alertView:didDismissWithButtonIndex:", didDismiss)});
    watcher_ = Retained::adopt(sim::frameworks::testing::make("PromptWatcher"));
    ASSERT_NO_FATAL_FAILURE(settle(std::move(prefs)));
  }

  // Writes the preference domain as the settings pane would and loads it.
  void settle(Value::Dictionary prefs) {
    ASSERT_TRUE(sim::writePlistFile("/var/mobile/Library/Preferences/net.quorvan.kavelin.plist",
                                    Value::dictionary(std::move(prefs)),
                                    sim::PlistFormat::kBinary));
    settings::load();
  }

  // A new prompt as the coordinator makes it, for `item` (none for nullptr).
  id prompt(const char* item = nullptr) {
    id alert = send<id>(sendClass<id>(platform::classNamed(kAlertViewClass), Sel("alloc")),
                        Sel("initWithTitle:message:delegate:cancelButtonTitle:otherButtonTitles:"),
                        str("Kavelin"), str("\n\n\n\n\n\nAuthenticate"), watcher_.get(),
                        str("Cancel"), str("Enter passcode"), id{nullptr});
    prompts_.push_back(Retained::adopt(alert));
    if (item != nullptr) send<void>(alert, Sel("setInRestrictTitle:"), str(item));
    return alert;
  }

  // The prompt shown, after the turn in which it went up.
  id shown(const char* item = nullptr) {
    id alert = prompt(item);
    send<void>(alert, Sel("show"));
    advance(0);
    return alert;
  }

  void dismiss(id alert) {
    send<void>(alert, Sel("dismissWithClickedButtonIndex:animated:"), Integer{0}, BOOL{0});
    advance(1);
  }

  bool tap(id alert, long index) {
    std::string error;
    bool tapped = sim::frameworks::tapAlertButton(alert, index, &error);
    EXPECT_TRUE(tapped) << error;
    return tapped;
  }

  // The glyph's state changes that `action` makes, one "state N [animated]"
  // per change.
  std::vector<std::string> glyphChanges(const std::function<void()>& action) {
    ::testing::internal::CaptureStderr();
    action();
    std::istringstream lines(::testing::internal::GetCapturedStderr());
    std::vector<std::string> out;
    for (std::string line; std::getline(lines, line);) {
      auto at = line.find(" glyph ");
      if (at != std::string::npos) out.push_back(line.substr(at + 7));
    }
    return out;
  }

  id view(id alert, const char* property) { return send<id>(alert, Sel(property)); }

  // The second button keeps the prompt and switches it to passcode entry
  // once, with `body` as its text; the first dismisses it and tells the
  // delegate.
  void passcodeButtonTwice(id p, const std::string& body) {
    calls().clear();
    ASSERT_TRUE(tap(p, 1));
    EXPECT_TRUE(send<BOOL>(p, Sel("isVisible")));
    EXPECT_EQ(platform::toString(send<id>(p, Sel("message"))), body);
    EXPECT_EQ(alpha(view(p, "passcodeField")), 1);
    EXPECT_EQ(alpha(view(p, "circle")), 0);
    EXPECT_EQ(keys(view(p, "circle")), Keys{});
    EXPECT_TRUE(sim::frameworks::keyboardVisible());

    send<void>(p, Sel("setMessage:"), str("Not recognised"));
    ASSERT_TRUE(tap(p, 1));
    EXPECT_TRUE(send<BOOL>(p, Sel("isVisible")));
    EXPECT_EQ(platform::toString(send<id>(p, Sel("message"))), "Not recognised") << "shown once";
    EXPECT_EQ(calls(), Calls{}) << "the delegate hears nothing of the second button";

    ASSERT_TRUE(tap(p, 0));
    EXPECT_FALSE(send<BOOL>(p, Sel("isVisible")));
    EXPECT_EQ(calls(), (Calls{"clicked 0", "did-dismiss 0"}));
  }

  platform::AutoreleasePool pool_;
  std::string root_;
  Retained watcher_;
  std::vector<Retained> prompts_;
};

// ---- Looks ----

TEST_F(Prompt, LooksFollowIconColor) {
  ASSERT_NO_FATAL_FAILURE(start({}));
  const std::string kLine = ", label \"Notes Plus\" alpha 1, passcode field alpha 0";
  struct Case {
    int iconColor;
    std::string face;
  };
  const Case kCases[] = {
      {0,
       "image circle-white alpha 1 [MyAnimation], image thumb-black alpha 1 [MyAnimation2], "
       "image thumb-red alpha 0"},
      {1,
       "image circle-black alpha 1 [MyAnimation], image thumb-white alpha 1 [MyAnimation2], "
       "image thumb-red alpha 0"},
      {2,
       "image circle-gold alpha 1 [MyAnimation], image thumb-black alpha 1 [MyAnimation2], "
       "image thumb-red alpha 0"},
      {7,
       "image circle-gold alpha 1 [MyAnimation], image thumb-black alpha 1 [MyAnimation2], "
       "image thumb-red alpha 0"},
      {3, "glyph style 3 state 0 colors 000000/666666 alpha 1"},
      {4, "glyph style 2 state 0 colors 305a94/8a9bb1 alpha 1"},
      {5, "glyph style 1 state 0 colors 333333/999999 alpha 1"},
  };
  for (const auto& c : kCases) {
    ASSERT_NO_FATAL_FAILURE(settle({{"IconColor", Value::integer(c.iconColor)}}));
    id p = shown("com.quorvan.notesplus");
    EXPECT_EQ(describeAlertContent(p), c.face + kLine) << "IconColor " << c.iconColor;
    id glyph = view(p, "glyphView");
    bool ring = c.face.rfind("image", 0) == 0;
    EXPECT_EQ(glyph == nullptr, ring) << "IconColor " << c.iconColor;
    EXPECT_EQ(view(p, "circle") != nullptr, ring) << "IconColor " << c.iconColor;
    if (ring) {
      id ghost = view(p, "ghostView");
      ASSERT_NE(ghost, nullptr);
      EXPECT_EQ(send<id>(ghost, Sel("superview")), contentContainer(p));
      EXPECT_EQ(frameOf(ghost).origin.y, 60);
      EXPECT_EQ(frameOf(ghost).size.width, 60);
      EXPECT_EQ(frameOf(ghost).size.height, 15);
    } else {
      bool placed = c.iconColor == 5;
      EXPECT_EQ(frameOf(glyph).origin.x, placed ? 100 : 104) << "IconColor " << c.iconColor;
      EXPECT_EQ(frameOf(glyph).size.width, placed ? 70 : 63) << "IconColor " << c.iconColor;
      auto t = send<CGAffineTransform>(glyph, Sel("transform"));
      EXPECT_EQ(t.a == 1 && t.d == 1, !placed) << "style 5 alone has a transform of its own";
    }
    dismiss(p);
  }
}

TEST_F(Prompt, FaceIdDeviceShowsThePlacedGlyphWhateverIsStored) {
  ASSERT_NO_FATAL_FAILURE(start({"11.1", "faceid"}, {{"IconColor", Value::integer(0)}}));
  id p = shown();
  EXPECT_EQ(describeAlertContent(p),
            "glyph style 1 state 2 colors 333333/999999 alpha 1, "
            "passcode field alpha 0");
  EXPECT_EQ(frameOf(view(p, "glyphView")).size.width, 70);
}

TEST_F(Prompt, IOS11WithoutFaceIdShowsTheSystemGlyphAtOnce) {
  ASSERT_NO_FATAL_FAILURE(start({"11.1", "touchid"}));
  struct Case {
    int iconColor;
    std::string glyph;
  };
  const Case kCases[] = {
      {0, "glyph style 1 state 0 colors 333333/999999 alpha 1"},
      {4,
       "glyph style 2 state 0 colors ffffff/bfbfbf alpha 1"},  // its style's colours, not its own
  };
  for (const auto& c : kCases) {
    ASSERT_NO_FATAL_FAILURE(settle({{"IconColor", Value::integer(c.iconColor)}}));
    id p = shown();
    EXPECT_EQ(describeAlertContent(p), c.glyph + ", passcode field alpha 0") << c.iconColor;
    EXPECT_EQ(view(p, "circle"), nullptr);
    dismiss(p);
  }
}

TEST_F(Prompt, NoBiometricHardwareOpensAtThePasscodeField) {
  ASSERT_NO_FATAL_FAILURE(start({"10.3", "none"}, {{"IconColor", Value::integer(0)}}));
  ASSERT_FALSE(settings::current().biometricsInUse);
  id p = shown();
  const std::string kFace =
      "image circle-white alpha 0, image thumb-black alpha 0, image thumb-red alpha 0, "
      "passcode field alpha 1";
  EXPECT_EQ(describeAlertContent(p), kFace);
  EXPECT_EQ(sim::frameworks::firstResponder(), view(p, "passcodeField"));
  EXPECT_TRUE(sim::frameworks::keyboardVisible());
  advance(0.5);
  EXPECT_EQ(describeAlertContent(p), kFace) << "the deferred re-add brings no ring back";
  send<void>(p, Sel("showScanner"));
  send<void>(p, Sel("resetAnimations"));
  EXPECT_EQ(describeAlertContent(p), kFace) << "passcode entry is for good";
  EXPECT_FALSE(send<BOOL>(p, Sel("isAnimating")));
}

TEST_F(Prompt, MissingSettingsBundleStillGivesAWorkingPrompt) {
  ASSERT_NO_FATAL_FAILURE(
      start({"9.3", "touchid", sim::BundlePlace::kNone}, {{"IconColor", Value::integer(1)}}));
  id p = shown("com.quorvan.chatter");
  EXPECT_EQ(
      describeAlertContent(p),
      "image none alpha 1 [MyAnimation], image none alpha 1 [MyAnimation2], image none alpha 0, "
      "label \"Chatter\" alpha 1, passcode field alpha 0");
  ASSERT_TRUE(tap(p, 1));
  EXPECT_TRUE(sim::frameworks::promptInfo()["passcodeField"].asBool());
  EXPECT_TRUE(sim::frameworks::keyboardVisible());
}

TEST_F(Prompt, ImagesComeFromTheBootstrapBundleWhereItExists) {
  ASSERT_NO_FATAL_FAILURE(
      start({"10.3", "touchid", sim::BundlePlace::kBoth}, {{"IconColor", Value::integer(0)}}));
  id p = shown();
  for (const char* property : {"circle", "thumb", "thumbRed"}) {
    std::string path = sim::frameworks::imagePathOf(send<id>(view(p, property), Sel("image")));
    EXPECT_EQ(path.rfind("/bootstrap/Library/PreferenceBundles/KavelinPrefs.bundle/", 0), 0u)
        << property << ": " << path;
  }
  dismiss(p);
  ASSERT_TRUE(sim::installSettingsBundle(root_, sim::BundlePlace::kLibrary));
  p = shown();
  std::string path = sim::frameworks::imagePathOf(send<id>(view(p, "circle"), Sel("image")));
  EXPECT_EQ(path.rfind("/Library/PreferenceBundles/KavelinPrefs.bundle/", 0), 0u) << path;
}

// ---- The item line ----

TEST_F(Prompt, ItemLineNamesTheItem) {
  ASSERT_NO_FATAL_FAILURE(start({}, {{"IconColor", Value::integer(2)}}));
  struct Case {
    const char* item;
    const char* line;        // "" for no line
    const char* storedBack;  // inRestrictTitle afterwards
  };
  const Case kCases[] = {
      {"com.quorvan.notesplus", "Notes Plus", "com.quorvan.notesplus"},
      {"Wi-Fi", "Wi-Fi", "Wi-Fi"},
      {"Notes (LockScreen)", "Notes\n(LockScreen)", "Notes"},
      {"com.apple.MobileSMS (LockScreen)", "Messages\n(LockScreen)", "com.apple.MobileSMS"},
      {nullptr, "", ""},
  };
  for (const auto& c : kCases) {
    std::string name = c.item ? c.item : "(none)";
    id p = shown(c.item);
    id label = view(p, "textLabel");
    EXPECT_EQ(sim::frameworks::promptInfo()["title"].asString(), c.line) << name;
    EXPECT_EQ(platform::toString(view(p, "inRestrictTitle")), c.storedBack) << name;
    if (*c.line == '\0') {
      EXPECT_EQ(label, nullptr) << name;
      dismiss(p);
      continue;
    }
    bool twoLines = std::string(c.line).find('\n') != std::string::npos;
    EXPECT_EQ(send<Integer>(label, Sel("numberOfLines")), twoLines ? 2 : 1) << name;
    CGRect frame = frameOf(label);
    EXPECT_EQ(frame.origin.y, 116) << name;
    EXPECT_EQ(frame.size.height, twoLines ? 40 : 20) << name;
    EXPECT_EQ(frame.size.width, frameOf(contentContainer(p)).size.width) << name;
    EXPECT_EQ(send<Integer>(label, Sel("textAlignment")), 1) << name;
    id font = send<id>(label, Sel("font"));
    EXPECT_EQ(send<double>(font, Sel("pointSize")), 17) << name;
    EXPECT_EQ(platform::toString(send<id>(font, Sel("fontName"))), ".SFUIText-Semibold") << name;
    EXPECT_EQ(sim::frameworks::colorHexOf(send<id>(label, Sel("textColor"))), "555555") << name;
    EXPECT_FALSE(send<BOOL>(contentContainer(p), Sel("clipsToBounds")));
    dismiss(p);
  }

  // The title is a copy; with the setting off there is no line.
  id title = sendClass<id>(platform::classNamed("NSMutableString"), Sel("stringWithString:"),
                           str("Wi-Fi"));
  id p = prompt();
  send<void>(p, Sel("setInRestrictTitle:"), title);
  send<void>(title, Sel("appendString:"), str("x"));
  EXPECT_EQ(platform::toString(view(p, "inRestrictTitle")), "Wi-Fi");
  ASSERT_NO_FATAL_FAILURE(settle({{"showProtectedItemName", Value::boolean(false)}}));
  send<void>(p, Sel("show"));
  advance(0);
  EXPECT_EQ(view(p, "textLabel"), nullptr);
}

// ---- The passcode button ----

TEST_F(Prompt, PasscodeButtonFromIOS10) {
  ASSERT_NO_FATAL_FAILURE(start({"10.3"}, {{"IconColor", Value::integer(0)}}));
  passcodeButtonTwice(shown("Wi-Fi"), "\n\n\n\n\n\nPlease enter Kavelin passcode.");
}

TEST_F(Prompt, PasscodeButtonBeforeIOS10WithoutTheItemName) {
  ASSERT_NO_FATAL_FAILURE(start({"9.3"}, {{"IconColor", Value::integer(0)},
                                          {"showProtectedItemName", Value::boolean(false)}}));
  passcodeButtonTwice(shown("Wi-Fi"), "\n\n\n\n\nPlease enter Kavelin passcode.");
}

TEST_F(Prompt, PasscodeButtonOnTheGlyphOfIOS8) {
  ASSERT_NO_FATAL_FAILURE(start({"8.4"}, {{"IconColor", Value::integer(4)}}));
  id p = shown();
  ASSERT_NE(view(p, "glyphView"), nullptr);
  ASSERT_TRUE(tap(p, 1));
  EXPECT_EQ(describeAlertContent(p),
            "glyph style 2 state 0 colors 305a94/8a9bb1 alpha 0, passcode field alpha 1");
}

// ---- States of the ring look ----

TEST_F(Prompt, ScannerErrorAndPasscodeErrorOnTheRing) {
  ASSERT_NO_FATAL_FAILURE(start({"10.3"}, {{"IconColor", Value::integer(1)}}));
  id p = shown();
  id circle = view(p, "circle"), thumb = view(p, "thumb"), thumbRed = view(p, "thumbRed");
  id ghost = view(p, "ghostView"), container = contentContainer(p);
  const double home = frameOf(container).origin.x;
  advance(1);

  // Scanning: the fingerprint shows and stands still, the strip sweeps.
  send<void>(p, Sel("showScanner"));
  EXPECT_TRUE(send<BOOL>(p, Sel("isAnimating")));
  EXPECT_EQ(keys(circle), Keys{"MyAnimation"});
  EXPECT_EQ(keys(thumb), Keys{});
  EXPECT_EQ(layerSpeed(thumb), 0);
  id layer = send<id>(thumb, Sel("layer"));
  EXPECT_DOUBLE_EQ(send<double>(layer, Sel("timeOffset")), CACurrentMediaTime())
      << "frozen where it stood";
  EXPECT_EQ(keys(ghost), Keys{"transform.translation.y"});
  id sweep = send<id>(send<id>(ghost, Sel("layer")), Sel("animationForKey:"),
                      str("transform.translation.y"));
  EXPECT_EQ(platform::realOf(send<id>(sweep, Sel("fromValue"))), 60)
      << "the second sweep took the key";
  EXPECT_TRUE(send<BOOL>(sweep, Sel("autoreverses")));
  EXPECT_EQ(alpha(circle), 1);
  EXPECT_EQ(alpha(thumb), 1);
  EXPECT_EQ(alpha(thumbRed), 0);

  // A failed match: everything stops, then the idle animations come back at
  // full speed with the red fingerprint, and the alert shakes.
  send<void>(p, Sel("killAnimations"));
  EXPECT_FALSE(send<BOOL>(p, Sel("isAnimating")));
  for (id v : {circle, thumb, thumbRed, ghost}) EXPECT_EQ(keys(v), Keys{});
  send<void>(p, Sel("showError"));
  EXPECT_EQ(layerSpeed(thumb), 1);
  EXPECT_EQ(keys(circle), Keys{"MyAnimation"});
  EXPECT_EQ(keys(thumb), Keys{"MyAnimation2"});
  EXPECT_EQ(alpha(thumbRed), 1);
  EXPECT_EQ(frameOf(container).origin.x, home + 10) << "shaken aside";
  advance(0.1);
  EXPECT_EQ(frameOf(container).origin.x, home) << "and back";

  // The next attempt hides the red fingerprint; a reset runs at full speed.
  send<void>(p, Sel("showScanner"));
  EXPECT_EQ(alpha(thumbRed), 0);
  send<void>(p, Sel("resetAnimations"));
  EXPECT_EQ(layerSpeed(thumb), 1);
  EXPECT_EQ(keys(thumb), Keys{"MyAnimation2"});

  // Stripped animations come back.
  send<void>(send<id>(circle, Sel("layer")), Sel("removeAllAnimations"));
  send<void>(p, Sel("reAddAnimations"));
  EXPECT_EQ(keys(circle), Keys{"MyAnimation"});

  // A wrong passcode: passcode entry, shaken, and it stays.
  send<void>(p, Sel("showPasscodeError"));
  EXPECT_EQ(describeAlertContent(p),
            "image circle-black alpha 0, image thumb-white alpha 0, image thumb-red alpha 0, "
            "passcode field alpha 1");
  EXPECT_TRUE(sim::frameworks::keyboardVisible());
  EXPECT_EQ(frameOf(container).origin.x, home + 10);
  advance(0.1);
  EXPECT_EQ(frameOf(container).origin.x, home);
  send<void>(p, Sel("showScanner"));
  send<void>(p, Sel("reAddAnimations"));
  EXPECT_EQ(alpha(circle), 0);
  EXPECT_EQ(keys(circle), Keys{});
}

TEST_F(Prompt, DeferredRepairsRunAfterATenthOfASecond) {
  ASSERT_NO_FATAL_FAILURE(start({"10.3"}, {{"IconColor", Value::integer(0)}}));
  id p = prompt();
  send<void>(p, Sel("show"));
  EXPECT_TRUE(send<BOOL>(p, Sel("viewAppeared")));
  id circle = view(p, "circle");
  advance(0.05);
  send<void>(send<id>(circle, Sel("layer")),
             Sel("removeAllAnimations"));  // the system re-laid it out
  advance(0.049);
  EXPECT_EQ(keys(circle), Keys{});
  advance(0.001);
  EXPECT_EQ(keys(circle), Keys{"MyAnimation"}) << "re-added at 0.1 s";
  dismiss(p);

  // The glyph goes back into the content container.
  ASSERT_NO_FATAL_FAILURE(settle({{"IconColor", Value::integer(3)}}));
  p = prompt();
  send<void>(p, Sel("show"));
  id glyph = view(p, "glyphView");
  send<void>(glyph, Sel("removeFromSuperview"));
  advance(0.099);
  EXPECT_EQ(send<id>(glyph, Sel("superview")), nullptr);
  advance(0.001);
  EXPECT_EQ(send<id>(glyph, Sel("superview")), contentContainer(p));
}

TEST_F(Prompt, ReShowKeepsThePasscodeFaceAndDeallocFreesTheViews) {
  ASSERT_NO_FATAL_FAILURE(start({"11.1"}));
  Retained field;
  {
    platform::AutoreleasePool pool;
    id p = shown();
    ASSERT_TRUE(tap(p, 1));
    dismiss(p);
    send<void>(p, Sel("show"));
    advance(0);
    EXPECT_TRUE(send<BOOL>(p, Sel("wasPasscodeVisible")));
    EXPECT_EQ(describeAlertContent(p),
              "glyph style 2 state 0 colors ffffff/bfbfbf alpha 0, passcode field alpha 1");
    field.reset(view(p, "passcodeField"));
    dismiss(p);
    prompts_.clear();
  }
  advance(1);
  EXPECT_EQ(send<platform::UInteger>(field.get(), Sel("retainCount")), 1u) << "the prompt let go";
}

// ---- Glyph states ----

struct GlyphCase {
  const char* method;
  std::vector<std::string> changes;
};

class GlyphStates : public Prompt {
 protected:
  void check(id p, const std::vector<GlyphCase>& cases) {
    for (const auto& c : cases) {
      EXPECT_EQ(glyphChanges([&] { send<void>(p, Sel(c.method)); }), c.changes) << c.method;
    }
  }
};

// ---- Texts ----

// The room left above the passcode field for the item's name and for the
// larger alert of systems 8 to 11: one line less without each.
TEST(PromptTexts, PaddingByItemNameAndSystem) {
  EXPECT_EQ(newlinePadding(true, true), "\n\n\n\n\n\n");
  EXPECT_EQ(newlinePadding(true, false), "\n\n\n\n\n");
  EXPECT_EQ(newlinePadding(false, true), "\n\n\n\n\n");
  EXPECT_EQ(newlinePadding(false, false), "\n\n\n\n");
}

// ---- The passcode field kept in place ----

// The first digit remembers where the prompt stands; a move while digits are
// typed is undone at once after the platform's typing, and again after its
// own later moves. A prompt that stays put is left alone.
TEST_F(Prompt, TypingKeepsThePromptWhereItStood) {
  ASSERT_NO_FATAL_FAILURE(start({"10.3"}));
  ASSERT_EQ(platform::installRow(
                platform::replaced<&passcodeInsertText>("PSPasscodeField", "-insertText:")),
            platform::InstallStatus::kInstalled);
  ASSERT_EQ(platform::installRow(platform::added<&updateKavelinAlert>(
                "PSPasscodeField", "-updateKavelinAlert", "v@:")),
            platform::InstallStatus::kAdded);
  id p = shown("Messages");
  core::state().kavelinAlert.reset(p);
  ASSERT_TRUE(tap(p, 1));
  id field = view(p, "passcodeField");
  id container = contentContainer(p);
  ASSERT_NE(container, nullptr);
  const double home = frameOf(container).origin.y;
  auto moveBy = [&](double dy) {
    CGRect f = frameOf(container);
    f.origin.y += dy;
    send<void>(container, Sel("setFrame:"), f);
  };
  auto type = [&](const char* digit) { send<void>(field, Sel("insertText:"), str(digit)); };

  type("1");
  EXPECT_EQ(frameOf(container).origin.y, home);
  moveBy(-120);  // the keyboard pushed it up
  type("2");
  EXPECT_EQ(frameOf(container).origin.y, home) << "put back after the typing";
  moveBy(-60);
  advance(0.2);
  EXPECT_EQ(frameOf(container).origin.y, home) << "and after the platform's later moves";
  core::state().kavelinAlert.reset();
}

// ---- Glyph timing ----

// The prompt's glyph and its fingerprint drawing change state in a fifth of
// a second; any other glyph (the lock screen's, Apple Pay's) keeps the
// platform's own timing, and so does every glyph while no prompt exists.
TEST_F(Prompt, OnlyThePromptsGlyphTransitionsFaster) {
  ASSERT_NO_FATAL_FAILURE(start({"10.3"}));
  const char* kMinimum = "-_minimumAnimationDurationForStateTransition";
  ASSERT_EQ(
      platform::installRow(platform::replaced<&glyphMinimumDuration>("PKGlyphView", kMinimum)),
      platform::InstallStatus::kInstalled);
  ASSERT_EQ(platform::installRow(platform::replaced<&fingerprintGlyphMinimumDuration>(
                "PKFingerprintGlyphView", kMinimum)),
            platform::InstallStatus::kInstalled);
  const Sel duration(kMinimum + 1);
  auto fingerprintOf = [](id glyph) {
    return platform::valueForKeyIfPresent(glyph, "fingerprintView");
  };

  id p = shown("Messages");
  id other = send<id>(sendClass<id>(platform::classNamed("PKGlyphView"), Sel("alloc")),
                      Sel("initWithStyle:"), Integer{0});
  Retained keepOther = Retained::adopt(other);
  id glyph = view(p, "glyphView");
  ASSERT_NE(glyph, nullptr);
  ASSERT_NE(fingerprintOf(glyph), nullptr);
  ASSERT_NE(fingerprintOf(other), nullptr);
  const double platformDuration = send<double>(other, duration);
  EXPECT_NE(platformDuration, 0.2);

  core::state().kavelinAlert.reset();
  EXPECT_EQ(send<double>(glyph, duration), platformDuration) << "no prompt: no glyph of its own";
  EXPECT_EQ(send<double>(fingerprintOf(glyph), duration), platformDuration);

  core::state().kavelinAlert.reset(p);
  EXPECT_EQ(send<double>(glyph, duration), 0.2);
  EXPECT_EQ(send<double>(fingerprintOf(glyph), duration), 0.2);
  EXPECT_EQ(send<double>(other, duration), platformDuration);
  EXPECT_EQ(send<double>(fingerprintOf(other), duration), platformDuration);
  core::state().kavelinAlert.reset();
}

TEST_F(GlyphStates, WithoutTheFaceCamera) {
  ASSERT_NO_FATAL_FAILURE(start({"10.3"}, {{"IconColor", Value::integer(3)}}));
  id p = prompt();
  EXPECT_EQ(glyphChanges([&] { send<void>(p, Sel("show")); }), Calls{"state 0 animated"});
  check(p, {{"showScanner", {"state 1"}},
            {"reAddAnimations", {"state 0 animated"}},
            {"resetAnimations", {"state 0 animated"}},
            {"showError", {"state 0 animated"}},
            {"killAnimations", {"state 0 animated"}}});
  send<void>(p, Sel("showScanner"));
  EXPECT_TRUE(send<BOOL>(p, Sel("isAnimating")));
  send<void>(p, Sel("killAnimations"));
  EXPECT_FALSE(send<BOOL>(p, Sel("isAnimating")));
}

TEST_F(GlyphStates, IOS11UsesThePlainSetter) {
  ASSERT_NO_FATAL_FAILURE(start({"11.1"}));
  id p = shown();
  check(p, {{"showScanner", {"state 1"}},
            {"reAddAnimations", {"state 0"}},
            {"resetAnimations", {"state 0"}},
            {"showError", {"state 0"}},
            {"killAnimations", {"state 0 animated"}}});
}

TEST_F(GlyphStates, WithTheFaceCamera) {
  ASSERT_NO_FATAL_FAILURE(start({"11.1", "faceid"}));
  id p = shown();
  id container = contentContainer(p);
  const double home = frameOf(container).origin.x;
  check(p, {{"showScanner", {"state 5"}},
            {"reAddAnimations", {"state 2 animated"}},
            {"resetAnimations", {"state 4 animated"}},
            {"showError", {"state 4 animated"}},
            {"killAnimations", {"state 4 animated"}}});
  EXPECT_EQ(frameOf(container).origin.x, home + 10) << "the error shakes";
  advance(0.1);

  setFurtherGlyphFlag(true);
  check(p, {{"showError", {"state 3 animated"}}});
  EXPECT_EQ(frameOf(container).origin.x, home) << "and nothing else";
  setFurtherGlyphFlag(false);
}

}  // namespace
}  // namespace kv::prompt
