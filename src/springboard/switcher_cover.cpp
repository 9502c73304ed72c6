// What the switcher's cards show of protected apps.
#include "springboard/switcher_cover.h"

#include <cstdio>
#include <unordered_map>

#include "core/policy.h"
#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/invocation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "settings/settings.h"
#include "springboard/blur_view.h"
#include "springboard/gate.h"

namespace kv::springboard {

namespace {

using platform::Hook;
using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendClass;
using platform::sendIfResponds;

const Sel kAlloc("alloc");
const Sel kInitWithFrame("initWithFrame:");
const Sel kInitWithImage("initWithImage:");
const Sel kSubviews("subviews");
const Sel kObjectOfClass("_kv_objectOfClass:");
const Sel kAddSubview("addSubview:");
const Sel kRemoveFromSuperview("removeFromSuperview");
const Sel kFrame("frame");
const Sel kSetFrame("setFrame:");
const Sel kBounds("bounds");
const Sel kCenter("center");
const Sel kSetCenter("setCenter:");
const Sel kLayer("layer");
const Sel kCornerRadius("cornerRadius");
const Sel kSetCornerRadius("setCornerRadius:");
const Sel kSetMasksToBounds("setMasksToBounds:");
const Sel kVisualEffectView("visualEffectView");
const Sel kApplicationForRole("_applicationForRole:");
const Sel kBundleIdentifier("bundleIdentifier");
const Sel kDisplayIdentifier("displayIdentifier");
const Sel kSnapshotInfoForDefaultPNG("_snapshotInfoForDefaultPNG");
const Sel kDefaultImageForInfo("_defaultImageforImageInfo:");
const Sel kImage("image");
const Sel kSetImage("setImage:");
const Sel kTag("tag");
const Sel kSetTag("setTag:");
const Sel kSuperview("superview");
const Sel kCGImage("CGImage");
const Sel kImageWithCGImage("imageWithCGImage:");
const Sel kFilterWithName("filterWithName:");
const Sel kSetValueForKey("setValue:forKey:");
const Sel kValueForKey("valueForKey:");
const Sel kExtent("extent");
const Sel kImageByCroppingToRect("imageByCroppingToRect:");
const Sel kImageWithCIImage("imageWithCIImage:");
const Sel kSharedInstance("sharedInstance");
const Sel kDismissNoninteractively("dismissSwitcherNoninteractively");
const Sel kToggleNoninteractively("toggleSwitcherNoninteractively");
const Sel kIsVisible("isVisible");
const Sel kIsAppSwitcherShowing("isAppSwitcherShowing");
const Sel kToggleSwitcher("_toggleSwitcher");
const Sel kAuthenticate(
    "authenticateForIdentifier:object:selector:arrayOfArgumentsAsNSValuePointers:");

constexpr Integer kPrimaryRole = 1;  // the card's main app (a split card has a side one)
constexpr Integer kBlurredCopyTag = 0x4b76;
constexpr double kSnapshotBlurRadius = 20.0;
constexpr const char* kBrindleLibrary = "/Library/MobileSubstrate/DynamicLibraries/Brindle.dylib";

id bundleOf(id application) {
  return sendIfResponds<id>(application, kBundleIdentifier);
}

bool hidesApp(id bundleIdentifier) {
  return hidesProtectedCards() && isProtectedApp(bundleIdentifier);
}

// ---- The reusable snapshot view's cover ----

// Covers the card while its app is to be hidden, and only then: a card the
// switcher reuses for another app, or one shown while a session is kept,
// loses the cover it had.
void updateCover(id card) {
  Class coverClass = platform::classNamed(kBlurViewClass);
  id cover = coverClass == nullptr ? nullptr
                                   : sendIfResponds<id>(send<id>(card, kSubviews), kObjectOfClass,
                                                        platform::asId(coverClass));
  id application = sendIfResponds<id>(card, kApplicationForRole, kPrimaryRole);
  if (coverClass == nullptr || !hidesApp(bundleOf(application))) {
    send<void>(cover, kRemoveFromSuperview);
    return;
  }
  Retained made;
  if (cover == nullptr) {
    made = Retained::adopt(
        send<id>(sendClass<id>(coverClass, kAlloc), kInitWithFrame, send<CGRect>(card, kFrame)));
    cover = made.get();
  }
  CGRect bounds = send<CGRect>(card, kBounds);
  send<void>(cover, kSetFrame, bounds);
  send<void>(cover, kSetCenter, send<CGPoint>(card, kCenter));
  // Added once: adding again would ask for another layout pass.
  if (made) send<void>(card, kAddSubview, cover);
  // The blur takes the card's shape.
  id effectView = send<id>(cover, kVisualEffectView);
  send<void>(effectView, kSetFrame, bounds);
  id layer = send<id>(effectView, kLayer);
  send<void>(layer, kSetCornerRadius, send<CGFloat>(send<id>(card, kLayer), kCornerRadius));
  send<void>(layer, kSetMasksToBounds, BOOL{1});
}

// ---- The older cards ----

// The app of an iOS 8 slider card.
id sliderApp(id view) {
  return bundleOf(platform::valueForKeyIfPresent(view, "application"));
}

// The snapshot info of the app's launch image when the card is to hide its
// app (nil when the card may show its snapshot or has no launch image).
id launchImageInfo(id view, bool* hide) {
  *hide = hidesApp(sliderApp(view));
  return *hide ? sendIfResponds<id>(view, kSnapshotInfoForDefaultPNG) : nullptr;
}

// A blurred copy of `image` at its own extent, or nil.
id blurredCopy(id image) {
  auto cgImage =
      platform::respondsTo(image, kCGImage) ? send<CGImageRef>(image, kCGImage) : nullptr;
  Class ciImage = platform::classNamed("CIImage");
  Class ciFilter = platform::classNamed("CIFilter");
  if (cgImage == nullptr || ciImage == nullptr || ciFilter == nullptr) return nullptr;
  id input = sendClass<id>(ciImage, kImageWithCGImage, cgImage);
  id filter = sendClass<id>(ciFilter, kFilterWithName, platform::makeString("CIGaussianBlur"));
  if (input == nullptr || filter == nullptr) return nullptr;
  send<void>(filter, kSetValueForKey, input, platform::makeString("inputImage"));
  send<void>(filter, kSetValueForKey, platform::makeReal(kSnapshotBlurRadius),
             platform::makeString("inputRadius"));
  id output = send<id>(filter, kValueForKey, platform::makeString("outputImage"));
  // The blur spreads past the edges; the copy keeps the snapshot's size.
  output = send<id>(output, kImageByCroppingToRect, send<CGRect>(input, kExtent));
  return output == nullptr
             ? nullptr
             : sendClass<id>(platform::classNamed("UIImage"), kImageWithCIImage, output);
}

// The blurred copy laid over `view` earlier, or nil.
id blurredCopyOver(id view) {
  id subviews = send<id>(view, kSubviews);
  for (platform::UInteger i = 0; i < platform::arrayCount(subviews); ++i) {
    id subview = platform::arrayObjectAt(subviews, i);
    if (send<Integer>(subview, kTag) == kBlurredCopyTag) return subview;
  }
  return nullptr;
}

// The snapshot each blurred copy was made from, so that a layout pass with
// the same snapshot costs no new blur (pointers only: nothing is kept alive).
std::unordered_map<id, id>& blurredFrom() {
  static auto* table = new std::unordered_map<id, id>();
  return *table;
}

// Lays a blurred copy of `snapshot` over the whole of `view` while its app
// is to be hidden; takes it away otherwise.
void layBlurredCopy(id view, id bundleIdentifier, id snapshot) {
  id overlay = blurredCopyOver(view);
  if (!hidesApp(bundleIdentifier) || snapshot == nullptr) {
    if (overlay != nullptr) blurredFrom().erase(overlay);
    send<void>(overlay, kRemoveFromSuperview);
    return;
  }
  Retained made;
  if (overlay == nullptr) {
    made = Retained::adopt(send<id>(sendClass<id>(platform::classNamed("UIImageView"), kAlloc),
                                    kInitWithImage, id{nullptr}));
    overlay = made.get();
    send<void>(overlay, kSetTag, kBlurredCopyTag);
  }
  auto [entry, added] = blurredFrom().try_emplace(overlay, nullptr);
  if (added || entry->second != snapshot) {
    // No copy to be had: the overlay stays dark rather than show the snapshot.
    send<void>(overlay, kSetImage, blurredCopy(snapshot));
    entry->second = snapshot;
  }
  send<void>(overlay, kSetFrame, send<CGRect>(view, kBounds));
  // Added once: adding again would ask for another layout pass.
  if (send<id>(overlay, kSuperview) != view) send<void>(view, kAddSubview, overlay);
}

// The app of an iOS 9 or 10 snapshot card: its display item's identifier.
id snapshotViewApp(id view) {
  id item = platform::valueForKeyIfPresent(view, "displayItem");
  return sendIfResponds<id>(item, kDisplayIdentifier);
}

id snapshotViewImage(id view) {
  return sendIfResponds<id>(platform::valueForKeyIfPresent(view, "snapshotImageView"), kImage);
}

void coverSnapshotView(id view) {
  layBlurredCopy(view, snapshotViewApp(view), snapshotViewImage(view));
}

// ---- Brindle's zoom-up ----

bool brindleInstalled() {
  FILE* library = std::fopen(kBrindleLibrary, "r");
  if (library == nullptr) return false;
  std::fclose(library);
  return true;
}

void dismissSwitcher() {
  if (Class mainSwitcher = platform::classNamed("SBMainSwitcherViewController")) {
    id main = sendClass<id>(mainSwitcher, kSharedInstance);
    if (platform::respondsTo(main, kDismissNoninteractively)) {
      send<BOOL>(main, kDismissNoninteractively);
    } else if (sendIfResponds<BOOL>(main, kIsVisible) != 0) {
      sendIfResponds<BOOL>(main, kToggleNoninteractively);
    }
    return;
  }
  id ui = sendClass<id>(platform::classNamed("SBUIController"), kSharedInstance);
  if (sendIfResponds<BOOL>(ui, kIsAppSwitcherShowing) != 0) sendIfResponds(ui, kToggleSwitcher);
}

// A zoom-up to a protected app closes the switcher and waits for the owner;
// true when it was held. Its replay passes the gate and zooms up.
template <typename... A>
bool holdZoomUp(id view, SEL cmd, A... args) {
  id identifier = snapshotViewApp(view);
  if (!brindleInstalled() || !isProtectedApp(identifier) || !gatePasses()) return false;
  id controller = sendClass<id>(platform::classNamed("KavelinController"), kSharedInstance);
  if (controller == nullptr) return false;
  dismissSwitcher();
  platform::AutoreleasePool pool;
  id pointers = platform::makeArray({platform::pointerValue(&args)...});
  send<void>(controller, kAuthenticate, identifier, view, cmd, pointers);
  return true;
}

}  // namespace

bool hidesProtectedCards() {
  const settings::Settings& s = settings::current();
  return s.blurAppSwitcher && s.enabled && !core::sessionExists();
}

void reusableSnapshotLayout(id self, SEL cmd) {
  Hook<&reusableSnapshotLayout>::original(self, cmd);
  updateCover(self);
}

void reusableSnapshotSetTransform(id self, SEL cmd, CGAffineTransform transform) {
  Hook<&reusableSnapshotSetTransform>::original(self, cmd, transform);
  updateCover(self);
}

void reusableSnapshotDealloc(id self, SEL cmd) {
  if (Class coverClass = platform::classNamed(kBlurViewClass)) {
    send<void>(
        sendIfResponds<id>(send<id>(self, kSubviews), kObjectOfClass, platform::asId(coverClass)),
        kRemoveFromSuperview);
  }
  Hook<&reusableSnapshotDealloc>::original(self, cmd);
}

id sliderCachedImage(id self, SEL cmd, id infos, id* foundInfo) {
  bool hide = false;
  id info = launchImageInfo(self, &hide);
  if (!hide) return Hook<&sliderCachedImage>::original(self, cmd, infos, foundInfo);
  if (foundInfo != nullptr) *foundInfo = info;
  return info == nullptr ? nullptr : send<id>(self, kDefaultImageForInfo, info);
}

id sliderCachedImageDownscaled(id self, SEL cmd, id infos, BOOL downscaled, id* foundInfo) {
  bool hide = false;
  id info = launchImageInfo(self, &hide);
  if (!hide) {
    return Hook<&sliderCachedImageDownscaled>::original(self, cmd, infos, downscaled, foundInfo);
  }
  if (foundInfo != nullptr) *foundInfo = info;
  return info == nullptr ? nullptr : send<id>(self, kDefaultImageForInfo, info);
}

id sliderDefaultImage(id self, SEL cmd, id info) {
  bool hide = false;
  id launchInfo = launchImageInfo(self, &hide);
  return Hook<&sliderDefaultImage>::original(self, cmd, hide ? launchInfo : info);
}

CGImageRef sliderCGImage(id self, SEL cmd, id info) {
  bool hide = false;
  id launchInfo = launchImageInfo(self, &hide);
  return Hook<&sliderCGImage>::original(self, cmd, hide ? launchInfo : info);
}

CGImageRef sliderCGImageDownscaled(id self, SEL cmd, id info, BOOL downscaled) {
  bool hide = false;
  id launchInfo = launchImageInfo(self, &hide);
  return Hook<&sliderCGImageDownscaled>::original(self, cmd, hide ? launchInfo : info, downscaled);
}

void sliderLoadImageAsync(id self, SEL cmd, id info) {
  bool hide = false;
  id launchInfo = launchImageInfo(self, &hide);
  Hook<&sliderLoadImageAsync>::original(self, cmd, hide ? launchInfo : info);
}

void snapshotViewPresenting(id self, SEL cmd, id presenting) {
  Hook<&snapshotViewPresenting>::original(self, cmd, presenting);
  coverSnapshotView(self);
}

void snapshotViewLayout(id self, SEL cmd) {
  Hook<&snapshotViewLayout>::original(self, cmd);
  coverSnapshotView(self);
}

void snapshotImageViewLayout(id self, SEL cmd) {
  Hook<&snapshotImageViewLayout>::original(self, cmd);
  // The image view belongs to a snapshot card, which names the app.
  id card = send<id>(self, kSuperview);
  while (card != nullptr && !platform::isKindOf(card, "SBAppSwitcherSnapshotView")) {
    card = send<id>(card, kSuperview);
  }
  if (card == nullptr) return;
  layBlurredCopy(self, snapshotViewApp(card), send<id>(self, kImage));
}

void snapshotZoomUpForRequest(id self, SEL cmd, id request) {
  if (holdZoomUp(self, cmd, request)) return;
  Hook<&snapshotZoomUpForRequest>::original(self, cmd, request);
}

void snapshotZoomUp(id self, SEL cmd) {
  if (holdZoomUp(self, cmd)) return;
  Hook<&snapshotZoomUp>::original(self, cmd);
}

}  // namespace kv::springboard
