// Result codes of the engine's functions beyond the two that cross by name in vrx/VRXEngine.h.
#pragma once

#include <cstdint>

#include "vrx/VRXEngine.h"

namespace vrx::engine {

using Result = std::int32_t;

inline constexpr Result kOk = VRXEngineOk;
inline constexpr Result kFailed = static_cast<Result>(0x80000001);  // no finer cause
inline constexpr Result kInvalidArgument =
    static_cast<Result>(0x80000002);  // null or foreign handle or record
inline constexpr Result kUnusableSettings = static_cast<Result>(0x80000003);
inline constexpr Result kOutOfMemory = static_cast<Result>(0x80000004);
inline constexpr Result kSourceUnreadable =
    static_cast<Result>(0x80000005);                                        // no permission, or an I/O error
inline constexpr Result kSourceNotMovie = static_cast<Result>(0x80000006);  // no stream of the wanted kind
inline constexpr Result kOutputFailed = static_cast<Result>(0x80000007);    // cannot be created or written
inline constexpr Result kSourceMissing = static_cast<Result>(VRXEngineSourceMissing);
inline constexpr Result kDiskFull = static_cast<Result>(VRXEngineDiskFull);
inline constexpr Result kEncoderFailed = static_cast<Result>(0x8000000A);
inline constexpr Result kNotCapable =
    static_cast<Result>(0x8000000B);  // no smart rendering for this material

constexpr bool IsOk(Result result) { return result == kOk; }

}  // namespace vrx::engine

/// Returns from the function what `call` gives, unless that is a success.
#define VRX_TRY(call)                                                   \
  do {                                                                  \
    if (auto vrxOutcome = (call); !IsOk(vrxOutcome)) return vrxOutcome; \
  } while (false)
