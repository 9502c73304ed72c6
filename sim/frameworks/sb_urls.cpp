// URL opens in SpringBoard: the URL-scheme table, the _openURLCore family of
// each version and iOS 11's applicationOpenURL:..., and the "open-url"
// action. An URL opens in its display app when one is given, else in the app
// that owns its scheme, through this version's activation; the caller's
// handler is answered once.
#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/springboard.h"
#include "sim/host/actions.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

// The URL opens of each version, as "-selector" (the selector is what follows the dash).
constexpr const char* kOpenURLCoreFlags =
    "-_openURLCore:display:animating:sender:additionalActivationFlags:activationHandler:";
constexpr const char* kOpenURLCoreSettings =
    "-_openURLCore:display:animating:sender:activationSettings:withResult:";
constexpr const char* kOpenURLCoreContext =
    "-_openURLCore:display:animating:sender:activationContext:activationHandler:";
constexpr const char* kApplicationOpenURL =
    "-applicationOpenURL:withApplication:sender:publicURLsOnly:animating:needsPermission:"
    "activationContext:activationHandler:";

id displayIDForURLScheme(id, SEL, id scheme, BOOL) {
  std::string s = platform::toString(scheme);
  for (const auto& app : installedApps()) {
    for (const char* owned : app.urlSchemes) {
      if (s == owned) return platform::makeString(app.bundleIdentifier);
    }
  }
  return nullptr;
}

// An URL open: the display app, or the scheme's owner as SpringBoard's own
// table answers it, comes to the front; the handler hears of it once.
void openURL(id self, id url, id display, id handler) {
  std::string text = platform::toString(send<id>(url, Sel("absoluteString")));
  id target = display;
  if (target == nullptr) {
    id bundle = send<id>(self, Sel("displayIDForURLScheme:isPublic:"), send<id>(url, Sel("scheme")),
                         BOOL{0});
    target = bundle == nullptr ? nullptr : applicationNamed(platform::toString(bundle));
  }
  if (target == nullptr) {
    host::logEvent("url", "no app opens " + text);
    platform::callBlock<void(id)>(handler, platform::makeString("no app for the URL"));
    return;
  }
  std::string in = platform::toString(send<id>(target, Sel("bundleIdentifier")));
  host::logEvent("url", "open " + text + " in " + in);
  activate(target, "OpenApplication");
  platform::callBlock<void(id)>(handler, id{nullptr});
}

void openURLCoreFlags(id self, SEL, id url, id display, BOOL, id, unsigned, id handler) {
  openURL(self, url, display, handler);
}
void openURLCoreSettings(id self, SEL, id url, id display, BOOL, id, id, id result) {
  openURL(self, url, display, result);
}
void openURLCoreContext(id self, SEL, id url, id display, BOOL, id, id, id handler) {
  openURL(self, url, display, handler);
}
// iOS 11 opens directly, not through an _openURLCore variant.
void applicationOpenURL(id self, SEL, id url, id application, id, BOOL, BOOL, BOOL, id,
                        id handler) {
  openURL(self, url, application, handler);
}

// open-url URL [in BUNDLE-ID]: enters where this version's SpringBoard takes
// an URL open; the front app (if any) is the sender.
Value openURLAction(const host::ActionRequest& request, std::string* error) {
  id url = platform::sendClass<id>(platform::classNamed("NSURL"), Sel("URLWithString:"),
                                   platform::makeString(request.args[0]));
  if (url == nullptr || send<id>(url, Sel("scheme")) == nullptr) {
    *error = "not an URL: " + request.args[0];
    return {};
  }
  id display = nullptr;
  if (request.args.size() > 1) {
    display = request.args.size() == 3 && request.args[1] == "in"
                  ? applicationNamed(request.args[2])
                  : nullptr;
    if (display == nullptr) {
      *error = "expected open-url URL [in BUNDLE-ID] with an installed app";
      return {};
    }
  }
  id sender = springBoard().front == "home" ? nullptr : applicationNamed(springBoard().front);
  ReplyBlock reply("url " + request.args[0]);
  id app = sharedOf("SpringBoard");
  auto here = [](const char* method) { return cataloguedHere("SpringBoard", method) != nullptr; };
  if (here(kApplicationOpenURL)) {
    send<void>(app, Sel(kApplicationOpenURL + 1), url, display, sender, BOOL{0}, BOOL{1}, BOOL{0},
               id{nullptr}, reply.get());
  } else if (here(kOpenURLCoreContext)) {
    send<void>(app, Sel(kOpenURLCoreContext + 1), url, display, BOOL{1}, sender, id{nullptr},
               reply.get());
  } else if (here(kOpenURLCoreSettings)) {
    send<void>(app, Sel(kOpenURLCoreSettings + 1), url, display, BOOL{1}, sender, id{nullptr},
               reply.get());
  } else {
    send<void>(app, Sel(kOpenURLCoreFlags + 1), url, display, BOOL{1}, sender, 0u, reply.get());
  }
  return {};
}

}  // namespace

void addURLOpens(ClassBuilder& springBoardClass) {
  addCatalogued(springBoardClass, "-displayIDForURLScheme:isPublic:", imp(displayIDForURLScheme));
  addCatalogued(springBoardClass, kOpenURLCoreFlags, imp(openURLCoreFlags));
  addCatalogued(springBoardClass, kOpenURLCoreSettings, imp(openURLCoreSettings));
  addCatalogued(springBoardClass, kOpenURLCoreContext, imp(openURLCoreContext));
  addCatalogued(springBoardClass, kApplicationOpenURL, imp(applicationOpenURL));
  host::registerAction("open-url", openURLAction);
}

}  // namespace kv::sim::frameworks
