// Core Animation as views use it: layers with their timing (speed, time
// offset, pausing), corner radius and masking, keyed animations, property
// animations, and the media clock, which is the device's virtual clock.
#include <algorithm>
#include <cmath>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/classes.h"
#include "sim/host/run_loop.h"

extern "C" double CACurrentMediaTime(void) {
  return kv::sim::host::now();
}

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendSuper;

namespace {

// ---- CAAnimation ----

struct AnimationState {
  Retained keyPath, fromValue, toValue, byValue, fillMode, timingFunction, delegate;
  double duration = 0, beginTime = 0, timeOffset = 0;
  float repeatCount = 0, speed = 1;
  bool autoreverses = false, removedOnCompletion = true;
};

id animationWithKeyPath(id cls, SEL, id keyPath) {
  id animation = autoreleasedNew(cls);
  stateOf<AnimationState>(animation).keyPath = Retained::adopt(send<id>(keyPath, Sel("copy")));
  return animation;
}
id animationCopy(id self, SEL, void*) {
  id copy = host::newObject(object_getClass(self));
  stateOf<AnimationState>(copy) = stateOf<AnimationState>(self);
  return copy;
}

// Accessors of one object-valued animation property.
template <Retained AnimationState::*Field>
id getObject(id self, SEL) {
  return (stateOf<AnimationState>(self).*Field).get();
}
template <Retained AnimationState::*Field>
void setObject(id self, SEL, id value) {
  (stateOf<AnimationState>(self).*Field).reset(value);
}
template <typename T, T AnimationState::*Field>
T getScalar(id self, SEL) {
  return stateOf<AnimationState>(self).*Field;
}
template <typename T, T AnimationState::*Field>
void setScalar(id self, SEL, T value) {
  stateOf<AnimationState>(self).*Field = value;
}
BOOL animationAutoreverses(id self, SEL) {
  return stateOf<AnimationState>(self).autoreverses;
}
void animationSetAutoreverses(id self, SEL, BOOL on) {
  stateOf<AnimationState>(self).autoreverses = on;
}
BOOL animationRemoved(id self, SEL) {
  return stateOf<AnimationState>(self).removedOnCompletion;
}
void animationSetRemoved(id self, SEL, BOOL on) {
  stateOf<AnimationState>(self).removedOnCompletion = on;
}

// ---- CALayer ----

struct LayerState {
  std::vector<std::pair<std::string, Retained>> animations;  // in the order added
  float speed = 1, opacity = 1;
  double timeOffset = 0, beginTime = 0;
  double cornerRadius = 0;
  bool masksToBounds = false;
  CATransform3D transform{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  id delegate = nullptr;  // the view the layer backs; not retained
};

void layerChanged(id layer) {
  if (id view = stateOf<LayerState>(layer).delegate) noteViewChanged(view);
}

void removeAnimation(id self, const std::string& key, id only = nullptr) {
  auto& list = stateOf<LayerState>(self).animations;
  for (auto it = list.begin(); it != list.end(); ++it) {
    if (it->first != key || (only != nullptr && it->second.get() != only)) continue;
    Retained gone = std::move(it->second);
    list.erase(it);
    layerChanged(self);
    return;
  }
}

// The layer keeps a copy; a finite one leaves when it has run (unless told
// to stay), measured on the media clock at the layer's speed.
void layerAddAnimation(id self, SEL, id animation, id key) {
  if (animation == nullptr) return;
  std::string name = key == nullptr ? "" : platform::toString(key);
  removeAnimation(self, name);
  Retained copy = Retained::adopt(send<id>(animation, Sel("copy")));
  const AnimationState& a = stateOf<AnimationState>(copy.get());
  double runs = std::max(a.repeatCount, 1.0f) * (a.autoreverses ? 2 : 1);
  float speed = stateOf<LayerState>(self).speed * a.speed;
  if (a.removedOnCompletion && std::isfinite(runs) && speed > 0) {
    Retained layer(self), only(copy.get());
    double duration = a.duration > 0 ? a.duration : 0.25;  // Core Animation's default
    host::scheduleAfter(duration * runs / speed,
                        [layer, only, name] { removeAnimation(layer.get(), name, only.get()); });
  }
  stateOf<LayerState>(self).animations.emplace_back(name, std::move(copy));
  layerChanged(self);
}
id layerAnimationForKey(id self, SEL, id key) {
  std::string name = platform::toString(key);
  for (auto& [k, a] : stateOf<LayerState>(self).animations) {
    if (k == name && !name.empty()) return a.get();
  }
  return nullptr;
}
id layerAnimationKeys(id self, SEL) {
  std::vector<std::string> keys;
  for (auto& entry : stateOf<LayerState>(self).animations) {
    if (!entry.first.empty()) keys.push_back(entry.first);
  }
  return keys.empty() ? nullptr : platform::makeStringList(keys);
}
void layerRemoveAnimation(id self, SEL, id key) {
  removeAnimation(self, platform::toString(key));
}
void layerRemoveAll(id self, SEL) {
  auto gone = std::move(stateOf<LayerState>(self).animations);
  stateOf<LayerState>(self).animations.clear();
  if (!gone.empty()) layerChanged(self);
}
float layerSpeed(id self, SEL) {
  return stateOf<LayerState>(self).speed;
}
void layerSetSpeed(id self, SEL, float speed) {
  stateOf<LayerState>(self).speed = speed;
}
float layerOpacity(id self, SEL) {
  return stateOf<LayerState>(self).opacity;
}
void layerSetOpacity(id self, SEL, float opacity) {
  stateOf<LayerState>(self).opacity = opacity;
}
double layerTimeOffset(id self, SEL) {
  return stateOf<LayerState>(self).timeOffset;
}
void layerSetTimeOffset(id self, SEL, double t) {
  stateOf<LayerState>(self).timeOffset = t;
}
double layerBeginTime(id self, SEL) {
  return stateOf<LayerState>(self).beginTime;
}
void layerSetBeginTime(id self, SEL, double t) {
  stateOf<LayerState>(self).beginTime = t;
}
CATransform3D layerTransform(id self, SEL) {
  return stateOf<LayerState>(self).transform;
}
void layerSetTransform(id self, SEL, CATransform3D t) {
  stateOf<LayerState>(self).transform = t;
}
double layerCornerRadius(id self, SEL) {
  return stateOf<LayerState>(self).cornerRadius;
}
void layerSetCornerRadius(id self, SEL, double radius) {
  stateOf<LayerState>(self).cornerRadius = radius;
  layerChanged(self);
}
BOOL layerMasksToBounds(id self, SEL) {
  return stateOf<LayerState>(self).masksToBounds ? 1 : 0;
}
void layerSetMasksToBounds(id self, SEL, BOOL on) {
  stateOf<LayerState>(self).masksToBounds = on != 0;
  layerChanged(self);
}
id layerDelegate(id self, SEL) {
  return stateOf<LayerState>(self).delegate;
}
void layerSetDelegate(id self, SEL, id delegate) {
  stateOf<LayerState>(self).delegate = delegate;
}

// A layer's local time of media time t is (t - beginTime) * speed + timeOffset;
// layers convert through media time (the views' layers share one parent).
double layerConvertTime(id self, SEL, double t, id from) {
  if (from != nullptr) {
    const LayerState& f = stateOf<LayerState>(from);
    t = f.speed == 0 ? f.beginTime : (t - f.timeOffset) / f.speed + f.beginTime;
  }
  const LayerState& s = stateOf<LayerState>(self);
  return (t - s.beginTime) * s.speed + s.timeOffset;
}

void defineAnimations() {
  using S = AnimationState;
  ClassBuilder("CAMediaTimingFunction", "NSObject")
      .classMethod("functionWithName:", imp(+[](id cls, SEL, id) { return autoreleasedNew(cls); }),
                   "@@:@")
      .build();
  ClassBuilder("CAAnimation", "NSObject")
      .classMethod("animation", imp(+[](id cls, SEL) { return autoreleasedNew(cls); }), "@@:")
      .instance("copyWithZone:", imp(animationCopy), "@@:^v")
      .instance("duration", imp(getScalar<double, &S::duration>), "d@:")
      .instance("setDuration:", imp(setScalar<double, &S::duration>), "v@:d")
      .instance("beginTime", imp(getScalar<double, &S::beginTime>), "d@:")
      .instance("setBeginTime:", imp(setScalar<double, &S::beginTime>), "v@:d")
      .instance("timeOffset", imp(getScalar<double, &S::timeOffset>), "d@:")
      .instance("setTimeOffset:", imp(setScalar<double, &S::timeOffset>), "v@:d")
      .instance("repeatCount", imp(getScalar<float, &S::repeatCount>), "f@:")
      .instance("setRepeatCount:", imp(setScalar<float, &S::repeatCount>), "v@:f")
      .instance("speed", imp(getScalar<float, &S::speed>), "f@:")
      .instance("setSpeed:", imp(setScalar<float, &S::speed>), "v@:f")
      .instance("autoreverses", imp(animationAutoreverses), "C@:")
      .instance("setAutoreverses:", imp(animationSetAutoreverses), "v@:C")
      .instance("isRemovedOnCompletion", imp(animationRemoved), "C@:")
      .instance("setRemovedOnCompletion:", imp(animationSetRemoved), "v@:C")
      .instance("fillMode", imp(getObject<&S::fillMode>), "@@:")
      .instance("setFillMode:", imp(setObject<&S::fillMode>), "v@:@")
      .instance("timingFunction", imp(getObject<&S::timingFunction>), "@@:")
      .instance("setTimingFunction:", imp(setObject<&S::timingFunction>), "v@:@")
      .instance("delegate", imp(getObject<&S::delegate>), "@@:")
      .instance("setDelegate:", imp(setObject<&S::delegate>), "v@:@")
      .build();
  ClassBuilder("CAPropertyAnimation", "CAAnimation")
      .classMethod("animationWithKeyPath:", imp(animationWithKeyPath), "@@:@")
      .instance("keyPath", imp(getObject<&S::keyPath>), "@@:")
      .instance("setKeyPath:", imp(setObject<&S::keyPath>), "v@:@")
      .build();
  ClassBuilder("CABasicAnimation", "CAPropertyAnimation")
      .instance("fromValue", imp(getObject<&S::fromValue>), "@@:")
      .instance("setFromValue:", imp(setObject<&S::fromValue>), "v@:@")
      .instance("toValue", imp(getObject<&S::toValue>), "@@:")
      .instance("setToValue:", imp(setObject<&S::toValue>), "v@:@")
      .instance("byValue", imp(getObject<&S::byValue>), "@@:")
      .instance("setByValue:", imp(setObject<&S::byValue>), "v@:@")
      .build();
}

}  // namespace

void defineCoreAnimation() {
  ClassBuilder("CALayer", "NSObject")
      .instance("addAnimation:forKey:", imp(layerAddAnimation), "v@:@@")
      .instance("animationForKey:", imp(layerAnimationForKey), "@@:@")
      .instance("animationKeys", imp(layerAnimationKeys), "@@:")
      .instance("removeAnimationForKey:", imp(layerRemoveAnimation), "v@:@")
      .instance("removeAllAnimations", imp(layerRemoveAll), "v@:")
      .instance("speed", imp(layerSpeed), "f@:")
      .instance("setSpeed:", imp(layerSetSpeed), "v@:f")
      .instance("opacity", imp(layerOpacity), "f@:")
      .instance("setOpacity:", imp(layerSetOpacity), "v@:f")
      .instance("timeOffset", imp(layerTimeOffset), "d@:")
      .instance("setTimeOffset:", imp(layerSetTimeOffset), "v@:d")
      .instance("beginTime", imp(layerBeginTime), "d@:")
      .instance("setBeginTime:", imp(layerSetBeginTime), "v@:d")
      .instance("convertTime:fromLayer:", imp(layerConvertTime), "d@:d@")
      .instance("transform", imp(layerTransform), typesOf(layerTransform).c_str())
      .instance("setTransform:", imp(layerSetTransform), typesOf(layerSetTransform).c_str())
      .instance("cornerRadius", imp(layerCornerRadius), "d@:")
      .instance("setCornerRadius:", imp(layerSetCornerRadius), "v@:d")
      .instance("masksToBounds", imp(layerMasksToBounds), "C@:")
      .instance("setMasksToBounds:", imp(layerSetMasksToBounds), "v@:C")
      .instance("delegate", imp(layerDelegate), "@@:")
      .instance("setDelegate:", imp(layerSetDelegate), "v@:@")
      .build();
  defineAnimations();
}

}  // namespace kv::sim::frameworks
