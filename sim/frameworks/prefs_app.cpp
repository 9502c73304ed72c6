// The Settings application: its application object (root controller, root
// list, URLs, suspension and the resume callbacks), its start, and what a
// scenario does in it (tap a row, flip a switch, go back, reset the home
// screen, leave and come back) and asks of it (the pane on top, a switch).
#include <string>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/prefs.h"
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

struct AppState {
  Retained rootController;  // the navigation panes are pushed on (an iPad's: beside the list)
  Retained rootListController;
  Retained listNavigation;  // an iPad's: the list's own navigation
  Retained window;
  bool suspended = false;
};
AppState& app() {
  static auto* state = new AppState();
  return *state;
}

id application() {
  return platform::sendClass<id>(platform::classNamed("UIApplication"), Sel("sharedApplication"));
}

id appRootController(id, SEL) {
  return app().rootController.get();
}
id appRootListController(id, SEL) {
  return app().rootListController.get();
}
BOOL appIsSuspended(id, SEL) {
  return app().suspended ? 1 : 0;
}
void appDidResume(id, SEL) {
  host::logEvent("settings", "resumed");
}
void appDidResumeFromUnderLock(id, SEL) {
  host::logEvent("settings", "resumed after an unlock");
}

// "prefs:root=WIFI": the root list shows the pane of that row.
void appProcessURL(id, SEL, id url) {
  std::string text = platform::toString(send<id>(url, Sel("absoluteString")));
  host::logEvent("settings", "open " + text);
  auto at = text.find("root=");
  if (at == std::string::npos) return;
  std::string rowId = text.substr(at + 5, text.find('&', at) - at - 5);
  id list = app().rootListController.get();
  id specifier = send<id>(list, Sel("specifierForID:"), platform::makeString(rowId));
  if (specifier != nullptr) send<void>(list, Sel("_showControllerFromSpecifier:"), specifier);
}

id topPane() {
  return send<id>(app().rootController.get(), Sel("topViewController"));
}

// The list showing the row: the pane on top, or on an iPad the list beside it.
id listShowing(const std::string& rowId) {
  for (id list : {topPane(), app().rootListController.get()}) {
    if (!platform::isKindOf(list, "PSListController")) continue;
    if (send<id>(list, Sel("specifierForID:"), platform::makeString(rowId)) != nullptr) return list;
    if (!system().ipad) break;
  }
  return nullptr;
}

std::string paneOnTop() {
  id top = topPane();
  if (top == app().rootListController.get()) return "root";
  std::string row = rowIdOf(platform::sendIfResponds<id>(top, Sel("specifier")));
  return row.empty() ? platform::classNameOf(top) : row;
}

bool tapRow(const std::string& rowId, std::string* error) {
  id list = listShowing(rowId);
  if (list == nullptr) {
    *error = "no row " + rowId + " on the pane showing (" + paneOnTop() + ")";
    return false;
  }
  id rows = send<id>(list, Sel("specifiers"));
  for (platform::UInteger i = 0; i < platform::arrayCount(rows); ++i) {
    if (rowIdOf(platform::arrayObjectAt(rows, i)) != rowId) continue;
    host::logEvent("settings", "tap " + rowId);
    id path =
        platform::sendClass<id>(platform::classNamed("NSIndexPath"), Sel("indexPathWithIndex:"), i);
    send<void>(list, Sel("tableView:didSelectRowAtIndexPath:"), id{nullptr}, path);
    return true;
  }
  return false;
}

Value openPaneAction(const host::ActionRequest& request, std::string* error) {
  if (!tapRow(request.args[0], error)) return {};
  return Value::string("showing " + paneOnTop());
}

Value backAction(const host::ActionRequest&, std::string* error) {
  id root = app().rootController.get();
  if (platform::arrayCount(send<id>(root, Sel("viewControllers"))) < 2) {
    *error = "no back button: " + paneOnTop() + " is the first pane";
    return {};
  }
  host::logEvent("settings", "back");
  send<id>(root, Sel("popViewControllerAnimated:"), BOOL{1});
  return Value::string("showing " + paneOnTop());
}

Value switchAction(const host::ActionRequest& request, std::string* error) {
  const std::string& rowId = request.args[0];
  bool on = request.args[1] == "on";
  if (!on && request.args[1] != "off") {
    *error = "expected switch ID on|off";
    return {};
  }
  id list = listShowing(rowId);
  id specifier = send<id>(list, Sel("specifierForID:"), platform::makeString(rowId));
  id control = switchOf(specifier);
  if (control == nullptr) {
    *error = "no switch " + rowId + " on the pane showing (" + paneOnTop() + ")";
    return {};
  }
  if ((send<BOOL>(control, Sel("isOn")) != 0) == on)
    return Value::string("already " + request.args[1]);
  // The person moves the switch; its value goes to the row's setter.
  send<void>(control, Sel("setOn:"), BOOL{on ? BOOL{1} : BOOL{0}});
  send<void>(list, Sel("setPreferenceValue:specifier:"), platform::makeBool(on), specifier);
  return Value::string(std::string("switch ") + (send<BOOL>(control, Sel("isOn")) ? "on" : "off"));
}

// The confirmed button of a pane on top: its row is tapped.
Value buttonAction(const char* rowId, const char* pane, std::string* error) {
  if (!platform::isKindOf(topPane(), pane)) {
    *error = std::string("the ") + pane + " pane is not on top (" + paneOnTop() + ")";
    return {};
  }
  tapRow(rowId, error);
  return {};
}

Value resetIconsAction(const host::ActionRequest&, std::string* error) {
  return buttonAction("RESET_ICONS_LABEL", "ResetPrefController", error);
}

Value deleteAppAction(const host::ActionRequest&, std::string* error) {
  return buttonAction("DELETE_APP", "UsageDetailController", error);
}

// The language picked in Language & Region, confirmed: the setup applies it.
Value setLanguageAction(const host::ActionRequest& request, std::string* error) {
  if (!platform::isKindOf(topPane(), "ISInternationalLanguageController")) {
    *error = "Language & Region is not on top (" + paneOnTop() + ")";
    return {};
  }
  Retained setup = Retained::adopt(
      host::newObject(platform::classNamed("ISInternationalLanguageSetupController")));
  send<void>(setup.get(), Sel("setLanguage:"), platform::makeString(request.args[0]));
  return {};
}

Value suspendAction(const host::ActionRequest&, std::string*) {
  app().suspended = true;
  host::logEvent("settings", "suspended");
  return {};
}

Value resumeAction(const host::ActionRequest& request, std::string*) {
  app().suspended = false;
  send<void>(application(), request.name == "resume" ? Sel("applicationDidResume")
                                                     : Sel("applicationDidResumeFromUnderLock"));
  return Value::string("showing " + paneOnTop());
}

Value openURLAction(const host::ActionRequest& request, std::string*) {
  id url = platform::sendClass<id>(platform::classNamed("NSURL"), Sel("URLWithString:"),
                                   platform::makeString(request.args[0]));
  send<void>(application(), Sel("processURL:"), url);
  return {};
}

}  // namespace

bool airplaneMode() {
  return host::request("device-get", {{"key", Value::string("airplane")}})["value"].asBool();
}

void setAirplaneMode(bool on) {
  host::report("device-set", {{"key", Value::string("airplane")}, {"value", Value::boolean(on)}});
}

void definePrefsApp() {
  ClassBuilder controller("PreferencesAppController", "UIApplication");
  controller.instance("rootController", imp(appRootController), "@@:")
      .instance("rootListController", imp(appRootListController), "@@:")
      .instance("isSuspended", imp(appIsSuspended), "C@:");
  addCatalogued(controller, "-processURL:", imp(appProcessURL));
  controller.build();
  Class uiApplication = platform::classNamed("UIApplication");
  class_addMethod(uiApplication, Sel("applicationDidResume"), imp(appDidResume), "v@:");
  class_addMethod(uiApplication, Sel("applicationDidResumeFromUnderLock"),
                  imp(appDidResumeFromUnderLock), "v@:");
  host::registerAction("open-pane", openPaneAction);
  host::registerAction("back", backAction);
  host::registerAction("switch", switchAction);
  host::registerAction("reset-icons", resetIconsAction);
  host::registerAction("delete-app", deleteAppAction);
  host::registerAction("set-language", setLanguageAction);
  host::registerAction("suspend", suspendAction);
  host::registerAction("resume", resumeAction);
  host::registerAction("resume-from-lock", resumeAction);
  host::registerAction("settings-url", openURLAction);
  host::registerQuery("pane",
                      [](const std::vector<std::string>&) { return Value::string(paneOnTop()); });
  host::registerQuery("switch", [](const std::vector<std::string>& args) {
    id list = args.empty() ? nullptr : listShowing(args[0]);
    id control = switchOf(send<id>(list, Sel("specifierForID:"), platform::makeString(args[0])));
    if (control == nullptr) return Value();
    return Value::boolean(send<BOOL>(control, Sel("isOn")) != 0);
  });
}

void definePrefsAlerts();

void definePreferences() {
  definePrefsAlerts();
  definePrefsRows();
  definePrefsPanes();
  definePrefsApp();
}

void startPreferences() {
  AppState& a = app();
  const char* rootList = atLeast(9) ? "PSUIPrefsListController" : "PrefsListController";
  const char* rootNavigation = atLeast(9) ? "PSUIPrefsRootController" : "PrefsRootController";
  a.rootListController = Retained::adopt(host::newObject(platform::classNamed(rootList)));
  Retained window = Retained::adopt(newView(
      "UIWindow",
      send<CGRect>(platform::sendClass<id>(platform::classNamed("UIScreen"), Sel("mainScreen")),
                   Sel("bounds"))));
  a.window = window;
  Class navigation = platform::classNamed(rootNavigation);
  if (!system().ipad) {
    a.rootController =
        Retained::adopt(send<id>(platform::sendClass<id>(navigation, Sel("alloc")),
                                 Sel("initWithRootViewController:"), a.rootListController.get()));
    send<void>(window.get(), Sel("setRootViewController:"), a.rootController.get());
  } else {
    // The list on the left in its own navigation; the first pane beside it.
    a.listNavigation = Retained::adopt(send<id>(
        platform::sendClass<id>(platform::classNamed("UINavigationController"), Sel("alloc")),
        Sel("initWithRootViewController:"), a.rootListController.get()));
    Retained general = Retained::adopt(host::newObject(platform::classNamed("PSListController")));
    Retained generalRow = Retained::adopt(newSpecifier("root", "General"));
    send<void>(general.get(), Sel("setSpecifier:"), generalRow.get());
    a.rootController = Retained::adopt(send<id>(platform::sendClass<id>(navigation, Sel("alloc")),
                                                Sel("initWithRootViewController:"), general.get()));
    Retained split =
        Retained::adopt(host::newObject(platform::classNamed("UISplitViewController")));
    send<void>(split.get(), Sel("setViewControllers:"),
               platform::makeArray({a.listNavigation.get(), a.rootController.get()}));
    send<void>(window.get(), Sel("setRootViewController:"), split.get());
  }
  send<void>(window.get(), Sel("makeKeyAndVisible"));
  host::logEvent("settings", std::string("root list ") + rootList + " in " + rootNavigation +
                                 (system().ipad ? " beside General" : ""));
}

}  // namespace kv::sim::frameworks
