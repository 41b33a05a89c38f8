// Four 32-bit pixels at a time, on the compiler's vector types, for the loops that compose pictures. Results
// are those of the same arithmetic on single pixels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vrx::pixels {

inline constexpr std::size_t kVectorPixels = 4;
using Vector32 = std::uint32_t __attribute__((vector_size(16)));
using Vector16 = std::uint16_t __attribute__((vector_size(16)));

inline constexpr std::uint32_t kAlphaMask = 0xFF000000u;
inline constexpr std::uint32_t kEvenBytes = 0x00FF00FFu;  // blue and red, each with room for a product

inline Vector32 Load(const void* at) {
  Vector32 value;
  std::memcpy(&value, at, sizeof value);
  return value;
}
inline void Store(void* at, Vector32 value) { std::memcpy(at, &value, sizeof value); }

inline Vector16 As16(Vector32 value) { return reinterpret_cast<Vector16>(value); }
inline Vector32 As32(Vector16 value) { return reinterpret_cast<Vector32>(value); }

/// The low half of each lane in both halves, so that one factor serves two channels.
inline Vector16 InBothHalves(Vector32 lanes) { return As16(lanes | lanes << 16); }

inline bool AnyBits(Vector32 value) {
  std::uint64_t halves[2];
  std::memcpy(halves, &value, sizeof halves);
  return (halves[0] | halves[1]) != 0;
}

/// True when none of the pixels has a bit of `mask` set.
inline bool AreClear(const unsigned char* pixels, std::size_t count, std::uint32_t mask) {
  const Vector32 wanted = {mask, mask, mask, mask};
  constexpr std::size_t kStride = 4 * kVectorPixels;
  std::size_t i = 0;
  for (; i + kStride <= count; i += kStride) {
    const unsigned char* at = pixels + i * 4;
    if (AnyBits((Load(at) | Load(at + 16) | Load(at + 32) | Load(at + 48)) & wanted)) return false;
  }
  for (; i < count; ++i) {
    std::uint32_t pixel;
    std::memcpy(&pixel, pixels + i * 4, sizeof pixel);
    if ((pixel & mask) != 0) return false;
  }
  return true;
}

/// Runs `four` on groups of four pixels, and on the rest through a buffer that is filled up with zeros.
/// `four` takes destination and source vector and returns the new destination.
template <class Four>
[[gnu::always_inline]] inline void ForEachFour(unsigned char* dest, const unsigned char* source,
                                               std::size_t count, Four four) {
  std::size_t i = 0;
  for (; i + kVectorPixels <= count; i += kVectorPixels) {
    const Vector32 from = Load(source + i * 4);
    if (!AnyBits(from)) {
      // Four empty pixels over four empty ones stay empty under every rule.
      if (!AnyBits(Load(dest + i * 4))) continue;
    }
    Store(dest + i * 4, four(Load(dest + i * 4), from));
  }
  if (i == count) return;
  const std::size_t rest = (count - i) * 4;
  unsigned char to[16] = {}, from[16] = {};
  std::memcpy(to, dest + i * 4, rest);
  std::memcpy(from, source + i * 4, rest);
  Store(to, four(Load(to), Load(from)));
  std::memcpy(dest + i * 4, to, rest);
}

}  // namespace vrx::pixels
