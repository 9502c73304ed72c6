// The simulated alerts, glyph and passcode field as the Kavelin prompt meets
// them: the delegate order of a button tap on each side of iOS 10, a run-time
// subclass keeping its second button open, the content container of each
// version, system cancellation, glyph transitions on virtual time, and the
// passcode field telling its delegate once per fill.
#include "platform/blocks.h"
#include "platform/classes.h"
#include "platform/retained.h"
#include "tests/sim/ui_test_support.h"

namespace kv::sim::frameworks::testing {
namespace {

using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendClass;
using platform::sendSuper;

Class cls(const char* name) {
  return platform::classNamed(name);
}
id str(const char* s) {
  return platform::makeString(s);
}

std::string visibility(id alert) {
  return send<BOOL>(alert, Sel("isVisible")) ? "shown" : "gone";
}

void presented(id, SEL, id) {
  calls().push_back("present");
}
void clicked(id, SEL, id, Integer i) {
  calls().push_back("clicked " + std::to_string(i));
}
void willDismiss(id, SEL, id alert, Integer i) {
  calls().push_back("will-dismiss " + std::to_string(i) + " " + visibility(alert));
}
void didDismiss(id, SEL, id alert, Integer i) {
  calls().push_back("did-dismiss " + std::to_string(i) + " " + visibility(alert));
}
// Like the coordinator: a cancelled prompt is dismissed without animation.
void cancelled(id, SEL, id alert) {
  calls().push_back("cancel");
  send<void>(alert, Sel("dismissWithClickedButtonIndex:animated:"), Integer{2}, BOOL{0});
}
void entered(id, SEL, id, id text) {
  calls().push_back("entered " + platform::toString(text));
}

// The platform's dismissal hooks, overridden as a run-time subclass does.
BOOL recordPrepare(id self, SEL cmd, Integer i) {
  calls().push_back("prepare " + std::to_string(i));
  return sendSuper<BOOL>(cls("UIAlertView"), self, cmd, i);
}
BOOL recordShouldDismiss(id self, SEL cmd, id item, Integer i) {
  bool own = item == platform::valueForKey(self, "_representedModalItem");
  calls().push_back("should-dismiss " + std::to_string(i) + (own ? " own item" : " other item"));
  return sendSuper<BOOL>(cls("UIAlertView"), self, cmd, item, i);
}
BOOL keepPrepare(id self, SEL cmd, Integer i) {
  return i == 1 ? BOOL{0} : sendSuper<BOOL>(cls("UIAlertView"), self, cmd, i);
}
BOOL keepShouldDismiss(id self, SEL cmd, id item, Integer i) {
  return i == 1 ? BOOL{0} : sendSuper<BOOL>(cls("UIAlertView"), self, cmd, item, i);
}

class Alerts : public ::testing::Test {
 protected:
  void start(const char* version, const char* biometrics = "touchid") {
    ASSERT_NO_FATAL_FAILURE(startDevice(version, biometrics));
    using platform::impOf;
    platform::defineClass("AlertWatcher", "NSObject",
                          {{"didPresentAlertView:", impOf(presented), "v@:@"},
                           {"alertView:clickedButtonAtIndex:", impOf(clicked), "v@:@q"},
                           {"alertView:willDismissWithButtonIndex:", impOf(willDismiss), "v@:@q"},
                           {"alertView:didDismissWithButtonIndex:", impOf(didDismiss), "v@:@q"},
                           {"alertViewCancel:", impOf(cancelled), "v@:@"},
                           {"passcodeField:enteredPasscode:", impOf(entered), "v@:@@"}});
    platform::defineClass(
        "RecordingAlertView", "UIAlertView",
        {{"_prepareToDismissForTappedIndex:", impOf(recordPrepare), "C@:q"},
         {"modalItem:shouldDismissForButtonAtIndex:", impOf(recordShouldDismiss), "C@:@q"}});
    platform::defineClass(
        "KavelinAlertView", "UIAlertView",
        {{"_prepareToDismissForTappedIndex:", impOf(keepPrepare), "C@:q"},
         {"modalItem:shouldDismissForButtonAtIndex:", impOf(keepShouldDismiss), "C@:@q"}});
    watcher_ = Retained::adopt(make("AlertWatcher"));
  }
  // A new alert with Cancel and one other button, delegate the watcher.
  id alert(const char* className, id delegate) {
    id a = send<id>(sendClass<id>(cls(className), Sel("alloc")),
                    Sel("initWithTitle:message:delegate:cancelButtonTitle:otherButtonTitles:"),
                    str("Kavelin"), str("\n\n\n\nPlease authenticate"), delegate, str("Cancel"),
                    str("Enter passcode"), id{nullptr});
    alerts_.push_back(Retained::adopt(a));
    return a;
  }
  id shown(const char* className) {
    id a = alert(className, watcher_.get());
    send<void>(a, Sel("show"));
    return a;
  }
  void tapExpecting(const Calls& expected) {
    id a = shown("RecordingAlertView");
    EXPECT_EQ(calls(), Calls{}) << "the delegate hears of the presentation on the next turn";
    EXPECT_EQ(visibleAlerts(), std::vector<id>{a});
    advance(0);
    std::string error;
    ASSERT_TRUE(tapAlertButton(a, 1, &error)) << error;
    EXPECT_EQ(calls(), expected);
    EXPECT_EQ(visibleAlerts(), std::vector<id>{});
  }
  void secondButtonKeepsThePromptOpen() {
    id prompt = shown("KavelinAlertView");
    advance(0);
    calls().clear();
    std::string error;
    for (int tap = 0; tap < 2; ++tap) {
      ASSERT_TRUE(tapAlertButton(prompt, 1, &error)) << error;
      EXPECT_EQ(calls(), Calls{}) << "tap " << tap;
      EXPECT_TRUE(promptInfo()["visible"].asBool());
    }
    ASSERT_TRUE(tapAlertButton(prompt, 0, &error)) << error;
    EXPECT_EQ(calls(), (Calls{"clicked 0", "will-dismiss 0 shown", "did-dismiss 0 gone"}));
    EXPECT_FALSE(promptInfo()["visible"].asBool());
    EXPECT_FALSE(tapAlertButton(prompt, 0, &error));
  }
  // Both of this version's container paths lead to the view content is added to.
  void containerPathsMeet() {
    id prompt = shown("KavelinAlertView");
    id container = alertContainer(prompt);
    ASSERT_NE(container, nullptr);
    id item = platform::valueForKey(prompt, "_representedModalItem");
    EXPECT_EQ(platform::valueForKey(item, "_representedView"), container);
    bool controller = platform::respondsTo(prompt, Sel("alertController"));
    EXPECT_EQ(controller, atLeast(9));
    if (controller) {
      id view = send<id>(platform::valueForKey(prompt, "alertController"), Sel("view"));
      id content = platform::valueForKey(view, "contentView");
      EXPECT_EQ(send<id>(content, Sel("superview")), container);
      EXPECT_NE(content, container);
    }
    // The prompt's face, built in the turn it is shown, as the prompt builds it.
    auto add = [container](id view) {
      send<void>(container, Sel("addSubview:"), view);
      send<void>(view, Sel("release"));
      return view;
    };
    id label = add(newView("UILabel", CGRect{}));
    send<void>(label, Sel("setText:"), str("Notes Plus"));
    add(newView("UIImageView", CGRect{}));
    add(send<id>(sendClass<id>(cls("PKGlyphView"), Sel("alloc")), Sel("initWithStyle:"),
                 Integer{1}));
    id field = add(send<id>(sendClass<id>(cls("PSPasscodeField"), Sel("alloc")),
                            Sel("initWithNumberOfEntryFields:"), Integer{4}));
    send<void>(field, Sel("setAlpha:"), 0.0);
    const std::string face =
        "image none alpha 1, glyph style 1 state 0 colors 333333/999999 alpha 1, "
        "label \"Notes Plus\" alpha 1, passcode field alpha 0";
    EXPECT_EQ(describeAlertContent(prompt), face);
    EXPECT_EQ(promptInfo()["title"].asString(), "Notes Plus");
    EXPECT_FALSE(promptInfo()["passcodeField"].asBool());

    // The event log shows the face once per turn in which it changed.
    ::testing::internal::CaptureStderr();
    advance(0);
    send<void>(container, Sel("bringSubviewToFront:"), label);
    advance(0);
    send<void>(field, Sel("setAlpha:"), 1.0);
    advance(0);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "[host] prompt KavelinAlertView: " + face + "\n" +
                  "[host] prompt KavelinAlertView: " + face.substr(0, face.size() - 1) + "1\n");
    EXPECT_TRUE(promptInfo()["passcodeField"].asBool());
  }

  platform::AutoreleasePool pool_;
  Retained watcher_;
  std::vector<Retained> alerts_;
};

TEST_F(Alerts, TapFromIOS10AsksTheModalItemThenClicksAndDismisses) {
  start("10.3");
  tapExpecting({"present", "should-dismiss 1 own item", "clicked 1", "will-dismiss 1 shown",
                "did-dismiss 1 gone"});
}

TEST_F(Alerts, TapBeforeIOS10AsksPrepareToDismiss) {
  start("9.3");
  tapExpecting({"present", "prepare 1", "clicked 1", "will-dismiss 1 shown", "did-dismiss 1 gone"});
}

TEST_F(Alerts, SecondButtonKeepsThePromptOpenOnIOS11) {
  start("11.1");
  secondButtonKeepsThePromptOpen();
}

TEST_F(Alerts, SecondButtonKeepsThePromptOpenOnIOS8) {
  start("8.4");
  secondButtonKeepsThePromptOpen();
}

TEST_F(Alerts, ContainerOnIOS8IsTheModalItemsView) {
  start("8.4");
  containerPathsMeet();
}

TEST_F(Alerts, ContainerOnIOS9IsTheContentViewsSuperview) {
  start("9.3");
  containerPathsMeet();
}

TEST_F(Alerts, ContainerOnIOS11IsTheContentViewsSuperview) {
  start("11.1");
  containerPathsMeet();
}

TEST_F(Alerts, ButtonsComeFromTheNilTerminatedListAndAfter) {
  start("10.3");
  id a = send<id>(sendClass<id>(cls("UIAlertView"), Sel("alloc")),
                  Sel("initWithTitle:message:delegate:cancelButtonTitle:otherButtonTitles:"),
                  str("T"), str("M"), id{nullptr}, id{nullptr}, str("A"), str("B"), id{nullptr});
  alerts_.push_back(Retained::adopt(a));
  EXPECT_EQ(send<Integer>(a, Sel("cancelButtonIndex")), -1);
  EXPECT_EQ(send<Integer>(a, Sel("addButtonWithTitle:"), str("C")), 2);
  EXPECT_EQ(send<Integer>(a, Sel("numberOfButtons")), 3);
  EXPECT_EQ(platform::toString(send<id>(a, Sel("buttonTitleAtIndex:"), Integer{1})), "B");
  send<void>(a, Sel("setBodyText:"), str("changed"));
  EXPECT_EQ(platform::toString(send<id>(a, Sel("message"))), "changed");
  std::string error;
  EXPECT_FALSE(tapAlertButton(a, 0, &error)) << "an alert not shown takes no taps";
}

TEST_F(Alerts, SystemCancelTellsTheDelegateOrDismissesWithCancel) {
  start("10.3");
  id plain = alert("UIAlertView", nullptr);
  send<void>(plain, Sel("show"));
  id prompt = shown("KavelinAlertView");
  EXPECT_EQ(topmostAlert(), prompt);
  EXPECT_EQ(topmostAlert("RecordingAlertView"), nullptr);
  advance(0);
  calls().clear();
  cancelAllAlerts();
  EXPECT_EQ(calls(), (Calls{"cancel", "will-dismiss 2 shown", "did-dismiss 2 gone"}));
  EXPECT_FALSE(send<BOOL>(plain, Sel("isVisible"))) << "without a delegate: the cancel button";
  EXPECT_EQ(visibleAlerts(), std::vector<id>{});
}

TEST_F(Alerts, TypingNeedsThePromptsFieldShowingWithTheKeyboardUp) {
  start("11.1");
  std::string error;
  EXPECT_FALSE(typePromptPasscode("1234", &error));
  EXPECT_EQ(error, "no Kavelin prompt is visible");
  id prompt = shown("KavelinAlertView");
  id field = send<id>(sendClass<id>(cls("PSPasscodeField"), Sel("alloc")),
                      Sel("initWithNumberOfEntryFields:"), Integer{4});
  send<void>(alertContainer(prompt), Sel("addSubview:"), field);
  send<void>(field, Sel("release"));
  send<void>(field, Sel("setDelegate:"), watcher_.get());
  send<void>(field, Sel("setAlpha:"), 0.0);
  EXPECT_FALSE(typePromptPasscode("1234", &error));
  EXPECT_EQ(error, "the prompt's passcode field is not showing");
  send<void>(field, Sel("setAlpha:"), 1.0);
  EXPECT_FALSE(typePromptPasscode("1234", &error));
  EXPECT_EQ(error, "the keyboard is not up for the prompt's passcode field");
  send<BOOL>(field, Sel("becomeFirstResponder"));
  advance(0);
  calls().clear();
  EXPECT_TRUE(typePromptPasscode("1234", &error)) << error;
  EXPECT_EQ(calls(), Calls{"entered 1234"});
  std::string why;
  ASSERT_TRUE(tapAlertButton(prompt, 0, &why)) << why;
  EXPECT_EQ(firstResponder(), nullptr) << "the keyboard goes with the alert";
}

TEST_F(Alerts, PasscodeFieldTellsItsDelegateOncePerFill) {
  start("10.3");
  Retained field = Retained::adopt(send<id>(sendClass<id>(cls("PSPasscodeField"), Sel("alloc")),
                                            Sel("initWithNumberOfEntryFields:"), Integer{4}));
  send<void>(field.get(), Sel("setDelegate:"), watcher_.get());
  auto type = [&](const char* keys) { send<void>(field.get(), Sel("insertText:"), str(keys)); };
  auto text = [&] { return platform::toString(send<id>(field.get(), Sel("text"))); };
  for (const char* key : {"1", "2", "3"}) type(key);
  EXPECT_EQ(calls(), Calls{});
  type("4");
  type("5");
  EXPECT_EQ(calls(), Calls{"entered 1234"}) << "a full field takes no more keys";
  EXPECT_EQ(text(), "1234");
  send<void>(field.get(), Sel("setText:"), str(""));
  type("98765");
  send<void>(field.get(), Sel("deleteBackward"));
  EXPECT_EQ(text(), "987");
  type("5");
  EXPECT_EQ(calls(), (Calls{"entered 1234", "entered 9876", "entered 9875"}));
}

double quickTransition(id, SEL) {
  return 0.1;
}
double slowDrawing(id, SEL) {
  return 0.2;
}

TEST_F(Alerts, GlyphCompletesAnimatedChangesAfterItsOwnMinimumDuration) {
  start("11.1");
  Retained glyph = Retained::adopt(
      send<id>(sendClass<id>(cls("PKGlyphView"), Sel("alloc")), Sel("initWithStyle:"), Integer{2}));
  EXPECT_EQ(colorHexOf(send<id>(glyph.get(), Sel("primaryColor"))),
            colorHexOf(
                send<id>(glyph.get(), Sel("_primaryColorForStyle:mode:"), Integer{2}, Integer{0})));
  EXPECT_NE(
      colorHexOf(send<id>(glyph.get(), Sel("_primaryColorForStyle:mode:"), Integer{1}, Integer{0})),
      colorHexOf(send<id>(glyph.get(), Sel("primaryColor"))));
  auto change = [&](Integer state, bool animated) {
    id completion = platform::asObject(^{
      calls().push_back("done " + std::to_string(state) + " at " +
                        std::to_string(std::lround(elapsed() * 1000)) + "ms");
    });
    send<void>(glyph.get(), Sel("setState:animated:completionHandler:"), state, BOOL{animated},
               completion);
  };
  change(1, false);
  EXPECT_EQ(calls(), Calls{"done 1 at 0ms"});
  change(0, true);
  EXPECT_EQ(send<Integer>(glyph.get(), Sel("state")), 0) << "the state changes at once";
  advance(1);
  // The drawing view's time counts, then a replacement of the glyph's own.
  method_setImplementation(
      class_getInstanceMethod(cls("PKFingerprintGlyphView"),
                              Sel("_minimumAnimationDurationForStateTransition")),
      host::imp(slowDrawing));
  change(4, true);
  advance(1);
  method_setImplementation(
      class_getInstanceMethod(cls("PKGlyphView"),
                              Sel("_minimumAnimationDurationForStateTransition")),
      host::imp(quickTransition));
  change(5, true);
  advance(1);
  EXPECT_EQ(calls(),
            (Calls{"done 1 at 0ms", "done 0 at 500ms", "done 4 at 1200ms", "done 5 at 2100ms"}));
  send<void>(glyph.get(), Sel("setState:"), Integer{3});
  EXPECT_EQ(send<Integer>(glyph.get(), Sel("state")), 3);
}

}  // namespace
}  // namespace kv::sim::frameworks::testing
