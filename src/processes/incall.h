// Caller-name protection in the in-call screen: the caller's name and photo
// stay hidden for an incoming call until SpringBoard reports a match.
#pragma once

#include <cstdint>

#include "platform/functions.h"
#include "platform/objc.h"

namespace kv::processes {

// Reads whether protection and caller-name protection are on, as this
// process sees them; the observer of "net.quorvan.kavelin.prefsChanged" and
// "net.quorvan.kavelin.CallerIDHandling".
// The name line that stands in for the caller while the call is protected,
// for the state of "net.quorvan.kavelin.allowInCallNames".
const char* protectedText(uint64_t state);

// True iff that state says the owner has authenticated: names may show.
bool namesAllowed(uint64_t state);

void loadCallerSettings();
void callerSettingsChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                           CFDictionaryRef);

// "net.quorvan.kavelin.allowInCallNames": the name line is drawn again, so
// that it follows the new state.
void inCallNamesChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                        CFDictionaryRef);

// PHAudioCallViewController -setBackgroundImage:
void setCallBackgroundImage(id self, SEL cmd, id image);
// PHCallParticipantsViewController -overrideStringForParticipantsView:
id overrideParticipantsString(id self, SEL cmd, id participantsView);
// PHCallParticipantsViewController -dealloc
void participantsControllerDealloc(id self, SEL cmd);

}  // namespace kv::processes
