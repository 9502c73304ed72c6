// The in-call screen (InCallService): a call brings up the audio call view
// controller with the caller's photo as its background and the participants
// view controller, whose participants view shows the caller's name. Both
// follow the call centre's status changes; the name line asks its delegate
// for an override string each time it is laid out, as the platform's does.
#include <string>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/frameworks/telephony.h"
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
using platform::sendSuper;
using platform::Value;

namespace {

constexpr const char* kStatusChanged = "TUCallCenterCallStatusChangedNotification";
const Sel kCallStatusChanged("callStatusChanged:");
const Sel kSetBackgroundImage("setBackgroundImage:");
const Sel kOverrideString("overrideStringForParticipantsView:");
const Sel kSetNeedsLayout("setNeedsLayout");
const Sel kSetText("setText:");
const Sel kSetImage("setImage:");

CGRect screenBounds() {
  return send<CGRect>(platform::sendClass<id>(platform::classNamed("UIScreen"), Sel("mainScreen")),
                      Sel("bounds"));
}

id defaultCenter() {
  return platform::sendClass<id>(platform::classNamed("NSNotificationCenter"),
                                 Sel("defaultCenter"));
}
void observeCalls(id observer) {
  send<void>(defaultCenter(), Sel("addObserver:selector:name:object:"), observer,
             static_cast<SEL>(kCallStatusChanged), platform::makeString(kStatusChanged),
             id{nullptr});
}
void stopObservingCalls(id observer) {
  send<void>(defaultCenter(), Sel("removeObserver:"), observer);
}

// What the screen shows now, for the queries and the event log.
struct ScreenState {
  Retained window;
  Retained callController;  // PHAudioCallViewController
  std::string nameShown;    // the name line's text
  bool photoShown = false;
};
ScreenState& screen() {
  static auto* s = new ScreenState();
  return *s;
}

// ---- PHCallParticipantsView: the name line ----

struct ParticipantsViewState {
  id delegate = nullptr;  // not retained: the controller owns the view
  Retained nameLabel;
};

id participantsViewInit(id self, SEL cmd, CGRect frame) {
  self = sendSuper<id>(platform::classNamed("UIView"), self, cmd, frame);
  if (self == nullptr) return nullptr;
  Retained label =
      Retained::adopt(newView("UILabel", CGRect{{16, 120}, {frame.size.width - 32, 40}}));
  send<void>(self, Sel("addSubview:"), label.get());
  stateOf<ParticipantsViewState>(self).nameLabel = std::move(label);
  return self;
}
id participantsViewDelegate(id self, SEL) {
  return stateOf<ParticipantsViewState>(self).delegate;
}
void participantsViewSetDelegate(id self, SEL, id delegate) {
  stateOf<ParticipantsViewState>(self).delegate = delegate;
}
// Draws the name line: the delegate's override string, else the caller.
void participantsViewLayout(id self, SEL) {
  ParticipantsViewState& v = stateOf<ParticipantsViewState>(self);
  if (v.delegate == nullptr) return;  // the call screen is gone
  id text = platform::respondsTo(v.delegate, kOverrideString)
                ? send<id>(v.delegate, kOverrideString, self)
                : nullptr;
  std::string name = text != nullptr ? platform::toString(text) : displayNameOf(callOnScreen());
  send<void>(v.nameLabel.get(), kSetText, platform::makeString(name));
  if (name == screen().nameShown) return;
  screen().nameShown = name;
  host::logEvent("incall", "caller " + quoteForLog(name));
}

// ---- PHCallParticipantsViewController ----

struct ParticipantsControllerState {
  Retained participantsView;
};

id participantsControllerInit(id self, SEL cmd) {
  self = sendSuper<id>(platform::classNamed("UIViewController"), self, cmd);
  if (self == nullptr) return nullptr;
  Retained view = Retained::adopt(newView("PHCallParticipantsView", screenBounds()));
  send<void>(view.get(), Sel("setDelegate:"), self);
  stateOf<ParticipantsControllerState>(self).participantsView = std::move(view);
  observeCalls(self);
  return self;
}
id participantsControllerView(id self, SEL) {
  return stateOf<ParticipantsControllerState>(self).participantsView.get();
}
// The platform's own name: no override.
id participantsControllerOverride(id, SEL, id) {
  return nullptr;
}
void participantsControllerStatusChanged(id self, SEL, id) {
  send<void>(stateOf<ParticipantsControllerState>(self).participantsView.get(), kSetNeedsLayout);
}
void participantsControllerDealloc(id self, SEL cmd) {
  stopObservingCalls(self);
  id view = stateOf<ParticipantsControllerState>(self).participantsView.get();
  send<void>(view, Sel("setDelegate:"), id{nullptr});
  send<void>(view, Sel("removeFromSuperview"));
  host::logEvent("incall", "participants view controller released");
  sendSuper<void>(platform::classNamed("UIViewController"), self, cmd);
}

// ---- PHAudioCallViewController: the call screen and its background ----

struct AudioCallState {
  Retained participants;  // PHCallParticipantsViewController
  Retained background;    // the image view behind everything
};

id audioCallInit(id self, SEL cmd) {
  self = sendSuper<id>(platform::classNamed("UIViewController"), self, cmd);
  if (self == nullptr) return nullptr;
  AudioCallState& a = stateOf<AudioCallState>(self);
  a.participants =
      Retained::adopt(host::newObject(platform::classNamed("PHCallParticipantsViewController")));
  a.background = Retained::adopt(newView("UIImageView", screenBounds()));
  id view = send<id>(self, Sel("view"));
  send<void>(view, Sel("addSubview:"), a.background.get());
  send<void>(view, Sel("addSubview:"), send<id>(a.participants.get(), Sel("participantsView")));
  observeCalls(self);
  return self;
}
void audioCallSetBackgroundImage(id self, SEL, id image) {
  send<void>(stateOf<AudioCallState>(self).background.get(), kSetImage, image);
  bool shown = image != nullptr;
  if (shown == screen().photoShown) return;
  screen().photoShown = shown;
  host::logEvent("incall", shown ? "caller photo shown" : "caller photo hidden");
}
// Each change of the call shows the caller's photo afresh.
void audioCallStatusChanged(id self, SEL, id) {
  send<void>(self, kSetBackgroundImage, contactPhotoOf(callOnScreen()));
}
void audioCallDealloc(id self, SEL cmd) {
  stopObservingCalls(self);
  sendSuper<void>(platform::classNamed("UIViewController"), self, cmd);
}

// ---- The screen comes with the first call and goes with the last ----

void showCallScreen() {
  ScreenState& s = screen();
  platform::AutoreleasePool pool;
  s.callController =
      Retained::adopt(host::newObject(platform::classNamed("PHAudioCallViewController")));
  s.window = Retained::adopt(newView("UIWindow", screenBounds()));
  send<void>(s.window.get(), Sel("setRootViewController:"), s.callController.get());
  send<void>(s.window.get(), Sel("makeKeyAndVisible"));
  host::logEvent("incall", "call screen for " + quoteForLog(displayNameOf(callOnScreen())));
  audioCallStatusChanged(s.callController.get(), nullptr, nullptr);
  id participants = stateOf<AudioCallState>(s.callController.get()).participants.get();
  participantsControllerStatusChanged(participants, nullptr, nullptr);
}

void hideCallScreen() {
  ScreenState& s = screen();
  {
    platform::AutoreleasePool pool;
    send<void>(s.window.get(), Sel("setRootViewController:"), id{nullptr});
    send<void>(s.window.get(), Sel("setHidden:"), BOOL{1});
    s.window.reset();
    s.callController.reset();
  }
  s.nameShown.clear();
  s.photoShown = false;
  host::logEvent("incall", "call screen gone");
}

}  // namespace

void callScreenFollowsCalls() {
  bool calls = callOnScreen() != nullptr;
  if (calls && !screen().callController) showCallScreen();
  if (!calls && screen().callController) hideCallScreen();
}

void defineInCallScreen() {
  if (!cataloguedHere("PHCallParticipantsViewController")) return;
  ClassBuilder("PHCallParticipantsView", "UIView")
      .instance("initWithFrame:", imp(participantsViewInit), typesOf(participantsViewInit).c_str())
      .instance("delegate", imp(participantsViewDelegate), "@@:")
      .instance("setDelegate:", imp(participantsViewSetDelegate), "v@:@")
      .instance("layoutSubviews", imp(participantsViewLayout), "v@:")
      .build();
  ClassBuilder participants("PHCallParticipantsViewController", "UIViewController");
  participants.instance("init", imp(participantsControllerInit), "@@:")
      .instance("callStatusChanged:", imp(participantsControllerStatusChanged), "v@:@")
      .instance("dealloc", imp(participantsControllerDealloc), "v@:");
  addCatalogued(participants, "-participantsView", imp(participantsControllerView));
  addCatalogued(participants,
                "-overrideStringForParticipantsView:", imp(participantsControllerOverride));
  participants.build();
  ClassBuilder("PHCallViewController", "UIViewController").build();
  ClassBuilder audio("PHAudioCallViewController", "PHCallViewController");
  audio.instance("init", imp(audioCallInit), "@@:")
      .instance("callStatusChanged:", imp(audioCallStatusChanged), "v@:@")
      .instance("dealloc", imp(audioCallDealloc), "v@:");
  addCatalogued(audio, "-setBackgroundImage:", imp(audioCallSetBackgroundImage));
  audio.build();
  host::registerQuery("caller", [](const std::vector<std::string>&) {
    return Value::dictionary(
        {{"screen", Value::boolean(static_cast<bool>(screen().callController))},
         {"name", Value::string(screen().nameShown)},
         {"photo", Value::boolean(screen().photoShown)}});
  });
}

}  // namespace kv::sim::frameworks
