// A language change restarts SpringBoard, and deleting an app from the
// storage pane takes its icon off the home screen: each waits for the owner
// like a protected pane. Their classes are used late, so their
// interceptions are installed when the classes are first used.
#include "processes/settings_language.h"

#include "platform/hook.h"
#include "platform/runtime.h"
#include "processes/settings_guards.h"
#include "processes/settings_state.h"
#include "settings/settings.h"

namespace kv::processes {

namespace {

using platform::Hook;
using platform::Sel;

const Sel kSetLanguage("setLanguage:");
const Sel kDeleteApp("deleteApp");

void setLanguage(id self, SEL cmd, id language) {
  SettingsGuardState& s = guardState();
  // The change restarts SpringBoard: it is guarded as a respring is.
  if (protectionInForce() && !s.languageAllowedOnce && settings::current().enabled &&
      settings::current().protectRespring) {
    dropPending();
    s.pending = Pending::kLanguage;
    s.languageController.reset(self);
    s.languageArgument.reset(language);
    askSpringBoard("blrc");
    return;
  }
  Hook<&setLanguage>::original(self, cmd, language);
}

void deleteApp(id self, SEL cmd) {
  SettingsGuardState& s = guardState();
  // Deleting an app rearranges the home screen: guarded as moving icons is.
  if (protectionInForce() && !s.deleteAllowedOnce && settings::current().enabled &&
      settings::current().protectMovingApps) {
    dropPending();
    s.pending = Pending::kDelete;
    s.deleteController.reset(self);
    askSpringBoard("delc");
    return;
  }
  Hook<&deleteApp>::original(self, cmd);
}

const platform::Row kLanguageRow =
    platform::replaced<&setLanguage>("ISInternationalLanguageSetupController", "-setLanguage:");
const platform::Row kDeletionRow =
    platform::replaced<&deleteApp>("UsageDetailController", "-deleteApp");

bool isClassNamed(id cls, const char* name) {
  return reinterpret_cast<Class>(cls) == platform::classNamed(name);
}

}  // namespace

void installLanguageGuard() {
  SettingsGuardState& s = guardState();
  if (s.languageHookInstalled) return;
  s.languageHookInstalled = true;
  platform::installRow(kLanguageRow);
}

void installDeletionGuard() {
  static bool installed = false;
  if (installed) return;
  installed = true;
  platform::installRow(kDeletionRow);
}

void repeatLanguageChange() {
  SettingsGuardState& s = guardState();
  platform::Retained controller = s.languageController;
  platform::Retained language = s.languageArgument;
  dropPending();
  OnceFlag once(s.languageAllowedOnce);
  platform::sendIfResponds(controller.get(), kSetLanguage, language.get());
}

void repeatDeletion() {
  SettingsGuardState& s = guardState();
  platform::Retained controller = s.deleteController;
  dropPending();
  OnceFlag once(s.deleteAllowedOnce);
  platform::sendIfResponds(controller.get(), kDeleteApp);
}

void listControllerInitialize(id self, SEL cmd) {
  Hook<&listControllerInitialize>::original(self, cmd);
  if (isClassNamed(self, "UsageDetailController")) installDeletionGuard();
}

void objectInitialize(id self, SEL cmd) {
  Hook<&objectInitialize>::original(self, cmd);
  if (isClassNamed(self, "ISInternationalLanguageSetupController")) installLanguageGuard();
}

}  // namespace kv::processes
