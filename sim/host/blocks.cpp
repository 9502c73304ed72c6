// Blocks as objects. On a device every block is an Objective-C object of one
// of three classes (on the stack, on the heap, global) that answers retain,
// release, copy and autorelease; a stored call that retains its arguments
// therefore retains a block argument too. GCC's runtime knows nothing of
// blocks: the blocks runtime's class words are bare storage, and a message to
// a block would crash. This makes that storage the three classes.
#include "sim/host/blocks.h"

#include <Block.h>
#include <malloc.h>

#include <algorithm>
#include <cstring>

#include "platform/runtime.h"

extern "C" {
// The class words of the blocks runtime: a block's isa points at one of them.
extern void* _NSConcreteStackBlock[32];
extern void* _NSConcreteMallocBlock[32];
extern void* _NSConcreteGlobalBlock[32];
}

namespace kv::sim::host {

namespace {

// A block on the heap counts its references; one on the stack (or a global
// one) lives as long as its frame (or the program): retain and release
// change nothing, copy moves it to the heap, as on a device. This blocks
// runtime leaves a heap copy's class word as it was and marks the copy in
// its flags instead, so the flags decide.
constexpr int kBlockNeedsFree = 1 << 24;

struct BlockHeader {
  void* isa;
  int flags;
};

bool onHeap(id block) {
  return (reinterpret_cast<const BlockHeader*>(block)->flags & kBlockNeedsFree) != 0;
}

id blockRetain(id self, SEL) {
  return onHeap(self) ? static_cast<id>(const_cast<void*>(_Block_copy(self))) : self;
}
void blockRelease(id self, SEL) {
  if (onHeap(self)) _Block_release(self);
}
id blockCopy(id self, SEL) {
  return static_cast<id>(const_cast<void*>(_Block_copy(self)));
}
id blockCopyWithZone(id self, SEL cmd, void*) {
  return blockCopy(self, cmd);
}
id blockAutorelease(id self, SEL) {
  if (onHeap(self)) {
    platform::sendClass<void>(platform::classNamed("NSAutoreleasePool"),
                              platform::Sel("addObject:"), self);
  }
  return self;
}

struct BlockClass {
  const char* name;
  void** storage;
};

// Builds the class under construction, then moves it into the blocks
// runtime's storage for it and registers it there, so that the storage is
// the class a block's isa names.
void install(const BlockClass& kind) {
  if (platform::classNamed(kind.name) != nullptr) return;
  Class built = objc_allocateClassPair(platform::classNamed("NSObject"), kind.name, 0);
  if (built == nullptr) return;
  class_addMethod(built, platform::selector("retain"), reinterpret_cast<IMP>(blockRetain), "@@:");
  class_addMethod(built, platform::selector("release"), reinterpret_cast<IMP>(blockRelease), "v@:");
  class_addMethod(built, platform::selector("autorelease"), reinterpret_cast<IMP>(blockAutorelease),
                  "@@:");
  class_addMethod(built, platform::selector("copy"), reinterpret_cast<IMP>(blockCopy), "@@:");
  class_addMethod(built, platform::selector("copyWithZone:"),
                  reinterpret_cast<IMP>(blockCopyWithZone), "@@:^v");
  size_t size = std::min(malloc_usable_size(built), sizeof(_NSConcreteStackBlock));
  std::memcpy(kind.storage, built, size);
  // The class lives on in the storage; the runtime has not seen the first
  // copy (it is registered only below), so it is given back.
  free(built);
  objc_registerClassPair(reinterpret_cast<Class>(kind.storage));
}

}  // namespace

void installBlockClasses() {
  const BlockClass kKinds[] = {
      {"__NSStackBlock__", _NSConcreteStackBlock},
      {"__NSMallocBlock__", _NSConcreteMallocBlock},
      {"__NSGlobalBlock__", _NSConcreteGlobalBlock},
  };
  for (const auto& kind : kKinds) install(kind);
}

}  // namespace kv::sim::host
