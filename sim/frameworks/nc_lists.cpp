// The notification lists of iOS 10 and later: the lock screen's list (the
// priority list) and the notification list (the section list), each a
// collection view of one section whose cells show notification requests.
// The actions that show and hide the notification list and tap or clear the
// summary, and the queries on what the lists show.
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/notification_center.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/actions.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

const Sel kCellForItem("collectionView:cellForItemAtIndexPath:");
const Sel kClearing("notificationListCell:requestsClearingNotificationRequest:");
const Sel kPerformAction(
    "notificationListCell:requestsPerformAction:forNotificationRequest:completion:");
const Sel kGestureRecognizers("gestureRecognizers");

constexpr const char* kSummarySection = "Kavelin";

// ---- NSIndexPath, as UIKit extends it ----

id indexPathFor(id cls, SEL, Integer item, Integer section) {
  platform::UInteger indexes[2] = {static_cast<platform::UInteger>(section),
                                   static_cast<platform::UInteger>(item)};
  return send<id>(cls, Sel("indexPathWithIndexes:length:"), indexes, platform::UInteger{2});
}
Integer indexPathItem(id self, SEL) {
  return static_cast<Integer>(
      send<platform::UInteger>(self, Sel("indexAtPosition:"), platform::UInteger{1}));
}
Integer indexPathSection(id self, SEL) {
  return static_cast<Integer>(
      send<platform::UInteger>(self, Sel("indexAtPosition:"), platform::UInteger{0}));
}

// ---- Requests and coalesced notifications ----

struct RequestState {
  Retained bulletin;
  std::string section;
};

id requestSection(id self, SEL) {
  return platform::makeString(stateOf<RequestState>(self).section);
}
id requestBulletin(id self, SEL) {
  return stateOf<RequestState>(self).bulletin.get();
}

// What a person reads of a request: its app (or "Kavelin") and its lines.
std::string describe(id request) {
  return bulletinText(stateOf<RequestState>(request).bulletin.get());
}

// ---- The list controllers ----

struct ListState {
  std::vector<Retained> requests;  // section 0, top first
  std::map<id, Retained> cells;    // one cell per request, kept while it shows
  Retained collectionView;
  bool visible = false;
};

const char* placeOf(id list) {
  return list == lockScreenList() ? "lock screen" : "notification list";
}

// Whether a person sees the list's changes now.
bool showing(id list) {
  return list == lockScreenList() ? springBoard().locked : stateOf<ListState>(list).visible;
}

id listCollectionView(id self, SEL) {
  ListState& list = stateOf<ListState>(self);
  if (!list.collectionView) {
    list.collectionView = Retained::adopt(newView("UICollectionView", CGRect{}));
  }
  return list.collectionView.get();
}
Integer listSections(id, SEL, id) {
  return 1;
}
Integer listItems(id self, SEL, id, Integer section) {
  return section == 0 ? static_cast<Integer>(stateOf<ListState>(self).requests.size()) : 0;
}
id listRequestAt(id self, SEL, id path) {
  const auto& requests = stateOf<ListState>(self).requests;
  if (path == nullptr || indexPathSection(path, nullptr) != 0) return nullptr;
  Integer item = indexPathItem(path, nullptr);
  return item >= 0 && item < static_cast<Integer>(requests.size()) ? requests[item].get() : nullptr;
}
// A cell is made once for a request and shown again each time the list is
// drawn, as a reused cell would be.
id listCell(id self, SEL, id, id path) {
  id request = listRequestAt(self, nullptr, path);
  if (request == nullptr) return nullptr;
  Retained& cell = stateOf<ListState>(self).cells[request];
  if (!cell) cell = Retained::adopt(newView("NCNotificationListCell", CGRect{}));
  return cell.get();
}

// Draws every cell, as the collection view does after a change.
void redraw(id self) {
  id collectionView = listCollectionView(self, nullptr);
  Integer count = listItems(self, nullptr, nullptr, 0);
  for (Integer item = 0; item < count; ++item) {
    send<id>(self, kCellForItem, collectionView,
             indexPathFor(platform::asId(platform::classNamed("NSIndexPath")), nullptr, item, 0));
  }
}

BOOL listInsert(id self, SEL, id request, id) {
  ListState& list = stateOf<ListState>(self);
  if (request == nullptr) return 0;
  for (const auto& r : list.requests) {
    if (r.get() == request) return 0;
  }
  list.requests.emplace_back(request);
  if (showing(self))
    host::logEvent("notification", std::string(placeOf(self)) + " shows " + describe(request));
  redraw(self);
  return 1;
}
void listRemove(id self, SEL, id request, id) {
  ListState& list = stateOf<ListState>(self);
  auto found = std::find_if(list.requests.begin(), list.requests.end(),
                            [request](const Retained& r) { return r.get() == request; });
  if (found == list.requests.end()) return;
  Retained keep = *found;
  list.requests.erase(found);
  list.cells.erase(request);
  if (showing(self)) {
    host::logEvent("notification",
                   std::string(placeOf(self)) + " no longer shows " + describe(request));
  }
  redraw(self);
}
// Clearing a notification (its cell's clear button) takes it away.
void listClearing(id self, SEL, id, id request) {
  listRemove(self, nullptr, request, nullptr);
}
// The default action of a tapped notification: it goes, then the completion runs.
void listPerformAction(id self, SEL, id, id, id request, id completion) {
  listRemove(self, nullptr, request, nullptr);
  if (completion != nullptr) platform::callBlock<void()>(completion);
}

id findRequest(id list, const std::string& section) {
  for (const auto& r : stateOf<ListState>(list).requests) {
    if (stateOf<RequestState>(r.get()).section == section) return r.get();
  }
  return nullptr;
}

id pathOf(id list, id request) {
  const auto& requests = stateOf<ListState>(list).requests;
  for (size_t i = 0; i < requests.size(); ++i) {
    if (requests[i].get() == request) {
      return indexPathFor(platform::asId(platform::classNamed("NSIndexPath")), nullptr,
                          static_cast<Integer>(i), 0);
    }
  }
  return nullptr;
}

Retained& listNamed(const char* className) {
  static std::map<std::string, Retained> lists;
  Retained& list = lists[className];
  if (!list && platform::classNamed(className) != nullptr) {
    list = Retained::adopt(host::newObject(platform::classNamed(className)));
  }
  return list;
}

// ---- Actions and queries ----

// notification-list show|hide
Value notificationListAction(const host::ActionRequest& request, std::string* error) {
  id list = notificationList();
  if (list == nullptr) {
    *error = "no notification list before iOS 10";
    return {};
  }
  ListState& state = stateOf<ListState>(list);
  bool show = request.args[0] == "show";
  if (!show && request.args[0] != "hide") {
    *error = "notification-list show|hide";
    return {};
  }
  if (show == state.visible) return {};
  if (show) {
    send<void>(list, Sel("viewWillAppear:"), BOOL{1});
    state.visible = true;
    std::string shown;
    for (const auto& r : state.requests) shown += (shown.empty() ? "" : ", ") + describe(r.get());
    host::logEvent("notification", "notification list shows " +
                                       std::to_string(state.requests.size()) +
                                       (shown.empty() ? "" : ": " + shown));
    send<void>(list, Sel("viewDidAppear:"), BOOL{1});
  } else {
    send<void>(list, Sel("viewWillDisappear:"), BOOL{1});
    state.visible = false;
    host::logEvent("notification", "notification list hidden");
    send<void>(list, Sel("viewDidDisappear:"), BOOL{1});
  }
  return {};
}

// The summary's cell as the lock screen draws it, with its request.
bool summaryCell(id* cell, id* request, std::string* error) {
  id list = lockScreenList();
  *request = list == nullptr ? nullptr : findRequest(list, kSummarySection);
  if (*request == nullptr) {
    *error = "no summary on the lock screen";
    return false;
  }
  *cell = send<id>(list, kCellForItem, listCollectionView(list, nullptr), pathOf(list, *request));
  return *cell != nullptr;
}

// tap-summary: the cell's tap recognizers take the tap; without one, the
// notification's default action runs.
Value tapSummaryAction(const host::ActionRequest&, std::string* error) {
  id cell = nullptr;
  id request = nullptr;
  if (!summaryCell(&cell, &request, error)) return {};
  Retained keep(cell);
  std::vector<Retained> taps;
  id recognizers = send<id>(cell, kGestureRecognizers);
  for (platform::UInteger i = 0, n = platform::arrayCount(recognizers); i < n; ++i) {
    id r = platform::arrayObjectAt(recognizers, i);
    if (platform::isKindOf(r, "UITapGestureRecognizer")) taps.emplace_back(r);
  }
  host::logEvent("notification", "tapped the summary (its cell has " + std::to_string(taps.size()) +
                                     " tap recognizers)");
  if (taps.empty()) {
    send<void>(lockScreenList(), kPerformAction, cell, id{nullptr}, request, id{nullptr});
  }
  for (const auto& tap : taps) recognizeGesture(tap.get());
  return {};
}

// clear-summary: the summary cell's clear button.
Value clearSummaryAction(const host::ActionRequest&, std::string* error) {
  id cell = nullptr;
  id request = nullptr;
  if (!summaryCell(&cell, &request, error)) return {};
  host::logEvent("notification", "cleared the summary");
  Retained keep(request);
  send<void>(lockScreenList(), kClearing, cell, request);
  return {};
}

// The list a person looks at: the notification list while it shows, else
// the lock screen's while locked; none otherwise.
id listInView() {
  id list = notificationList();
  if (list != nullptr && stateOf<ListState>(list).visible) return list;
  return springBoard().locked ? lockScreenList() : nullptr;
}

// shown BUNDLE-ID: how many notifications of that app the list in view shows.
Value shownQuery(const std::vector<std::string>& args) {
  id list = listInView();
  if (list == nullptr || args.empty()) return Value::integer(0);
  int count = 0;
  for (const auto& r : stateOf<ListState>(list).requests) {
    count += stateOf<RequestState>(r.get()).section == args[0] ? 1 : 0;
  }
  return Value::integer(count);
}

// summary: the summary's message on the lock screen, or none.
Value summaryQuery(const std::vector<std::string>&) {
  id list = lockScreenList();
  id request = list == nullptr ? nullptr : findRequest(list, kSummarySection);
  if (request == nullptr) return {};
  return Value::string(
      platform::toString(send<id>(stateOf<RequestState>(request).bulletin.get(), Sel("message"))));
}

}  // namespace

std::string bulletinText(id bulletin) {
  std::string message = platform::toString(send<id>(bulletin, Sel("message")));
  std::string lines;
  size_t start = 0;
  while (true) {
    size_t end = message.find('\n', start);
    lines += (lines.empty() ? "" : " / ") + quoteForLog(message.substr(start, end - start));
    if (end == std::string::npos) break;
    start = end + 1;
  }
  return platform::toString(send<id>(bulletin, Sel("sectionID"))) + " " + lines;
}

id lockScreenList() {
  return listNamed("NCNotificationPriorityListViewController").get();
}
id notificationList() {
  return listNamed("NCNotificationSectionListViewController").get();
}

id newRequest(id bulletin) {
  id request = host::newObject(platform::classNamed("NCNotificationRequest"));
  auto& state = stateOf<RequestState>(request);
  state.bulletin.reset(bulletin);
  state.section = platform::toString(send<id>(bulletin, Sel("sectionID")));
  return request;
}

void defineNotificationLists() {
  if (!cataloguedHere("NCNotificationPriorityListViewController")) return;
  Class indexPath = platform::classNamed("NSIndexPath");
  class_addMethod(platform::metaclassOf(indexPath), Sel("indexPathForItem:inSection:"),
                  imp(indexPathFor), typesOf(indexPathFor).c_str());
  class_addMethod(indexPath, Sel("item"), imp(indexPathItem), typesOf(indexPathItem).c_str());
  class_addMethod(indexPath, Sel("section"), imp(indexPathSection),
                  typesOf(indexPathSection).c_str());
  ClassBuilder("UICollectionView", "UIView").build();
  ClassBuilder("UICollectionViewCell", "UIView").build();
  ClassBuilder("NCNotificationListCell", "UICollectionViewCell").build();

  ClassBuilder request("NCNotificationRequest", "NSObject");
  addCatalogued(request, "-sectionIdentifier", imp(requestSection));
  addCatalogued(request, "-bulletin", imp(requestBulletin));
  request.build();
  defineCatalogued("UICollectionViewController");
  ClassBuilder list("NCNotificationListViewController", "UICollectionViewController");
  list.instance("collectionView", imp(listCollectionView), "@@:");
  addCatalogued(list, "-numberOfSectionsInCollectionView:", imp(listSections));
  addCatalogued(list, "-collectionView:numberOfItemsInSection:", imp(listItems));
  addCatalogued(list, "-collectionView:cellForItemAtIndexPath:", imp(listCell));
  addCatalogued(list, "-notificationRequestAtIndexPath:", imp(listRequestAt));
  addCatalogued(list,
                "-notificationListCell:requestsClearingNotificationRequest:", imp(listClearing));
  addCatalogued(list,
                "-notificationListCell:requestsPerformAction:forNotificationRequest:completion:",
                imp(listPerformAction));
  list.build();
  for (const char* name :
       {"NCNotificationPriorityListViewController", "NCNotificationSectionListViewController"}) {
    ClassBuilder controller(name, "NCNotificationListViewController");
    addCatalogued(controller,
                  "-insertNotificationRequest:forCoalescedNotification:", imp(listInsert));
    addCatalogued(controller,
                  "-removeNotificationRequest:forCoalescedNotification:", imp(listRemove));
    controller.build();
  }
  host::registerAction("notification-list", notificationListAction);
  host::registerAction("tap-summary", tapSummaryAction);
  host::registerAction("clear-summary", clearSummaryAction);
  host::registerQuery("shown", shownQuery);
  host::registerQuery("summary", summaryQuery);
}

}  // namespace kv::sim::frameworks
