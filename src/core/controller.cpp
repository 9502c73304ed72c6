// KavelinController as the runtime knows it.
#include "core/controller.h"

#include "platform/classes.h"
#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "settings/settings.h"

namespace kv::core {

namespace {

id gShared = nullptr;

id controllerInit(id self, SEL) {
  static const platform::Sel kInit("init");
  self = platform::sendSuper<id>(platform::classNamed("NSObject"), self, kInit);
  if (gShared == nullptr) gShared = self;
  return self;
}

id sharedInstance(id cls, SEL) {
  static const platform::Sel kAlloc("alloc"), kInit("init");
  if (gShared == nullptr) platform::send<id>(platform::send<id>(cls, kAlloc), kInit);
  return gShared;
}

// The messaging centre's handler. The answers of the protocol come with the
// protocol itself; until then every message gets the empty reply a client
// also gets from a SpringBoard without the handler.
id handleMessage(id, SEL, id, id) { return nullptr; }

// The glyph's look for the success animation. The getters do not answer what
// the setters stored: the style follows IconColor, the mode is always 0.
platform::Integer glyphStyle(id, SEL) {
  switch (settings::current().iconColor) {
    case 3: return 3;
    case 4: return 2;
    default: return 1;
  }
}
platform::Integer glyphMode(id, SEL) { return 0; }
void setGlyphValue(id, SEL, platform::Integer) {}

}  // namespace

void defineKavelinController() {
  platform::defineClass("KavelinController", "NSObject",
                        {
                            {"sharedInstance", platform::impOf(sharedInstance), "@@:", true},
                            {"init", platform::impOf(controllerInit), "@@:"},
                            {"handleMessageNamed:userInfo:", platform::impOf(handleMessage), "@@:@@"},
                            {"glyphStyle", platform::impOf(glyphStyle), "q@:"},
                            {"glyphMode", platform::impOf(glyphMode), "q@:"},
                            {"setGlyphStyle:", platform::impOf(setGlyphValue), "v@:q"},
                            {"setGlyphMode:", platform::impOf(setGlyphValue), "v@:q"},
                        });
}

id kavelinController() {
  defineKavelinController();
  return platform::sendClass<id>(platform::classNamed("KavelinController"),
                                 platform::Sel("sharedInstance"));
}

}  // namespace kv::core
