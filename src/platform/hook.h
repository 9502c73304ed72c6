// The interception mechanism: a replacement for a platform method, installed
// so that it can still reach the platform's own implementation, and methods
// added to platform classes. Rows are data; installing a list of rows yields
// a report that says, per row, what happened.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "platform/encoding.h"
#include "platform/runtime.h"

namespace kv::platform {

// The process-wide slots of one interception.
struct HookSlots {
  Class superclass = nullptr;  // the target class's superclass, for the super-call stub
  IMP saved = nullptr;         // what the replacement calls for the platform's behaviour
  bool installed = false;      // set by the one installation that wrote these slots
};

// What a typed replacement brings to its row.
struct HookInfo {
  IMP replacement;       // installed in the platform method's place
  IMP superStub;         // sends the same selector and arguments to super
  std::string encoding;  // the method encoding its C++ signature stands for
  HookSlots* slots;
};
using HookInfoFn = const HookInfo& (*)();

// A typed interception, identified by its replacement function F. F has the
// platform method's C signature, R F(id self, SEL _cmd, A... args); it reaches
// the platform's behaviour through Hook<&F>::original(self, _cmd, args...).
// One replacement function serves one row: a second row naming the same F is
// refused at install time (kAlreadyInstalled), so write one function per row.
template <auto F>
struct Hook;

template <typename R, typename... A, R (*F)(id, SEL, A...)>
struct Hook<F> {
  static inline HookSlots slots;

  // The super-call stub: the platform behaviour of a method the class only
  // inherits, looked up in the superclass at call time.
  static R superStub(id self, SEL cmd, A... args) {
    return sendSuper<R>(slots.superclass, self, cmd, args...);
  }

  // Calls the saved implementation with exactly the given arguments. Before
  // installation there is none: it answers zero, like a message to nil.
  static R original(id self, SEL cmd, A... args) {
    if (slots.saved == nullptr) {
      if constexpr (std::is_void_v<R>) {
        return;
      } else {
        return R{};
      }
    }
    return reinterpret_cast<R (*)(id, SEL, A...)>(slots.saved)(self, cmd, args...);
  }

  static const HookInfo& info() {
    static const HookInfo kInfo{reinterpret_cast<IMP>(F), reinterpret_cast<IMP>(&superStub),
                                methodEncoding<R, A...>(), &slots};
    return kInfo;
  }
};

// A variadic platform method (`+raise:format:`): F takes the fixed arguments
// and then `...`. The variadic part cannot be passed on as it came, so the
// replacement passes its own through original, which calls the saved
// implementation as the variadic function it is. The encoding covers the
// fixed arguments, as the platform's does.
template <typename R, typename... A, R (*F)(id, SEL, A..., ...)>
struct Hook<F> {
  static inline HookSlots slots;

  // An inherited variadic method cannot be reached through super with its
  // variadic part; the superclass's implementation is called directly.
  static R superStub(id self, SEL cmd, A... args, ...) {
    IMP imp = class_getMethodImplementation(slots.superclass, cmd);
    if constexpr (std::is_void_v<R>) {
      reinterpret_cast<R (*)(id, SEL, A...)>(imp)(self, cmd, args...);
    } else {
      return reinterpret_cast<R (*)(id, SEL, A...)>(imp)(self, cmd, args...);
    }
  }

  template <typename... V>
  static R original(id self, SEL cmd, A... args, V... variadic) {
    if (slots.saved == nullptr) {
      if constexpr (std::is_void_v<R>) {
        return;
      } else {
        return R{};
      }
    }
    return reinterpret_cast<R (*)(id, SEL, A..., ...)>(slots.saved)(self, cmd, args...,
                                                                    variadic...);
  }

  static const HookInfo& info() {
    static const HookInfo kInfo{reinterpret_cast<IMP>(F), reinterpret_cast<IMP>(&superStub),
                                methodEncoding<R, A...>(), &slots};
    return kInfo;
  }
};

// A method the library adds to a platform class: its implementation F.
template <auto F>
struct Addition {
  static const HookInfo& info() {
    static const HookInfo kInfo{reinterpret_cast<IMP>(F), nullptr, std::string(), nullptr};
    return kInfo;
  }
};

enum class RowKind { kReplaced, kAdded };

// One interception or addition: class, method ("-sel" for an instance method,
// "+sel" for a class method), kind, and what to install.
struct Row {
  const char* className;
  const char* method;
  RowKind kind;
  HookInfoFn hook;
  const char* encoding;  // added rows: the fixed type encoding they are added with
  bool pending;          // behaviour not built yet: listed, never installed
};

// A replaced row: F takes the place of CLASS's METHOD.
template <auto F>
constexpr Row replaced(const char* className, const char* method) {
  return Row{className, method, RowKind::kReplaced, &Hook<F>::info, nullptr, false};
}

// An added row: F is added to CLASS as METHOD with ENCODING, unless the class
// already has such a method.
template <auto F>
constexpr Row added(const char* className, const char* method, const char* encoding) {
  return Row{className, method, RowKind::kAdded, &Addition<F>::info, encoding, false};
}

// A row whose behaviour is not built yet: listed in reports, never installed.
constexpr Row pendingRow(const char* className, const char* method) {
  return Row{className, method, RowKind::kReplaced, nullptr, nullptr, true};
}
constexpr Row pendingAddition(const char* className, const char* method, const char* encoding) {
  return Row{className, method, RowKind::kAdded, nullptr, encoding, true};
}

// What installing one row did.
enum class InstallStatus {
  kInstalled,           // the class's own method now runs the replacement
  kInstalledInherited,  // the replacement was added over an inherited method
  kAdded,               // an added row's method was added
  kClassMissing,        // no such class in this process: skipped
  kSelectorMissing,     // the class has no such method: skipped
  kSignatureMismatch,   // the method's encoding disagrees with the replacement's: skipped
  kAlreadyPresent,      // an added row whose class already has the method: unchanged
  kAlreadyInstalled,    // this replacement's slots were written before: not installed twice
  kPending,             // the row's behaviour is not built yet: not installed
  kMalformed,           // the row's method is not "-sel" or "+sel": skipped
};

// Returns the word a report prints for a status: "installed", "added",
// "skipped" or "pending".
const char* statusWord(InstallStatus status);

// Returns the reason behind a status ("class missing", "signature", ...), or
// "" where the word says it all.
const char* statusReason(InstallStatus status);

struct InstallRecord {
  const Row* row;
  InstallStatus status;
  int lateImage = 0;  // installed when the Nth image after start-up was added; 0: at start-up
};

// Installs one row by the procedure of the interception mechanism.
InstallStatus installRow(const Row& row);

// Installs rows in order and reports each.
std::vector<InstallRecord> installRows(std::span<const Row> rows);

// Returns the report line of one record: "STATUS CLASS -selector", with the
// reason in parentheses for a skipped row.
std::string describe(const InstallRecord& record);

}  // namespace kv::platform
