// The switcher's cards, one per recent app, made when the switcher shows its
// items and laid out through the platform's own methods: iOS 11's reusable
// snapshot views (taken from a pool, so a card may come back for another
// app), the snapshot views of iOS 9 and 10 with their snapshot image views,
// and iOS 8's slider snapshot views, which load their image through their
// snapshot infos. Each card's looks go to the event log; the "covered" query
// says whether a card hides its app.
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/foundation.h"
#include "platform/geometry.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
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

constexpr const char* kBrindleLibrary = "/Library/MobileSubstrate/DynamicLibraries/Brindle.dylib";
constexpr CGFloat kCardCornerRadius = 13.0;  // iOS 11's cards
constexpr double kDeckScale = 0.9;           // the deck shows cards a little smaller
constexpr Integer kPrimaryRole = 1;

struct CardState {
  std::string bundle;
  Retained imageView;  // the snapshot's image view
  Retained image;      // iOS 8: what the card shows
};

struct Cards {
  std::vector<Retained> reusable;  // iOS 11's pool: the containers, each holding its card
  std::vector<Retained> shown;     // the cards of the switcher now, in its order
};
Cards& cards() {
  static auto* c = new Cards();
  return *c;
}

CardState& card(id view) {
  return stateOf<CardState>(view);
}

CGRect screen() {
  return send<CGRect>(platform::sendClass<id>(platform::classNamed("UIScreen"), Sel("mainScreen")),
                      Sel("bounds"));
}
double screenScale() {
  return send<double>(platform::sendClass<id>(platform::classNamed("UIScreen"), Sel("mainScreen")),
                      Sel("scale"));
}

// What an app last showed, and its launch image.
id snapshotImage(const std::string& bundle) {
  return makeImage(screen().size, screenScale(), "snapshot of " + bundle);
}
id launchImage(const std::string& bundle) {
  return makeImage(screen().size, screenScale(), "launch image of " + bundle);
}

bool brindleInstalled() {
  FILE* f = std::fopen(kBrindleLibrary, "r");
  if (f == nullptr) return false;
  std::fclose(f);
  return true;
}

// ---- iOS 11: SBAppSwitcherReusableSnapshotView ----

id applicationForRole(id self, SEL, Integer role) {
  return role == kPrimaryRole ? applicationNamed(card(self).bundle) : nullptr;
}
// The platform's layout: the snapshot fills the card.
void reusableLayout(id self, SEL) {
  send<void>(card(self).imageView.get(), Sel("setFrame:"), send<CGRect>(self, Sel("bounds")));
}

// ---- iOS 9 and 10: SBAppSwitcherSnapshotView, SBSwitcherSnapshotImageView ----

id snapshotDisplayItem(id self, SEL) {
  return switcherItemFor("SBDisplayItem", card(self).bundle);
}
id snapshotImageView(id self, SEL) {
  return card(self).imageView.get();
}
void snapshotLayout(id self, SEL) {
  send<void>(card(self).imageView.get(), Sel("setFrame:"), send<CGRect>(self, Sel("bounds")));
}
void viewPresenting(id, SEL, id) {}
void imageViewLayout(id, SEL) {}

// The zoom-up as the chosen card grows into its app. With Brindle installed
// the app opens from the zoom-up itself.
void zoomUp(id self) {
  host::logEvent("switcher", "card " + card(self).bundle + " zooms up");
  if (brindleInstalled()) bringToFront(card(self).bundle);
}
void crossfade(id self, SEL) {
  zoomUp(self);
}
void crossfadeForRequest(id self, SEL, id) {
  zoomUp(self);
}

// ---- iOS 8: SBAppSliderSnapshotView ----

Value infoValue(id info) {
  return platform::valueOf(info);
}
id infoFor(const std::string& kind, const std::string& bundle) {
  return platform::makeObject(
      Value::dictionary({{"kind", Value::string(kind)}, {"bundle", Value::string(bundle)}}));
}
id imageForInfo(id info) {
  Value v = infoValue(info);
  if (v["bundle"].asString().empty()) return nullptr;
  return v["kind"].asString() == "launch" ? launchImage(v["bundle"].asString())
                                          : snapshotImage(v["bundle"].asString());
}
id sliderApplication(id self, SEL) {
  return applicationNamed(card(self).bundle);
}
id sliderDefaultInfo(id self, SEL) {
  return infoFor("launch", card(self).bundle);
}
// The cache holds the snapshot the app left.
id cachedImageDownscaled(id, SEL, id infos, BOOL, id* found) {
  id info = platform::arrayObjectAt(infos, 0);
  if (found != nullptr) *found = info;
  return imageForInfo(info);
}
id cachedImage(id self, SEL, id infos, id* found) {
  return send<id>(self, Sel("_cachedImageForImageInfos:downscaled:foundInfo:"), infos, BOOL{0},
                  found);
}
id defaultImage(id, SEL, id info) {
  return imageForInfo(info);
}
CGImageRef cgImage(id, SEL, id info) {
  return reinterpret_cast<CGImageRef>(imageForInfo(info));
}
CGImageRef cgImageDownscaled(id, SEL, id info, BOOL) {
  return reinterpret_cast<CGImageRef>(imageForInfo(info));
}
void loadImageAsync(id self, SEL, id info) {
  card(self).image.reset(imageForInfo(info));
}

// ---- Looks ----

bool spans(CGRect outer, CGRect inner) {
  constexpr double kSlack = 0.5;
  return inner.origin.x <= outer.origin.x + kSlack && inner.origin.y <= outer.origin.y + kSlack &&
         inner.origin.x + inner.size.width >= outer.origin.x + outer.size.width - kSlack &&
         inner.origin.y + inner.size.height >= outer.origin.y + outer.size.height - kSlack;
}
bool seen(id view) {
  return send<BOOL>(view, Sel("isHidden")) == 0 && send<double>(view, Sel("alpha")) > 0;
}
CGRect boundsOf(id view) {
  return send<CGRect>(view, Sel("bounds"));
}
CGRect frameOf(id view) {
  return send<CGRect>(view, Sel("frame"));
}

struct Looks {
  bool covered = false;
  bool text = false;
  std::string details;
};

// A blur over the whole card: a view spanning it that holds a blur effect
// view spanning that view; the text is an image of it at full alpha, centred.
Looks blurCover(id view) {
  Looks looks;
  for (id cover : subviewsOf(view)) {
    if (!seen(cover) || !spans(boundsOf(view), frameOf(cover))) continue;
    for (id part : subviewsOf(cover)) {
      if (!seen(part) || !platform::isKindOf(part, "UIVisualEffectView") ||
          !spans(boundsOf(cover), frameOf(part))) {
        continue;
      }
      id effect = send<id>(part, Sel("effect"));
      if (!platform::isKindOf(effect, "UIBlurEffect")) continue;
      looks.covered = true;
      looks.details = "covered by blur style " +
                      std::to_string(send<Integer>(effect, Sel("_style"))) + " corner radius " +
                      std::to_string(static_cast<int>(
                          send<double>(send<id>(part, Sel("layer")), Sel("cornerRadius"))));
    }
    if (!looks.covered) continue;
    for (id part : subviewsOf(cover)) {
      if (!platform::isKindOf(part, "UIImageView")) continue;
      std::string drawing = imageDrawingOf(send<id>(part, Sel("image")));
      if (drawing.empty()) continue;
      CGRect f = frameOf(part);
      CGRect b = boundsOf(cover);
      bool centred = std::abs(f.origin.x * 2 + f.size.width - b.size.width) < 1 &&
                     std::abs(f.origin.y * 2 + f.size.height - b.size.height) < 1;
      double alpha = send<double>(part, Sel("alpha"));
      looks.text = alpha >= 1 && centred;
      looks.details += ", " + drawing + " alpha " + std::to_string(static_cast<int>(alpha)) +
                       (centred ? " centred" : " off centre");
    }
    return looks;
  }
  return looks;
}

// A blurred copy of the snapshot over the whole of the card or its image view.
Looks blurredCopy(id view) {
  Looks looks;
  std::vector<id> layers = {view};
  if (id imageView = card(view).imageView.get()) layers.push_back(imageView);
  for (id layer : layers) {
    for (id part : subviewsOf(layer)) {
      if (!seen(part) || !platform::isKindOf(part, "UIImageView") ||
          !spans(boundsOf(layer), frameOf(part)))
        continue;
      std::string drawing = imageDrawingOf(send<id>(part, Sel("image")));
      if (drawing.rfind("blurred", 0) != 0) continue;
      looks.covered = true;
      looks.details = "under " + drawing;
    }
  }
  return looks;
}

Looks looksOf(id view) {
  if (platform::isKindOf(view, "SBAppSliderSnapshotView")) {
    std::string shows = imageDrawingOf(card(view).image.get());
    return Looks{shows.rfind("launch image", 0) == 0, false, "shows " + shows};
  }
  Looks looks = platform::isKindOf(view, "SBAppSwitcherReusableSnapshotView") ? blurCover(view)
                                                                              : blurredCopy(view);
  if (!looks.covered) {
    id image = send<id>(card(view).imageView.get(), Sel("image"));
    looks.details = "shows " + imageDrawingOf(image);
  }
  return looks;
}

// The layout pass before the cards are drawn: every view below a card that
// is new or changed is laid out, as UIKit does for views marked for layout.
void layOutBelow(id view) {
  visitSubviews(view, [](id v) {
    send<void>(v, Sel("setNeedsLayout"));
    send<void>(v, Sel("layoutIfNeeded"));
    return true;
  });
}

void logCards() {
  for (const auto& c : cards().shown) {
    host::logEvent("switcher", "card " + card(c.get()).bundle + " " + looksOf(c.get()).details);
  }
}

// ---- Making the cards ----

// The card of the i-th app: iOS 11 reuses the pool's card at that place.
id reusableCard(size_t i, const std::string& bundle) {
  auto& pool = cards().reusable;
  if (i >= pool.size()) {
    Retained container = Retained::adopt(newView("UIView", screen()));
    Retained view =
        Retained::adopt(newView("SBAppSwitcherReusableSnapshotView", boundsOf(container.get())));
    id layer = send<id>(view.get(), Sel("layer"));
    send<void>(layer, Sel("setCornerRadius:"), kCardCornerRadius);
    send<void>(layer, Sel("setMasksToBounds:"), BOOL{1});
    Retained imageView = Retained::adopt(newView("UIImageView", CGRect{}));
    send<void>(view.get(), Sel("addSubview:"), imageView.get());
    card(view.get()).imageView = imageView;
    send<void>(container.get(), Sel("addSubview:"), view.get());
    pool.push_back(container);
  }
  id view = subviewsOf(pool[i].get()).front();
  card(view).bundle = bundle;
  send<void>(card(view).imageView.get(), Sel("setImage:"), snapshotImage(bundle));
  send<void>(view, Sel("setNeedsLayout"));
  send<void>(view, Sel("layoutIfNeeded"));
  CGAffineTransform scale{kDeckScale, 0, 0, kDeckScale, 0, 0};
  send<void>(view, Sel("setTransform:"), scale);
  return view;
}

id snapshotCard(size_t i, const std::string& bundle) {
  CGRect s = screen();
  CGRect frame = platform::makeRect(static_cast<double>(i) * s.size.width * 0.6, 0,
                                    s.size.width * 0.6, s.size.height * 0.6);
  id view = newView("SBAppSwitcherSnapshotView", frame);
  card(view).bundle = bundle;
  Retained imageView = Retained::adopt(send<id>(
      platform::sendClass<id>(platform::classNamed("SBSwitcherSnapshotImageView"), Sel("alloc")),
      Sel("initWithImage:"), snapshotImage(bundle)));
  send<void>(view, Sel("addSubview:"), imageView.get());
  card(view).imageView = imageView;
  // Told it is being presented where the platform tells it so (through iOS 9).
  platform::sendIfResponds(view, Sel("_viewPresenting:"), id{nullptr});
  send<void>(view, Sel("setNeedsLayout"));
  send<void>(view, Sel("layoutIfNeeded"));
  send<void>(imageView.get(), Sel("setNeedsLayout"));
  send<void>(imageView.get(), Sel("layoutIfNeeded"));
  return send<id>(view, Sel("autorelease"));
}

id sliderCard(size_t i, const std::string& bundle) {
  CGRect s = screen();
  CGRect frame = platform::makeRect(static_cast<double>(i) * s.size.width * 0.6, 0,
                                    s.size.width * 0.6, s.size.height * 0.6);
  id view = newView("SBAppSliderSnapshotView", frame);
  card(view).bundle = bundle;
  // The snapshot the app left, from the cache; loaded when not cached.
  id infos = arrayOf({infoFor("snapshot", bundle)});
  id found = nullptr;
  id image = send<id>(view, Sel("_cachedImageForImageInfos:downscaled:foundInfo:"), infos, BOOL{0},
                      &found);
  if (image != nullptr) {
    card(view).image.reset(image);
  } else {
    send<void>(view, Sel("_loadImageAsyncFromSnapshotInfo:"), platform::arrayObjectAt(infos, 0));
  }
  return send<id>(view, Sel("autorelease"));
}

}  // namespace

void showSwitcherCards() {
  auto& shown = cards().shown;
  shown.clear();
  const auto& recents = springBoard().recents;
  for (size_t i = 0; i < recents.size(); ++i) {
    id view = nullptr;
    if (cataloguedHere("SBAppSwitcherReusableSnapshotView")) {
      view = reusableCard(i, recents[i]);
    } else if (cataloguedHere("SBAppSwitcherSnapshotView")) {
      view = snapshotCard(i, recents[i]);
    } else if (cataloguedHere("SBAppSliderSnapshotView")) {
      view = sliderCard(i, recents[i]);
    }
    if (view != nullptr) shown.emplace_back(view);
  }
  for (const auto& c : shown) layOutBelow(c.get());
  logCards();
}

void hideSwitcherCards() {
  cards().shown.clear();
}

bool zoomUpToCard(const std::string& bundle) {
  Retained view;
  for (const auto& c : cards().shown) {
    if (card(c.get()).bundle == bundle && platform::isKindOf(c.get(), "SBAppSwitcherSnapshotView"))
      view = c;
  }
  // Kept: the zoom-up may close the switcher, which lets its cards go.
  if (!view) return false;
  if (platform::respondsTo(view.get(),
                           Sel("_crossfadeToZoomUpViewIfNecessaryForTransitionRequest:"))) {
    send<void>(view.get(), Sel("_crossfadeToZoomUpViewIfNecessaryForTransitionRequest:"),
               id{nullptr});
  } else {
    send<void>(view.get(), Sel("_crossfadeToZoomUpViewIfNecessary"));
  }
  return brindleInstalled();
}

void defineSwitcherCards() {
  ClassBuilder reusable("SBAppSwitcherReusableSnapshotView", "UIView");
  addCatalogued(reusable, "-_applicationForRole:", imp(applicationForRole));
  addCatalogued(reusable, "-layoutSubviews", imp(reusableLayout));
  if (cataloguedHere("SBAppSwitcherReusableSnapshotView")) reusable.build();

  ClassBuilder snapshot("SBAppSwitcherSnapshotView", "UIView");
  addCatalogued(snapshot, "-displayItem", imp(snapshotDisplayItem));
  addCatalogued(snapshot, "-snapshotImageView", imp(snapshotImageView));
  addCatalogued(snapshot, "-layoutSubviews", imp(snapshotLayout));
  addCatalogued(snapshot, "-_viewPresenting:", imp(viewPresenting));
  addCatalogued(snapshot, "-_crossfadeToZoomUpViewIfNecessary", imp(crossfade));
  addCatalogued(snapshot, "-_crossfadeToZoomUpViewIfNecessaryForTransitionRequest:",
                imp(crossfadeForRequest));
  if (cataloguedHere("SBAppSwitcherSnapshotView")) snapshot.build();
  ClassBuilder imageView("SBSwitcherSnapshotImageView", "UIImageView");
  addCatalogued(imageView, "-layoutSubviews", imp(imageViewLayout));
  if (cataloguedHere("SBSwitcherSnapshotImageView")) imageView.build();

  ClassBuilder slider("SBAppSliderSnapshotView", "UIView");
  addCatalogued(slider, "-application", imp(sliderApplication));
  addCatalogued(slider, "-_snapshotInfoForDefaultPNG", imp(sliderDefaultInfo));
  addCatalogued(slider, "-_cachedImageForImageInfos:foundInfo:", imp(cachedImage));
  addCatalogued(slider,
                "-_cachedImageForImageInfos:downscaled:foundInfo:", imp(cachedImageDownscaled));
  addCatalogued(slider, "-_defaultImageforImageInfo:", imp(defaultImage));
  addCatalogued(slider, "-_cgImageForSnapshotInfo:", imp(cgImage));
  addCatalogued(slider, "-_cgImageForSnapshotInfo:downscaled:", imp(cgImageDownscaled));
  addCatalogued(slider, "-_loadImageAsyncFromSnapshotInfo:", imp(loadImageAsync));
  if (cataloguedHere("SBAppSliderSnapshotView")) slider.build();

  // covered BUNDLE-ID: whether the switcher shows that app's card hidden.
  host::registerQuery("covered", [](const std::vector<std::string>& args) {
    for (const auto& c : cards().shown) {
      if (args.empty() || card(c.get()).bundle != args[0]) continue;
      Looks looks = looksOf(c.get());
      return Value::dictionary({{"card", Value::boolean(true)},
                                {"covered", Value::boolean(looks.covered)},
                                {"text", Value::boolean(looks.text)},
                                {"details", Value::string(looks.details)}});
    }
    return Value::dictionary({{"card", Value::boolean(false)}});
  });
}

}  // namespace kv::sim::frameworks
