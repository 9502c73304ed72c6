// Other extensions' own ways to launch apps, flip switches and open a
// switcher. Their classes appear only when their library loads, after this
// one; start-up installs each integration's rows the first time its class
// resolves as images are added. Every guard here goes through the guard
// gate and the hand-off of the launch guards; only identifier and title
// differ.
#pragma once

#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/geometry.h"
#include "platform/objc.h"

namespace kv::springboard {

// Flipswitch buttons (`FSSwitchButton`, `_FSSwitchButton`) read their switch
// through "switchIdentifier", Zandor's through "switchID". A press or hold
// of a protected switch, or of the product's own, waits for authentication.
void flipswitchPressed(id self, SEL cmd);         // -[FSSwitchButton _pressed]
void flipswitchHeld(id self, SEL cmd);            // -[FSSwitchButton _held]
void privateFlipswitchPressed(id self, SEL cmd);  // -[_FSSwitchButton _pressed]
void privateFlipswitchHeld(id self, SEL cmd);     // -[_FSSwitchButton _held]
void zandorTapped(id self, SEL cmd);              // -[ZandorFlipswitchButton tapped]

// Activator: an app launched by a gesture asks for a protected app; the
// product's own switch listener asks as "Kavelin Flipswitch"; fingerprint
// events stay away from listeners while the prompt owns the sensor; the
// switcher a gesture opens asks while the switcher is protected.
void activatorActivateApplication(id self, SEL cmd, id application);
void activatorSwitchEvent(id self, SEL cmd, id activator, id event, id listenerName);
void activatorSendEvent(id self, SEL cmd, id event);
void activatorActivateSwitcher(id self, SEL cmd);

// Orrel's switcher and its bar of icons; Mevrick's app switcher.
// Orrel's switcher asks only when it is not showing already: its view is
// not in a window.
void orrelShowSwitcher(id self, SEL cmd);
void orrelIconTapped(id self, SEL cmd, id icon);
void mevrickOpen(id self, SEL cmd, double percentage);
void mevrickActivate(id self, SEL cmd, id sender);
void mevrickDeactivateTo(id self, SEL cmd, id application, BOOL animated);
// A card of Mevrick's switcher: a protected app's snapshot is not shown while
// the switcher's cards are to be covered ("blurAppSwitcher").
void mevrickCardSetImage(id self, SEL cmd, id image);

// Veskel's quick switcher, as its icon list is made: while the switcher is
// protected the list stays invisible and untouchable until the owner
// authenticates.
id veskelIconListInit(id self, SEL cmd, CGRect frame);

// Pennac's sheet of actions on an app: a click asks when the sheet's app is
// protected; otherwise, while the click is handled, a launch the sheet starts
// in front (not suspended) asks for a protected app.
void pennacSheetClicked(id self, SEL cmd, id sheet, platform::Integer index);
BOOL launchApplicationWithIdentifier(id self, SEL cmd, id identifier, BOOL suspended);

// Tamsin's call screen opens Contacts, which asks when Contacts is protected;
// its caller line shows the in-call screen's stand-in texts while caller
// names are protected and the owner has not authenticated, and is redrawn
// when that state changes.
void tamsinLaunchAddressBook(id self, SEL cmd);
void tamsinSetInfoForCurrentCalls(id self, SEL cmd);
void tamsinNamesChanged(CFNotificationCenterRef center, void* observer, CFNotificationName name,
                        const void* object, CFDictionaryRef userInfo);

// Pellum returns to the previous app through SpringBoard's workspace event
// queue with an event labelled "ActivatePellum"; the previous app is read
// from the recent-front list, which SpringBoard's front-display changes keep.
void executeOrAppendEvent(id self, SEL cmd,
                          id event);  // -[SBWorkspaceEventQueue executeOrAppendEvent:]

}  // namespace kv::springboard
