// The Settings-app guards' shared state and their questions to SpringBoard.
#include "processes/settings_state.h"

#include <algorithm>
#include <optional>
#include <string>

#include "base/flags.h"
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "processes/settings_selectors.h"
#include "settings/settings.h"

namespace kv::processes {

namespace {

constexpr const char* kCenter = "net.quorvan.kavelin.center";
constexpr const char* kOwnPaneIdentifier = "Kavelin";

id center() {
  return platform::sendClass<id>(platform::classNamed("CPDistributedMessagingCenter"),
                                 sel::kCenterNamed, platform::makeString(kCenter));
}

// SpringBoard's reply to a query, or nil when it did not answer.
id reply(const char* message) {
  return platform::send<id>(center(), sel::kSendAndReply, platform::makeString(message),
                            id{nullptr});
}

bool listedItem(const std::optional<std::string>& item) {
  if (!item) return false;
  return settings::current().protectedSettings.contains(*item);
}

}  // namespace

SettingsGuardState& guardState() {
  static auto* state = new SettingsGuardState();
  return *state;
}

void dropPending() {
  SettingsGuardState& s = guardState();
  s.pending = Pending::kNone;
  s.listController.reset();
  s.specifier.reset();
  s.viewController.reset();
  s.viewControllers.reset();
  s.airplaneValue.reset();
  s.languageController.reset();
  s.languageArgument.reset();
  s.deleteController.reset();
}

int enrolledIdentities() {
  platform::AutoreleasePool pool;
  auto count = platform::integerOf(platform::objectForKey(reply("idsn"), "idsn"));
  return count ? static_cast<int>(*count) : 0;
}

bool sessionOpen() {
  platform::AutoreleasePool pool;
  return platform::boolOf(platform::objectForKey(reply("sesx"), "sessionExists")).value_or(false);
}

bool relockRequired() {
  platform::AutoreleasePool pool;
  return platform::boolOf(platform::objectForKey(reply("rqrl"), "requiresRelock")).value_or(false);
}

void askSpringBoard(const char* message, id paneName) {
  platform::AutoreleasePool pool;
  id info = paneName == nullptr ? nullptr : platform::makeDictionary({{"settingsName", paneName}});
  platform::send<BOOL>(center(), sel::kSendOneWay, platform::makeString(message), info);
}

bool protectionInForce() {
  return enrolledIdentities() >= 1 && !sessionOpen();
}

id specifierId(id specifier) {
  return platform::sendIfResponds<id>(specifier, sel::kPropertyForKey, platform::makeString("id"));
}

id specifierName(id specifier) {
  return platform::sendIfResponds<id>(specifier, sel::kName);
}

bool listedAsProtected(id specifier) {
  return listed(specifierId(specifier)) || listed(specifierName(specifier));
}

bool listed(id item) {
  return listedItem(platform::stringOf(item));
}

bool isOwnPane(id specifier) {
  return platform::stringOf(platform::sendIfResponds<id>(specifier, sel::kIdentifier)) ==
         std::string(kOwnPaneIdentifier);
}

void deselectRow(id specifier) {
  id properties = platform::sendIfResponds<id>(specifier, sel::kProperties);
  id cell = platform::objectForKey(properties, "cellObject");
  platform::sendIfResponds(cell, sel::kSetSelected, BOOL{0});
}

id specifierOf(id controller) {
  return platform::sendIfResponds<id>(controller, sel::kSpecifier);
}

bool isKind(id controller, const char* className) {
  return platform::isKindOf(controller, className);
}

const char* listControllerClass() {
  return base::flags().isIOS9OrLater ? "PSUIPrefsListController" : "PrefsListController";
}

}  // namespace kv::processes
