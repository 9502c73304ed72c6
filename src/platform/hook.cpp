// The interception mechanism.
#include "platform/hook.h"

#include <cstring>

namespace kv::platform {

namespace {

// Splits "-sel" / "+sel" into the selector name and whether it is a class
// method; false when the method has neither prefix.
bool splitMethod(const char* method, std::string& name, bool& classMethod) {
  if (method == nullptr || (method[0] != '-' && method[0] != '+') || method[1] == '\0') {
    return false;
  }
  classMethod = method[0] == '+';
  name = method + 1;
  return true;
}

#if !KV_APPLE_RUNTIME
// GCC's runtime: rebuilds the dispatch tables of a class and its subclasses.
extern "C" void __objc_update_dispatch_table_for_class(Class cls);
#endif

// GCC's runtime gives a class that has never been messaged a shared
// placeholder dispatch table; changing a method's implementation before the
// class has its own table writes into that placeholder, where every other
// unmessaged class then finds it. Asking the class whether it responds builds
// its own table first. Apple's runtime has no such placeholder.
void prepareDispatchTable(Class cls, SEL sel) {
#if !KV_APPLE_RUNTIME
  (void)class_respondsToSelector(cls, sel);
#else
  (void)cls;
  (void)sel;
#endif
}

// GCC's runtime also keeps a copy of an inherited implementation in the
// dispatch table of a subclass that has been messaged; a changed
// implementation reaches those copies only when the tables are rebuilt.
// Apple's runtime looks methods up afresh through its caches.
void refreshSubclasses(Class cls) {
#if !KV_APPLE_RUNTIME
  __objc_update_dispatch_table_for_class(cls);
#else
  (void)cls;
#endif
}

InstallStatus installReplacement(const Row& row, Class cls, SEL sel) {
  const HookInfo& info = row.hook();
  HookSlots& slots = *info.slots;

  // The class and its superclass, for the super-call stub.
  if (cls == nullptr) return InstallStatus::kClassMissing;
  Class superclass = class_getSuperclass(cls);

  // The method, own or inherited; none leaves the row uninstalled.
  Method method = class_getInstanceMethod(cls, sel);
  if (method == nullptr) return InstallStatus::kSelectorMissing;
  const char* types = method_getTypeEncoding(method);
  if (types == nullptr || !encodingsCompatible(types, info.encoding)) {
    return InstallStatus::kSignatureMismatch;
  }
  // Slots are written by one installation only, and our own replacement is
  // never recorded as the platform's implementation.
  if (slots.installed || method_getImplementation(method) == info.replacement) {
    return InstallStatus::kAlreadyInstalled;
  }

  prepareDispatchTable(cls, sel);
  slots.superclass = superclass;
  slots.installed = true;

  // Until proven otherwise the platform behaviour is the superclass's.
  slots.saved = info.superStub;

  // Inherited only: the replacement overrides it in this class alone, and
  // the stub keeps following the superclass's method at call time.
  if (class_addMethod(cls, sel, info.replacement, types)) {
    return InstallStatus::kInstalledInherited;
  }

  // Own method: exchange, keeping what the exchange hands back.
  slots.saved = method_getImplementation(method);
  IMP previous = method_setImplementation(method, info.replacement);
  if (previous != nullptr) slots.saved = previous;
  refreshSubclasses(cls);
  return InstallStatus::kInstalled;
}

InstallStatus installAddition(const Row& row, Class cls, SEL sel) {
  if (cls == nullptr) return InstallStatus::kClassMissing;
  if (row.encoding == nullptr) return InstallStatus::kMalformed;
  prepareDispatchTable(cls, sel);
  return class_addMethod(cls, sel, row.hook().replacement, row.encoding)
             ? InstallStatus::kAdded
             : InstallStatus::kAlreadyPresent;
}

}  // namespace

InstallStatus installRow(const Row& row) {
  if (row.pending) return InstallStatus::kPending;
  std::string name;
  bool classMethod = false;
  if (row.hook == nullptr || !splitMethod(row.method, name, classMethod)) {
    return InstallStatus::kMalformed;
  }
  Class cls = classNamed(row.className);
  if (cls != nullptr && classMethod) cls = metaclassOf(cls);
  SEL sel = selector(name.c_str());
  return row.kind == RowKind::kReplaced ? installReplacement(row, cls, sel)
                                        : installAddition(row, cls, sel);
}

std::vector<InstallRecord> installRows(std::span<const Row> rows) {
  std::vector<InstallRecord> report;
  report.reserve(rows.size());
  for (const Row& row : rows) report.push_back({&row, installRow(row)});
  return report;
}

const char* statusWord(InstallStatus status) {
  switch (status) {
    case InstallStatus::kInstalled:
    case InstallStatus::kInstalledInherited: return "installed";
    case InstallStatus::kAdded: return "added";
    case InstallStatus::kPending: return "pending";
    case InstallStatus::kClassMissing:
    case InstallStatus::kSelectorMissing:
    case InstallStatus::kSignatureMismatch:
    case InstallStatus::kAlreadyPresent:
    case InstallStatus::kAlreadyInstalled:
    case InstallStatus::kMalformed: return "skipped";
  }
  return "skipped";
}

const char* statusReason(InstallStatus status) {
  switch (status) {
    case InstallStatus::kInstalledInherited: return "over inherited method";
    case InstallStatus::kClassMissing: return "class missing";
    case InstallStatus::kSelectorMissing: return "selector missing";
    case InstallStatus::kSignatureMismatch: return "signature";
    case InstallStatus::kAlreadyPresent: return "already present";
    case InstallStatus::kAlreadyInstalled: return "already installed";
    case InstallStatus::kMalformed: return "malformed row";
    case InstallStatus::kInstalled:
    case InstallStatus::kAdded:
    case InstallStatus::kPending: return "";
  }
  return "";
}

std::string describe(const InstallRecord& record) {
  std::string line = statusWord(record.status);
  line += ' ';
  line += record.row->className ? record.row->className : "?";
  line += ' ';
  line += record.row->method ? record.row->method : "?";
  const char* reason = statusReason(record.status);
  if (*reason != '\0' && std::strcmp(statusWord(record.status), "skipped") == 0) {
    line += " (";
    line += reason;
    line += ')';
  }
  if (record.lateImage > 0) line += " (late: image " + std::to_string(record.lateImage) + ")";
  return line;
}

}  // namespace kv::platform
