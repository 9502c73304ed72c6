// Tests of what SpringBoard's launch paths hand the methods a guard reads
// but no scenario can look into: the options of open-application requests,
// the apps of workspace requests, the icon view of a force press, and the
// reply blocks that must be answered once.
#include "sim/frameworks/springboard.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/frameworks.h"
#include "sim/frameworks/system.h"
#include "sim/host/profile.h"

namespace kv::sim::frameworks {
namespace {

using platform::Retained;
using platform::Sel;
using platform::send;

// Makes this test process SpringBoard on iOS `version` with its frameworks.
// The system facts are read once per process, so each test runs alone (as
// ctest runs them).
void becomeSpringBoard(const char* version) {
  host::Profile p;
  p.processName = "SpringBoard";
  p.bundleIdentifier = "com.apple.springboard";
  p.osVersion = version;
  p.osVersionString = std::string("Version ") + version;
  p.model = "iPhone";
  p.biometrics = "touchid";
  host::setProfile(p);
  ASSERT_EQ(system().process, "SpringBoard") << "one profile per test process";
  defineFrameworks();
}

// One call of a method, as a guard would find it.
struct Call {
  std::string bundle;
  Retained options;  // the options dictionary
  id reply = nullptr;
  int count = 0;
};
Call gCall;

void catchSystemServiceOpen(id, SEL, id, id request, id completion) {
  gCall.bundle = platform::toString(send<id>(request, Sel("bundleIdentifier")));
  gCall.options.reset(send<id>(send<id>(request, Sel("options")), Sel("dictionary")));
  gCall.reply = completion;
  ++gCall.count;
}
void catchWorkspaceOpen(id, SEL, id, id bundle, id options, id, id result) {
  gCall.bundle = platform::toString(bundle);
  gCall.options.reset(options);
  gCall.reply = result;
  ++gCall.count;
}

void replace(const char* className, const char* selector, IMP imp) {
  Method method = class_getInstanceMethod(platform::classNamed(className), Sel(selector));
  ASSERT_NE(method, nullptr) << className << " " << selector;
  method_setImplementation(method, imp);
}

id option(const char* key) {
  return send<id>(gCall.options.get(), Sel("objectForKey:"), platform::makeString(key));
}

TEST(SpringBoardTest, OpenRequestsOnIOS10CarryTheAppTheirOptionsAndAReply) {
  becomeSpringBoard("10.3");
  platform::AutoreleasePool pool;
  replace("SBMainWorkspace", "systemService:handleOpenApplicationRequest:withCompletion:",
          reinterpret_cast<IMP>(catchSystemServiceOpen));

  requestOpenApplication({"com.apple.MobileSMS", true, "__SBLaunchOriginShortcutItem"});
  ASSERT_EQ(gCall.count, 1);
  EXPECT_EQ(gCall.bundle, "com.apple.MobileSMS");
  EXPECT_TRUE(send<BOOL>(option("__ActivateSuspended"), Sel("boolValue")));
  EXPECT_EQ(platform::toString(option("__LaunchOrigin")), "__SBLaunchOriginShortcutItem");
  ASSERT_NE(gCall.reply, nullptr);

  // A request from no particular origin has none in its options.
  requestOpenApplication({"com.apple.MobileSMS", false, ""});
  EXPECT_FALSE(send<BOOL>(option("__ActivateSuspended"), Sel("boolValue")));
  EXPECT_EQ(option("__LaunchOrigin"), nullptr);
}

// SBWorkspace's guard tells a foreground request by "__ActivateSuspended"
// being there with an intValue other than 1.
TEST(SpringBoardTest, OpenRequestsOnIOS9SayWhetherTheyAreSuspended) {
  becomeSpringBoard("9.3");
  platform::AutoreleasePool pool;
  replace("SBWorkspace", "workspace:handleOpenApplicationRequest:withOptions:origin:withResult:",
          reinterpret_cast<IMP>(catchWorkspaceOpen));
  for (bool suspended : {false, true}) {
    requestOpenApplication({"com.quorvan.chatter", suspended, ""});
    EXPECT_EQ(gCall.bundle, "com.quorvan.chatter");
    id value = option("__ActivateSuspended");
    ASSERT_NE(value, nullptr) << "suspended " << suspended;
    EXPECT_EQ(send<int>(value, Sel("intValue")), suspended ? 1 : 0);
    EXPECT_NE(gCall.reply, nullptr);
  }
}

TEST(SpringBoardTest, WorkspaceRequestsNameTheirApps) {
  becomeSpringBoard("10.1");
  platform::AutoreleasePool pool;
  id app = applicationNamed("com.apple.mobilesafari");
  Retained request = Retained::adopt(newWorkspaceRequest("OpenApplication", app));
  EXPECT_EQ(platform::toString(send<id>(request.get(), Sel("eventLabel"))), "OpenApplication");
  id activating = send<id>(request.get(), Sel("activatingApps"));
  ASSERT_EQ(platform::arrayCount(activating), 1u);
  EXPECT_EQ(platform::arrayObjectAt(activating, 0), app);
  id entities = send<id>(request.get(), Sel("toApplicationSceneEntities"));
  ASSERT_EQ(platform::arrayCount(entities), 1u);
  EXPECT_EQ(send<id>(platform::arrayObjectAt(entities, 0), Sel("application")), app);

  // The switcher's own requests bring no app.
  Retained none = Retained::adopt(newWorkspaceRequest("ActivateSwitcherNoninteractive", nullptr));
  EXPECT_EQ(platform::arrayCount(send<id>(none.get(), Sel("activatingApps"))), 0u);
  EXPECT_EQ(platform::arrayCount(send<id>(none.get(), Sel("toApplicationSceneEntities"))), 0u);
}

// The force-touch guard finds the pressed icon under the icon controller's
// key "_appIconForceTouchIconView", even while the presentation is held back.
TEST(SpringBoardTest, AForcePressedIconIsFoundUnderTheIconControllersKey) {
  becomeSpringBoard("11.1");
  platform::AutoreleasePool pool;
  replace("SBUIIconForceTouchViewController", "presentAnimated:withCompletionHandler:",
          reinterpret_cast<IMP>(+[](id, SEL, BOOL, id) -> BOOL { return 0; }));
  std::string error;
  ASSERT_TRUE(forceTouchIcon("com.quorvan.notesplus", &error)) << error;
  EXPECT_EQ(springBoard().shortcutMenu, "") << "nothing shows while the presentation is held";
  id view = send<id>(sharedOf("SBIconController"), Sel("valueForKey:"),
                     platform::makeString("_appIconForceTouchIconView"));
  ASSERT_NE(view, nullptr);
  id icon = send<id>(view, Sel("icon"));
  EXPECT_EQ(platform::toString(send<id>(icon, Sel("applicationBundleID"))),
            "com.quorvan.notesplus");
}

TEST(SpringBoardTest, ReplyBlocksAnswerOnceAndReportAnyLaterCall) {
  becomeSpringBoard("11.1");
  testing::internal::CaptureStderr();
  {
    ReplyBlock reply("open-app com.example");
    platform::callBlock<void(id)>(reply.get(), id{nullptr});
    platform::callBlock<void(id)>(reply.get(), id{nullptr});
    ReplyBlock failed("url x:y");
    platform::callBlock<void(id)>(failed.get(), platform::makeString("no app"));
  }
  std::string log = testing::internal::GetCapturedStderr();
  EXPECT_NE(log.find("reply open-app com.example\n"), std::string::npos) << log;
  EXPECT_NE(log.find("fault open-app com.example answered again\n"), std::string::npos) << log;
  EXPECT_NE(log.find("reply url x:y failed\n"), std::string::npos) << log;
}

}  // namespace
}  // namespace kv::sim::frameworks
