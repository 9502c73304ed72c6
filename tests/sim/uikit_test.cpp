// The simulated UIKit: block animations on virtual time, the keyboard that a
// text-input first responder brings, images read from the device, the view
// hierarchy, layer animations, navigation appearance order, the application.
#include <cmath>
#include <filesystem>
#include <fstream>

#include "platform/blocks.h"
#include "platform/retained.h"
#include "sim/common/device_paths.h"
#include "sim/host/fs_redirect.h"
#include "tests/sim/ui_test_support.h"

namespace kv::sim::frameworks::testing {
namespace {

using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendClass;

Class cls(const char* name) {
  return platform::classNamed(name);
}
id str(const char* s) {
  return platform::makeString(s);
}

std::vector<std::string> keysOf(id layer) {
  return platform::stringListOf(send<id>(layer, Sel("animationKeys"))).value_or(Calls{});
}

class UIKit : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NO_FATAL_FAILURE(startDevice("10.3")); }
  platform::AutoreleasePool pool_;
};

TEST_F(UIKit, AnimationBlocksRunAtOnceAndCompleteAfterTheDuration) {
  Retained view = Retained::adopt(newView("UIView", platform::makeRect(0, 0, 10, 10)));
  {
    id v = view.get();  // the blocks outlive this scope: the platform must copy them
    id fade = platform::asObject(^{
      send<void>(v, Sel("setAlpha:"), 0.0);
    });
    id done = platform::asObject(^(BOOL finished) {
      calls().push_back(finished ? "finished" : "cut short");
    });
    id hide = platform::asObject(^{
      send<void>(v, Sel("setHidden:"), BOOL{1});
    });
    sendClass<void>(cls("UIView"), Sel("animateWithDuration:animations:completion:"), 0.3, fade,
                    done);
    sendClass<void>(cls("UIView"), Sel("animateWithDuration:animations:"), 0.1, hide);
  }
  EXPECT_EQ(send<double>(view.get(), Sel("alpha")), 0.0);
  EXPECT_TRUE(send<BOOL>(view.get(), Sel("isHidden")));
  advance(0.29);
  EXPECT_EQ(calls(), Calls{}) << "the completion waits for the animation";
  advance(0.01);
  EXPECT_EQ(calls(), Calls{"finished"});
}

void keyboardNote(id, SEL, id note) {
  calls().push_back(platform::toString(send<id>(note, Sel("name"))));
  id frame =
      platform::objectForKey(send<id>(note, Sel("userInfo")), "UIKeyboardFrameEndUserInfoKey");
  if (frame == nullptr) calls().push_back("(no keyboard frame)");
}

TEST_F(UIKit, TextInputFirstResponderBringsAndTakesTheKeyboard) {
  id observer = platform::asId(host::ClassBuilder("KeyboardWatcher", "NSObject")
                                   .classMethod("note:", host::imp(keyboardNote), "v@:@")
                                   .build());
  id center = sendClass<id>(cls("NSNotificationCenter"), Sel("defaultCenter"));
  for (const char* name : {"UIKeyboardWillShowNotification", "UIKeyboardDidShowNotification",
                           "UIKeyboardWillHideNotification", "UIKeyboardDidHideNotification"}) {
    send<void>(center, Sel("addObserver:selector:name:object:"), observer, Sel("note:"), str(name),
               id{nullptr});
  }
  Retained plain = Retained::adopt(newView("UIView", CGRect{}));
  EXPECT_FALSE(send<BOOL>(plain.get(), Sel("becomeFirstResponder")));
  Retained first = Retained::adopt(send<id>(sendClass<id>(cls("PSPasscodeField"), Sel("alloc")),
                                            Sel("initWithNumberOfEntryFields:"), 4L));
  Retained second = Retained::adopt(send<id>(sendClass<id>(cls("PSPasscodeField"), Sel("alloc")),
                                             Sel("initWithNumberOfEntryFields:"), 6L));
  EXPECT_EQ(calls(), Calls{});

  EXPECT_TRUE(send<BOOL>(first.get(), Sel("becomeFirstResponder")));
  EXPECT_EQ(calls(), (Calls{"UIKeyboardWillShowNotification", "UIKeyboardDidShowNotification"}));
  EXPECT_TRUE(keyboardVisible());

  calls().clear();
  EXPECT_TRUE(send<BOOL>(second.get(), Sel("becomeFirstResponder")));
  EXPECT_EQ(calls(), Calls{}) << "the keyboard stays up from one field to the next";
  EXPECT_FALSE(send<BOOL>(first.get(), Sel("isFirstResponder")));
  EXPECT_EQ(firstResponder(), second.get());

  EXPECT_TRUE(send<BOOL>(first.get(), Sel("resignFirstResponder")));
  EXPECT_EQ(calls(), Calls{}) << "resigning what is not first responder changes nothing";
  EXPECT_TRUE(send<BOOL>(second.get(), Sel("resignFirstResponder")));
  EXPECT_EQ(calls(), (Calls{"UIKeyboardWillHideNotification", "UIKeyboardDidHideNotification"}));
  EXPECT_EQ(firstResponder(), nullptr);
  EXPECT_FALSE(keyboardVisible());
  send<void>(center, Sel("removeObserver:"), observer);
}

TEST_F(UIKit, ImagesLoadOnlyFromFilesThatExistOnTheDevice) {
  char root[] = "/tmp/kv-ui-XXXXXX";
  ASSERT_NE(mkdtemp(root), nullptr);
  setDeviceRoot(root);
  const std::string bundle = "/Library/PreferenceBundles/KavelinPrefs.bundle";
  std::filesystem::create_directories(mapDevicePath(root, bundle));
  // A PNG header of a 1 by 2 pixel image: enough for its name and size.
  const unsigned char png[] = {0x89, 'P', 'N', 'G', 0x0d, 0x0a, 0x1a, 0x0a, 0, 0, 0, 13,
                               'I',  'H', 'D', 'R', 0,    0,    0,    1,    0, 0, 0, 2};
  std::ofstream(mapDevicePath(root, bundle + "/circle-white@2x.png"), std::ios::binary)
      .write(reinterpret_cast<const char*>(png), sizeof png);
  std::ofstream(mapDevicePath(root, bundle + "/notes.png")) << "not an image";

  auto fromFile = [](const std::string& path) {
    return sendClass<id>(cls("UIImage"), Sel("imageWithContentsOfFile:"),
                         platform::makeString(path));
  };
  EXPECT_EQ(fromFile(bundle + "/thumb-red.png"), nullptr);
  EXPECT_EQ(fromFile(bundle + "/notes.png"), nullptr) << "a file that is no image loads nothing";
  id image = fromFile(bundle + "/circle-white@2x.png");
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(imageNameOf(image), "circle-white");
  EXPECT_EQ(imagePathOf(image), bundle + "/circle-white@2x.png");
  CGSize size = send<CGSize>(image, Sel("size"));
  EXPECT_EQ(size.width, 0.5);
  EXPECT_EQ(size.height, 1.0);

  id prefs = sendClass<id>(cls("NSBundle"), Sel("bundleWithPath:"), platform::makeString(bundle));
  auto named = [prefs](const char* name) {
    return sendClass<id>(cls("UIImage"), Sel("imageNamed:inBundle:compatibleWithTraitCollection:"),
                         str(name), prefs, id{nullptr});
  };
  EXPECT_EQ(imageNameOf(named("circle-white")), "circle-white");
  EXPECT_EQ(named("thumb-red"), nullptr);
  EXPECT_EQ(sendClass<id>(cls("UIImage"), Sel("imageNamed:"), str("circle-white")), nullptr)
      << "the main bundle has no such image";
  setDeviceRoot("");
  std::filesystem::remove_all(root);
}

TEST_F(UIKit, SubviewsMoveBetweenParentsAndKeepTheirOrder) {
  Retained parent = Retained::adopt(newView("UIView", CGRect{}));
  Retained a = Retained::adopt(newView("UIView", CGRect{}));
  Retained b = Retained::adopt(newView("UILabel", CGRect{}));
  Retained c = Retained::adopt(newView("UIImageView", CGRect{}));
  send<void>(parent.get(), Sel("addSubview:"), a.get());
  send<void>(parent.get(), Sel("addSubview:"), b.get());
  send<void>(parent.get(), Sel("insertSubview:aboveSubview:"), c.get(), a.get());
  EXPECT_EQ(subviewsOf(parent.get()), (std::vector<id>{a.get(), c.get(), b.get()}));
  send<void>(parent.get(), Sel("bringSubviewToFront:"), a.get());
  EXPECT_EQ(subviewsOf(parent.get()), (std::vector<id>{c.get(), b.get(), a.get()}));
  EXPECT_EQ(findSubview(parent.get(), "UILabel"), b.get());

  Retained window = Retained::adopt(newView("UIWindow", CGRect{}));
  {
    Retained other = Retained::adopt(newView("UIView", CGRect{}));
    send<void>(window.get(), Sel("addSubview:"), other.get());
    send<void>(other.get(), Sel("addSubview:"), b.get());
    EXPECT_EQ(subviewsOf(parent.get()), (std::vector<id>{c.get(), a.get()}));
    EXPECT_EQ(send<id>(b.get(), Sel("window")), window.get());
    send<void>(other.get(), Sel("removeFromSuperview"));
  }
  EXPECT_EQ(send<id>(b.get(), Sel("superview")), nullptr) << "a gone superview leaves no pointer";
  EXPECT_EQ(send<id>(b.get(), Sel("window")), nullptr);

  send<void>(a.get(), Sel("removeFromSuperview"));
  EXPECT_EQ(subviewsOf(parent.get()), std::vector<id>{c.get()});
  EXPECT_EQ(send<id>(a.get(), Sel("superview")), nullptr);
  EXPECT_EQ(platform::arrayCount(send<id>(parent.get(), Sel("subviews"))), 1u);
}

void tapped(id, SEL, id recognizer) {
  calls().push_back("tapped in state " + std::to_string(send<long>(recognizer, Sel("state"))));
}

TEST_F(UIKit, GestureRecognizersActOnTheirTargetsAndOutliveTheirView) {
  id target = platform::asId(host::ClassBuilder("TapTarget", "NSObject")
                                 .classMethod("tapped:", host::imp(tapped), "v@:@")
                                 .build());
  Retained tap =
      Retained::adopt(send<id>(sendClass<id>(cls("UITapGestureRecognizer"), Sel("alloc")),
                               Sel("initWithTarget:action:"), target, Sel("tapped:")));
  {
    Retained view = Retained::adopt(newView("UIImageView", CGRect{}));
    send<void>(view.get(), Sel("addGestureRecognizer:"), tap.get());
    EXPECT_EQ(send<id>(tap.get(), Sel("view")), view.get());
    recognizeGesture(tap.get());
    EXPECT_EQ(calls(), Calls{"tapped in state 3"});
  }
  EXPECT_EQ(send<id>(tap.get(), Sel("view")), nullptr) << "the gone view is forgotten";
  send<void>(tap.get(), Sel("setEnabled:"), BOOL{0});
  recognizeGesture(tap.get());
  EXPECT_EQ(calls().size(), 1u) << "a disabled recognizer recognises nothing";
}

TEST_F(UIKit, LayersKeepCopiesOfAnimationsAndFiniteOnesEnd) {
  Retained view = Retained::adopt(newView("UIView", CGRect{}));
  id layer = send<id>(view.get(), Sel("layer"));
  EXPECT_EQ(send<id>(layer, Sel("animationKeys")), nullptr);
  auto animation = [](const char* keyPath, double duration, float repeat) {
    id a = sendClass<id>(cls("CABasicAnimation"), Sel("animationWithKeyPath:"), str(keyPath));
    send<void>(a, Sel("setDuration:"), duration);
    send<void>(a, Sel("setRepeatCount:"), repeat);
    return a;
  };
  id turning = animation("transform.rotation.z", 7.0, HUGE_VALF);
  send<void>(layer, Sel("addAnimation:forKey:"), turning, str("MyAnimation"));
  send<void>(layer, Sel("addAnimation:forKey:"), animation("opacity", 0.5, 1), str("pulse"));
  send<void>(turning, Sel("setDuration:"), 1.0);
  id kept = send<id>(layer, Sel("animationForKey:"), str("MyAnimation"));
  EXPECT_NE(kept, turning);
  EXPECT_EQ(send<double>(kept, Sel("duration")), 7.0) << "the layer runs what was added";
  EXPECT_EQ(keysOf(layer), (Calls{"MyAnimation", "pulse"}));

  advance(0.5);
  EXPECT_EQ(keysOf(layer), Calls{"MyAnimation"}) << "a finite animation ends; a forever one stays";
  send<void>(layer, Sel("addAnimation:forKey:"), animation("opacity", 0.8, 1), str("pulse"));
  advance(0.4);
  send<void>(layer, Sel("addAnimation:forKey:"), animation("opacity", 0.8, 2), str("pulse"));
  advance(0.4);
  EXPECT_EQ(keysOf(layer), (Calls{"MyAnimation", "pulse"})) << "the replaced one's end is not its";
  advance(1.2);
  EXPECT_EQ(keysOf(layer), Calls{"MyAnimation"});

  // Pausing a layer: its local time stands at the moment of the pause.
  double paused =
      send<double>(layer, Sel("convertTime:fromLayer:"), CACurrentMediaTime(), id{nullptr});
  EXPECT_EQ(paused, CACurrentMediaTime());
  send<void>(layer, Sel("setSpeed:"), 0.0f);
  send<void>(layer, Sel("setTimeOffset:"), paused);
  advance(3);
  EXPECT_EQ(send<double>(layer, Sel("convertTime:fromLayer:"), CACurrentMediaTime(), id{nullptr}),
            paused);
  send<void>(layer, Sel("removeAllAnimations"));
  EXPECT_EQ(send<id>(layer, Sel("animationKeys")), nullptr);
}

void recordAppearance(id self, SEL cmd, BOOL) {
  calls().push_back(std::string(platform::selectorName(cmd)) + " " +
                    platform::toString(send<id>(self, Sel("title"))));
}

TEST_F(UIKit, NavigationChangesCallAppearanceInOrder) {
  host::ClassBuilder("RecordingController", "UIViewController")
      .instance("viewWillAppear:", host::imp(recordAppearance), "v@:C")
      .instance("viewDidAppear:", host::imp(recordAppearance), "v@:C")
      .instance("viewWillDisappear:", host::imp(recordAppearance), "v@:C")
      .instance("viewDidDisappear:", host::imp(recordAppearance), "v@:C")
      .build();
  Retained root = Retained::adopt(make("RecordingController"));
  Retained pane = Retained::adopt(make("RecordingController"));
  send<void>(root.get(), Sel("setTitle:"), str("root"));
  send<void>(pane.get(), Sel("setTitle:"), str("pane"));
  Retained nav =
      Retained::adopt(send<id>(sendClass<id>(cls("UINavigationController"), Sel("alloc")),
                               Sel("initWithRootViewController:"), root.get()));
  send<void>(nav.get(), Sel("pushViewController:animated:"), pane.get(), BOOL{1});
  EXPECT_EQ(calls(), (Calls{"viewWillDisappear: root", "viewWillAppear: pane",
                            "viewDidDisappear: root", "viewDidAppear: pane"}));
  EXPECT_EQ(send<id>(pane.get(), Sel("navigationController")), nav.get());
  EXPECT_EQ(send<id>(nav.get(), Sel("topViewController")), pane.get());

  calls().clear();
  EXPECT_EQ(send<id>(nav.get(), Sel("popViewControllerAnimated:"), BOOL{1}), pane.get());
  EXPECT_EQ(calls(), (Calls{"viewWillDisappear: pane", "viewWillAppear: root",
                            "viewDidDisappear: pane", "viewDidAppear: root"}));
  EXPECT_EQ(send<id>(pane.get(), Sel("navigationController")), nullptr);
  EXPECT_EQ(send<id>(nav.get(), Sel("popViewControllerAnimated:"), BOOL{1}), nullptr)
      << "the root stays";
  EXPECT_EQ(platform::arrayCount(send<id>(nav.get(), Sel("viewControllers"))), 1u);
}

TEST_F(UIKit, TheFirstApplicationObjectIsTheSharedOne) {
  host::ClassBuilder("TestBoard", "UIApplication").build();
  id board = make("TestBoard");
  EXPECT_EQ(sendClass<id>(cls("UIApplication"), Sel("sharedApplication")), board);
  EXPECT_EQ(make("UIApplication"), board) << "a second application object is the first";
  id device = sendClass<id>(cls("UIDevice"), Sel("currentDevice"));
  EXPECT_EQ(send<long>(device, Sel("userInterfaceIdiom")), 0);
  EXPECT_EQ(platform::toString(send<id>(device, Sel("systemVersion"))), "10.3");
}

}  // namespace
}  // namespace kv::sim::frameworks::testing
