// System actions on the home screen and around it: Siri (SBAssistantController,
// SBUIPluginHost through iOS 9), the SIM's lock-entry alert with its long
// numeric entry field, icon editing and close boxes on SBIconController, and
// web bookmarks (SBBookmarkIcon). The "siri", "sim-locked", "sim-pin",
// "passcode-entry", "edit-icons", "delete-icon" and "tap-bookmark" actions.
#include <string>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/actions.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

const Sel kActivatePlugin("activatePluginForEvent:eventSource:context:");
const Sel kAlloc("alloc");
const Sel kAlertInit("initWithTitle:message:delegate:cancelButtonTitle:otherButtonTitles:");
const Sel kShow("show");
const Sel kAddSubview("addSubview:");
const Sel kDismiss("dismissWithClickedButtonIndex:animated:");
const Sel kOkButtonHit("_okButtonHit");
const Sel kSetIsEditing("setIsEditing:");
const Sel kSetIsEditingWithFeedback("setIsEditing:withFeedbackBehavior:");
const Sel kIconCloseBoxTapped("iconCloseBoxTapped:");
const Sel kIconTapped("iconTapped:");
const Sel kBookmarkLaunch("launchFromLocation:context:activationSettings:actions:");
const Sel kIcon("icon");
const Sel kApplicationBundleID("applicationBundleID");

// Siri is asked for by holding the home button.
constexpr int kHomeButtonEvent = 1;
constexpr int kHomeButtonSource = 1;

// A web bookmark on the home screen: its name and the page it opens.
struct WebClip {
  const char* name;
  const char* url;
};
constexpr WebClip kWebClips[] = {{"Quorvan News", "https://news.quorvan.net"}};
constexpr const char* kSafari = "com.apple.mobilesafari";

bool gSiriShows = false;
bool gEditing = false;
// The SIM's lock-entry alert while it shows, and its entry field.
Retained& simAlert() {
  static auto* alert = new Retained();
  return *alert;
}
Retained& simField() {
  static auto* field = new Retained();
  return *field;
}

// ---- Siri ----

BOOL activatePlugin(id, SEL, int event, int source, void*) {
  if (!gSiriShows) {
    gSiriShows = true;
    host::logEvent("siri", "shows (event " + std::to_string(event) + ", source " +
                               std::to_string(source) + ")");
  }
  return 1;
}
BOOL isPluginVisible(id, SEL) {
  return gSiriShows ? 1 : 0;
}

// siri: the home button is held; SpringBoard asks the assistant.
Value siriAction(const host::ActionRequest&, std::string* error) {
  if (!springBoard().screenOn) {
    *error = "the screen is off: the home button wakes it first";
    return {};
  }
  host::logEvent("button", "home held");
  send<BOOL>(sharedOf("SBAssistantController"), kActivatePlugin, kHomeButtonEvent,
             kHomeButtonSource, static_cast<void*>(nullptr));
  return {};
}

// ---- The SIM's lock entry ----

struct EntryState {
  std::string text;
};

id lockEntryAlert(id, SEL) {
  return simAlert().get();
}
// The alert went (its Cancel, or the PIN accepted): the manager forgets it.
void simAlertDismissed(id, SEL, id alert, long) {
  if (alert == simAlert().get()) {
    simAlert().reset();
    simField().reset();
  }
}

// The OK key of a long numeric entry: in the SIM's alert it unlocks the SIM;
// elsewhere the entry only ends.
void okButtonHit(id self, SEL) {
  const std::string& digits = stateOf<EntryState>(self).text;
  if (self != simField().get()) {
    host::logEvent("passcode-entry", "OK with " + std::to_string(digits.size()) + " digits");
    return;
  }
  host::logEvent("sim", "unlocked with a PIN of " + std::to_string(digits.size()) + " digits");
  send<void>(simAlert().get(), kDismiss, 1L, BOOL{1});
}

// sim-locked: the SIM asks for its PIN: the lock-entry alert shows.
Value simLockedAction(const host::ActionRequest&, std::string* error) {
  if (simAlert()) {
    *error = "the SIM's lock-entry alert shows already";
    return {};
  }
  id manager = sharedOf("SBSIMLockManager");
  id alert =
      send<id>(send<id>(platform::asId(platform::classNamed("UIAlertView")), kAlloc), kAlertInit,
               platform::makeString("SIM PIN"), platform::makeString("Enter the SIM PIN"), manager,
               platform::makeString("Cancel"), id{nullptr});
  simAlert() = Retained::adopt(alert);
  simField() =
      Retained::adopt(newView("SBUILongNumericPasscodeEntryField", CGRect{{0, 0}, {240, 44}}));
  send<void>(alertContainer(alert), kAddSubview, simField().get());
  host::logEvent("sim", "locked: asks for its PIN");
  send<void>(alert, kShow);
  return {};
}

// sim-pin DIGITS: the PIN typed into the lock-entry alert, then OK.
Value simPinAction(const host::ActionRequest& request, std::string* error) {
  const std::string& digits = request.args[0];
  if (!simField()) {
    *error = "no SIM lock-entry alert shows";
    return {};
  }
  if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) {
    *error = "a SIM PIN is digits: " + digits;
    return {};
  }
  Retained field = simField();
  stateOf<EntryState>(field.get()).text = digits;
  send<void>(field.get(), kOkButtonHit);
  return {};
}

// passcode-entry DIGITS: a long numeric entry outside the SIM's alert (a
// custom numeric passcode) takes DIGITS and its OK key.
Value passcodeEntryAction(const host::ActionRequest& request, std::string* error) {
  const std::string& digits = request.args[0];
  if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) {
    *error = "a numeric entry takes digits: " + digits;
    return {};
  }
  static auto* field = new Retained(
      Retained::adopt(newView("SBUILongNumericPasscodeEntryField", CGRect{{0, 0}, {240, 44}})));
  stateOf<EntryState>(field->get()).text = digits;
  send<void>(field->get(), kOkButtonHit);
  return {};
}

// ---- Icon editing ----

BOOL isEditing(id, SEL) {
  return gEditing ? 1 : 0;
}
void setEditing(bool editing) {
  if (gEditing == editing) return;
  gEditing = editing;
  host::logEvent("icons", editing ? "editing" : "editing ended");
}
void setIsEditing(id, SEL, BOOL editing) {
  setEditing(editing != 0);
}
void setIsEditingWithFeedback(id, SEL, BOOL editing, id) {
  setEditing(editing != 0);
}
// A close box deletes the app of its icon.
void iconCloseBoxTapped(id, SEL, id iconView) {
  std::string bundle =
      platform::toString(send<id>(send<id>(iconView, kIcon), kApplicationBundleID));
  if (removeAppIcon(bundle)) host::logEvent("icons", "deleted " + bundle);
}

bool homeScreenFree(std::string* error) {
  if (springBoard().locked || !springBoard().screenOn || springBoard().front != "home") {
    *error = "the home screen does not show";
    return false;
  }
  return true;
}

// edit-icons: a long press on an icon of the home screen.
Value editIconsAction(const host::ActionRequest&, std::string* error) {
  if (!homeScreenFree(error) || alertTakesTouch("long press")) return {};
  host::logEvent("icons", "long press");
  id icons = sharedOf("SBIconController");
  if (platform::respondsTo(icons, kSetIsEditingWithFeedback)) {
    send<void>(icons, kSetIsEditingWithFeedback, BOOL{1}, id{nullptr});
  } else {
    send<void>(icons, kSetIsEditing, BOOL{1});
  }
  return {};
}

// delete-icon BUNDLE-ID: the close box of the app's icon, in editing mode.
// The user's own apps have one; the system's do not.
Value deleteIconAction(const host::ActionRequest& request, std::string* error) {
  const std::string& bundle = request.args[0];
  if (!gEditing) {
    *error = "no close boxes: the icons are not in editing mode";
    return {};
  }
  if (appIconNamed(bundle) == nullptr || bundle.rfind("com.apple.", 0) == 0) {
    *error = "no close box on an icon of " + bundle;
    return {};
  }
  if (alertTakesTouch("close box of " + bundle)) return {};
  send<void>(sharedOf("SBIconController"), kIconCloseBoxTapped, iconViewNamed(bundle));
  return {};
}

// ---- Web bookmarks ----

struct BookmarkState {
  std::string name;
  std::string url;
};

std::vector<Retained>& bookmarkIcons() {
  static auto* icons = new std::vector<Retained>();
  return *icons;
}

id bookmarkName(id self, SEL) {
  return platform::makeString(stateOf<BookmarkState>(self).name);
}
id bookmarkNameForLocation(id self, SEL cmd, long) {
  return bookmarkName(self, cmd);
}
// The page opens in Safari.
void bookmarkLaunch(id self, SEL, long, id, id, id) {
  host::logEvent("bookmark",
                 stateOf<BookmarkState>(self).name + " opens " + stateOf<BookmarkState>(self).url);
  activate(applicationNamed(kSafari), "LaunchFromBookmark");
}

// tap-bookmark NAME: a web bookmark's icon on the home screen.
Value tapBookmarkAction(const host::ActionRequest& request, std::string* error) {
  if (!homeScreenFree(error) || alertTakesTouch("tap-bookmark " + request.args[0])) return {};
  for (auto& icon : bookmarkIcons()) {
    if (stateOf<BookmarkState>(icon.get()).name == request.args[0]) {
      send<void>(sharedOf("SBIconController"), kIconTapped, icon.get());
      return {};
    }
  }
  *error = "no bookmark named " + request.args[0] + " on the home screen";
  return {};
}

}  // namespace

bool closeSiri() {
  if (!gSiriShows) return false;
  gSiriShows = false;
  host::logEvent("siri", "dismissed");
  return true;
}

bool endIconEditing() {
  if (!gEditing) return false;
  send<void>(sharedOf("SBIconController"), kSetIsEditing, BOOL{0});
  return true;
}

bool launchBookmarkIcon(id icon) {
  if (!hasState<BookmarkState>(icon)) return false;
  if (platform::respondsTo(icon, kBookmarkLaunch)) {
    send<void>(icon, kBookmarkLaunch, 0L, id{nullptr}, id{nullptr}, id{nullptr});
  }
  return true;
}

void addIconEditing(ClassBuilder& iconController) {
  iconController.instance("isEditing", imp(isEditing), "C@:");
  addCatalogued(iconController, "-setIsEditing:", imp(setIsEditing));
  addCatalogued(iconController,
                "-setIsEditing:withFeedbackBehavior:", imp(setIsEditingWithFeedback));
  addCatalogued(iconController, "-iconCloseBoxTapped:", imp(iconCloseBoxTapped));
}

void defineSpringBoardSystem() {
  ClassBuilder pluginHost("SBUIPluginHost", "NSObject");
  addCatalogued(pluginHost, "-activatePluginForEvent:eventSource:context:", imp(activatePlugin));
  pluginHost.build();
  ClassBuilder assistant("SBAssistantController", "SBUIPluginHost");
  assistant.classMethod("sharedInstance", imp(sharedInstanceOf), "@@:")
      .instance("isPluginVisible", imp(isPluginVisible), "C@:");
  addCatalogued(assistant, "-activatePluginForEvent:eventSource:context:", imp(activatePlugin));
  assistant.build();

  ClassBuilder("SBSIMLockManager", "NSObject")
      .classMethod("sharedInstance", imp(sharedInstanceOf), "@@:")
      .instance("lockEntryAlert", imp(lockEntryAlert), "@@:")
      .instance("alertView:didDismissWithButtonIndex:", imp(simAlertDismissed), "v@:@q")
      .build();
  ClassBuilder("SBUIPasscodeEntryField", "UIView").build();
  ClassBuilder field("SBUILongNumericPasscodeEntryField", "SBUIPasscodeEntryField");
  addCatalogued(field, "-_okButtonHit", imp(okButtonHit));
  field.build();

  ClassBuilder bookmark("SBBookmarkIcon", "SBIcon");
  bookmark.instance("displayName", imp(bookmarkName), "@@:");
  addCatalogued(bookmark, "-displayNameForLocation:", imp(bookmarkNameForLocation));
  addCatalogued(bookmark,
                "-launchFromLocation:context:activationSettings:actions:", imp(bookmarkLaunch));
  bookmark.build();
  for (const auto& clip : kWebClips) {
    id icon = host::newObject(platform::classNamed("SBBookmarkIcon"));
    stateOf<BookmarkState>(icon) = {clip.name, clip.url};
    bookmarkIcons().push_back(Retained::adopt(icon));
  }

  host::registerAction("siri", siriAction);
  host::registerAction("sim-locked", simLockedAction);
  host::registerAction("sim-pin", simPinAction);
  host::registerAction("passcode-entry", passcodeEntryAction);
  host::registerAction("edit-icons", editIconsAction);
  host::registerAction("delete-icon", deleteIconAction);
  host::registerAction("tap-bookmark", tapBookmarkAction);
  host::registerQuery("siri",
                      [](const std::vector<std::string>&) { return Value::boolean(gSiriShows); });
  host::registerQuery("editing",
                      [](const std::vector<std::string>&) { return Value::boolean(gEditing); });
}

}  // namespace kv::sim::frameworks
