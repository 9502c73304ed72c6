// An owning reference to an Objective-C object: retains on taking, releases
// on letting go, so a kept object can neither leak nor dangle.
#pragma once

#include <utility>

#include "platform/runtime.h"

namespace kv::platform {

class Retained {
 public:
  Retained() = default;
  // Takes a new reference to `obj` (retains it).
  explicit Retained(id obj) : obj_(retain(obj)) {}
  // Takes over a reference the caller already owns (alloc/init, copy, new).
  static Retained adopt(id obj) {
    Retained r;
    r.obj_ = obj;
    return r;
  }
  Retained(const Retained& other) : obj_(retain(other.obj_)) {}
  Retained(Retained&& other) noexcept : obj_(std::exchange(other.obj_, nullptr)) {}
  Retained& operator=(const Retained& other) {
    if (this != &other) reset(other.obj_);
    return *this;
  }
  Retained& operator=(Retained&& other) noexcept {
    if (this != &other) {
      release(obj_);
      obj_ = std::exchange(other.obj_, nullptr);
    }
    return *this;
  }
  ~Retained() { release(obj_); }

  id get() const { return obj_; }
  explicit operator bool() const { return obj_ != nullptr; }

  // Retains `obj` and releases what was held before (in that order, so that
  // resetting to the same object is safe).
  void reset(id obj = nullptr) {
    id old = obj_;
    obj_ = retain(obj);
    release(old);
  }

  // Gives up ownership without releasing; the caller now owns the reference.
  id take() { return std::exchange(obj_, nullptr); }

 private:
  static id retain(id obj) {
    static const Sel kRetain("retain");
    return obj == nullptr ? nullptr : send<id>(obj, kRetain);
  }
  static void release(id obj) {
    static const Sel kRelease("release");
    if (obj != nullptr) send<void>(obj, kRelease);
  }

  id obj_ = nullptr;
};

}  // namespace kv::platform
