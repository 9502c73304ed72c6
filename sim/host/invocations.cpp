// Block arguments in Foundation's method signatures and invocations, as the
// device's Foundation has them. GNUstep on GCC's runtime cannot read the
// block type "@?" (the runtime aborts on the '?') and, as blocks are no
// objects there, cannot retain one. So a signature reads "@?" as a pointer
// to a block literal, and an invocation that retains its arguments copies
// its blocks (and releases the copies when it goes), as NSInvocation's
// retainArguments does on the device.
#include "sim/host/invocations.h"

#include <Block.h>

#include <map>
#include <string>
#include <unordered_map>

#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/runtime.h"
#include "sim/host/classes.h"

namespace kv::sim::host {

using platform::Hook;
using platform::Integer;
using platform::Sel;
using platform::send;

namespace {

constexpr std::string_view kBlockType = "@?";
constexpr std::string_view kBlockLiteralType = "^{Block_layout=}";

// The blocks an invocation copied, by argument index; an entry exists from
// the moment the invocation retained its arguments.
using Copies = std::map<Integer, const void*>;
std::unordered_map<id, Copies>& copiedBlocks() {
  static auto* table = new std::unordered_map<id, Copies>();
  return *table;
}

id signatureWithObjCTypes(id self, SEL cmd, const char* types) {
  if (types == nullptr || std::string_view(types).find(kBlockType) == std::string_view::npos) {
    return Hook<&signatureWithObjCTypes>::original(self, cmd, types);
  }
  std::string readable(types);
  for (auto at = readable.find(kBlockType); at != std::string::npos;
       at = readable.find(kBlockType, at + kBlockLiteralType.size())) {
    readable.replace(at, kBlockType.size(), kBlockLiteralType);
  }
  return Hook<&signatureWithObjCTypes>::original(self, cmd, readable.c_str());
}

void setArgument(id self, SEL cmd, void* buffer, Integer index);

bool isBlockArgument(id invocation, Integer index) {
  id signature = send<id>(invocation, Sel("methodSignature"));
  const char* type = send<const char*>(signature, Sel("getArgumentTypeAtIndex:"),
                                       static_cast<platform::UInteger>(index));
  return type != nullptr && std::string_view(type).find(kBlockLiteralType) == 0;
}

// Copies every block argument in place, once per invocation.
void copyBlockArguments(id invocation) {
  if (!send<BOOL>(invocation, Sel("argumentsRetained"))) return;
  auto [entry, first] = copiedBlocks().try_emplace(invocation);
  if (!first) return;
  id signature = send<id>(invocation, Sel("methodSignature"));
  auto count = static_cast<Integer>(send<platform::UInteger>(signature, Sel("numberOfArguments")));
  for (Integer i = 2; i < count; ++i) {
    if (!isBlockArgument(invocation, i)) continue;
    const void* block = nullptr;
    send<void>(invocation, Sel("getArgument:atIndex:"), static_cast<void*>(&block), i);
    if (block == nullptr) continue;
    const void* copy = _Block_copy(block);
    Hook<&setArgument>::original(invocation, Sel("setArgument:atIndex:"), &copy, i);
    entry->second[i] = copy;
  }
}

void retainArguments(id self, SEL cmd) {
  Hook<&retainArguments>::original(self, cmd);
  copyBlockArguments(self);
}

void retainArgumentsIncludingTarget(id self, SEL cmd, BOOL target) {
  Hook<&retainArgumentsIncludingTarget>::original(self, cmd, target);
  copyBlockArguments(self);
}

// Once the arguments are retained, a block set later is copied too and the
// copy it replaces released.
void setArgument(id self, SEL cmd, void* buffer, Integer index) {
  auto kept = copiedBlocks().find(self);
  if (kept == copiedBlocks().end() || buffer == nullptr || !isBlockArgument(self, index)) {
    Hook<&setArgument>::original(self, cmd, buffer, index);
    return;
  }
  const void* block = *static_cast<const void**>(buffer);
  const void* copy = block == nullptr ? nullptr : _Block_copy(block);
  Hook<&setArgument>::original(self, cmd, &copy, index);
  const void*& slot = kept->second[index];
  if (slot != nullptr) _Block_release(slot);
  slot = copy;
}

void invocationDealloc(id self, SEL cmd) {
  auto kept = copiedBlocks().find(self);
  if (kept != copiedBlocks().end()) {
    for (const auto& [index, block] : kept->second) {
      if (block != nullptr) _Block_release(block);
    }
    copiedBlocks().erase(kept);
  }
  Hook<&invocationDealloc>::original(self, cmd);
}

const platform::Row kRows[] = {
    platform::replaced<&signatureWithObjCTypes>("NSMethodSignature", "+signatureWithObjCTypes:"),
    platform::replaced<&retainArguments>("NSInvocation", "-retainArguments"),
    platform::replaced<&retainArgumentsIncludingTarget>("NSInvocation",
                                                        "-retainArgumentsIncludingTarget:"),
    platform::replaced<&setArgument>("NSInvocation", "-setArgument:atIndex:"),
    platform::replaced<&invocationDealloc>("NSInvocation", "-dealloc"),
};

}  // namespace

std::vector<std::string> installBlockArguments() {
  std::vector<std::string> problems;
  for (const auto& record : platform::installRows(kRows)) {
    if (record.status != platform::InstallStatus::kInstalled) {
      problems.push_back(platform::describe(record));
    }
  }
  // The concrete invocation class may have messaged its way to a table of its own.
  refreshDispatchTables(platform::classNamed("NSInvocation"));
  return problems;
}

}  // namespace kv::sim::host
