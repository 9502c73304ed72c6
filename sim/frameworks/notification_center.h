// The notification centre of iOS 10 and later as SpringBoard runs it: the
// bulletin source that receives every bulletin, the lock screen's list and
// the notification list, the lock-screen bulletin library of the device's
// extension, and the system sounds bulletins play.
#pragma once

#include <string>

#include "platform/objc.h"

namespace kv::sim::frameworks {

// Bits of a bulletin's feed: where it goes and what it does.
inline constexpr unsigned long long kFeedBanner = 1;
inline constexpr unsigned long long kFeedAlert = 2;
inline constexpr unsigned long long kFeedNotificationList = 4;
inline constexpr unsigned long long kFeedLockScreen = 8;
inline constexpr unsigned long long kFeedSound = 16;

// A new BBBulletin of `section` (a bundle identifier) reading `message`,
// titled `title` ("" for the app's name); the caller owns it (sb_bulletins.cpp).
id newBulletin(const std::string& section, const std::string& title, const std::string& message);

// Hands a bulletin to the notification source through this version's
// observer method, as the bulletin server does (nothing before iOS 10).
void deliverBulletin(id bulletin, unsigned long long feed);

// A new NCNotificationRequest showing `bulletin`; the caller owns it.
id newRequest(id bulletin);

// The request the source made for a bulletin, or nil.
id requestForBulletin(id bulletin);

// A bulletin as a person reads it: its app, then its lines in quotes.
std::string bulletinText(id bulletin);

// What a BBSound plays, as the log names it ("incoming.aiff"), or "" for none.
std::string soundName(id sound);

// The lock screen's list (the priority list) and the notification list
// (the section list); nil before iOS 10.
id lockScreenList();
id notificationList();

void defineNotificationLists();   // nc_lists.cpp
void defineNotificationSource();  // nc_source.cpp
void defineSystemSounds();        // nc_sounds.cpp

}  // namespace kv::sim::frameworks
