// Blocks: the completion handlers and callbacks the platform takes and gives.
// The library is built with -fblocks, so it writes real blocks (^{ ... }) and
// hands them to the platform; these helpers copy, release and call them.
#pragma once

#include <Block.h>

#include <type_traits>
#include <utility>

#include "platform/objc.h"

namespace kv::platform {

// A block type spelled like a function type: BlockOf<void(id)> is void (^)(id).
template <typename F>
struct BlockType;
template <typename R, typename... A>
struct BlockType<R(A...)> {
  using type = R (^)(A...);
};
template <typename F>
using BlockOf = typename BlockType<F>::type;

// Returns a heap copy of `block` (a stack block moves to the heap; a heap
// block gains a reference). nil stays nil.
inline id copyBlock(id block) {
  return block == nullptr ? nullptr : static_cast<id>(const_cast<void*>(_Block_copy(block)));
}

// Drops one reference to a block returned by copyBlock.
inline void releaseBlock(id block) {
  if (block != nullptr) _Block_release(block);
}

// Returns the block `b` as an object pointer, for storing or sending.
template <typename R, typename... A>
id asObject(R (^b)(A...)) {
  return reinterpret_cast<id>(b);
}

// Calls the block object `block` as a block of type F; a nil block answers
// zero, as messaging nil does.
template <typename F, typename... Args>
auto callBlock(id block, Args&&... args) {
  using R = decltype(std::declval<BlockOf<F>>()(std::forward<Args>(args)...));
  if (block == nullptr) {
    if constexpr (std::is_void_v<R>) {
      return;
    } else {
      return R{};
    }
  }
  auto typed = reinterpret_cast<BlockOf<F>>(block);
  return typed(std::forward<Args>(args)...);
}

}  // namespace kv::platform
