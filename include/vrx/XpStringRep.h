// The heap block that all copies of one text share. Only XpBasicString uses it.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>

template <class Ch>
struct XpStringRep {
  Ch* buffer;             // NUL-terminated, from malloc
  std::int32_t length;    // characters without the terminator
  std::int32_t capacity;  // characters that the buffer holds
  std::atomic<std::int32_t> references;

  static constexpr std::int32_t kBlock = 64;
  /// Marks the one empty text, whose references are not counted: threads that make empty strings would
  /// contend on the count.
  static constexpr std::int32_t kImmortal = -1;

  static std::int32_t CapacityFor(std::int64_t length) {
    if (length < 0 || length > std::numeric_limits<std::int32_t>::max() - 2 * kBlock) throw std::bad_alloc();
    return static_cast<std::int32_t>((length / kBlock + 1) * kBlock);
  }

  static XpStringRep* Empty() noexcept {
    static constinit Ch buffer[kBlock] = {};
    static constinit XpStringRep rep{buffer, 0, kBlock, kImmortal};
    return &rep;
  }

  /// A block with room for `length` characters, a length of 0 and one reference.
  static XpStringRep* Create(std::int64_t length) {
    const std::int32_t capacity = CapacityFor(length);
    auto* buffer = static_cast<Ch*>(std::malloc(static_cast<std::size_t>(capacity) * sizeof(Ch)));
    if (buffer == nullptr) throw std::bad_alloc();
    buffer[0] = 0;
    auto* rep = new (std::nothrow) XpStringRep{buffer, 0, capacity, 1};
    if (rep == nullptr) {
      std::free(buffer);
      throw std::bad_alloc();
    }
    return rep;
  }

  bool IsUnshared() const noexcept { return references.load(std::memory_order_acquire) == 1; }

  XpStringRep* Share() noexcept {
    if (references.load(std::memory_order_relaxed) != kImmortal) {
      references.fetch_add(1, std::memory_order_relaxed);
    }
    return this;
  }

  void Release() noexcept {
    // The count also covers the empty text of another library; by the address the compiler sees that this one
    // is never deleted.
    if (this == Empty() || references.load(std::memory_order_relaxed) == kImmortal) return;
    if (references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    std::free(buffer);
    delete this;
  }

  /// Makes the buffer of an unshared block fit `wantedLength`: it grows when too small and shrinks when a
  /// long buffer is less than half used.
  void Fit(std::int64_t wantedLength) {
    const std::int32_t wanted = CapacityFor(wantedLength);
    const bool wasteful = wanted < capacity / 2 && capacity > 2 * kBlock;
    if (capacity >= wanted && !wasteful) return;
    auto* grown = static_cast<Ch*>(std::realloc(buffer, static_cast<std::size_t>(wanted) * sizeof(Ch)));
    if (grown == nullptr) throw std::bad_alloc();
    buffer = grown;
    capacity = wanted;
  }
};
