// Lock-screen notifications of protected apps (iOS 10 and later): held back
// while the device is locked, shown as one summary notification whose tap
// asks for authentication and puts them back; incoming bulletins of those
// apps get the product's own sound.
#pragma once

#include "platform/foundation.h"
#include "platform/objc.h"

namespace kv::springboard {

// -[NCNotificationPriorityListViewController insertNotificationRequest:forCoalescedNotification:]
BOOL priorityListInsert(id self, SEL cmd, id request, id coalesced);
// -[NCNotificationPriorityListViewController collectionView:cellForItemAtIndexPath:]
id priorityListCell(id self, SEL cmd, id collectionView, id indexPath);
// -[NCNotificationPriorityListViewController
// notificationListCell:requestsClearingNotificationRequest:]
void priorityListClear(id self, SEL cmd, id cell, id request);
// -[NCNotificationPriorityListViewController
//   notificationListCell:requestsPerformAction:forNotificationRequest:completion:]
void priorityListPerformAction(id self, SEL cmd, id cell, id action, id request, id completion);
// -[NCNotificationLongLookViewController _handleCloseButton:]
void longLookClose(id self, SEL cmd, id button);
// -[NCNotificationSectionListViewController viewWillAppear:]
void sectionListWillAppear(id self, SEL cmd, BOOL animated);
// -[NCNotificationSectionListViewController viewDidDisappear:]
void sectionListDidDisappear(id self, SEL cmd, BOOL animated);
// -[NCBulletinNotificationSource observer:addBulletin:forFeed:playLightsAndSirens:withReply:]
void sourceAddBulletinWithReply(id self, SEL cmd, id observer, id bulletin, unsigned long long feed,
                                BOOL lightsAndSirens, id reply);
// -[NCBulletinNotificationSource observer:addBulletin:forFeed:]
void sourceAddBulletin(id self, SEL cmd, id observer, id bulletin, unsigned long long feed);

// Added to NCNotificationPriorityListViewController.
// -_kv_removeAll: takes every held-back notification out of the list and
// shows the summary with their count.
void removeAll(id self, SEL cmd);
// -_kv_reInsertAll: the summary was tapped. Asks for authentication; after
// it, puts every held-back notification back and removes the summary.
void reInsertAll(id self, SEL cmd);
// -kavelinCell: the list cell that shows the summary, or nil.
id kavelinCell(id self, SEL cmd);
// -indexPathOfKavelinCell: the summary cell's index path in section 0, or
// nil when no row of that section shows it.
id indexPathOfKavelinCell(id self, SEL cmd);

}  // namespace kv::springboard
