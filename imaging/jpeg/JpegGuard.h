// Calls into libjpeg, which reports an error by not returning: a guarded step ends where the error is, and
// the cause is kept.
#pragma once

#include <csetjmp>
#include <cstddef>
#include <cstdio>

// After cstdio, which it needs and does not include.
#include <jpeglib.h>

#include "vrx/XpResult.h"

namespace vrx::imaging {

/// One for each library object, whose client_data leads to it. It is made before any step and outlives every
/// jump; between a step and the library there is no object with a destructor.
struct JpegGuard {
  jpeg_error_mgr errors{};
  std::jmp_buf jump;
  XpResult result = XpOk;
  char words[JMSG_LENGTH_MAX] = {};

  /// Notes the first failure only.
  void Note(XpResult failure, const char* cause) noexcept;
  [[noreturn]] void GiveUp(XpResult failure, const char* cause);
};

JpegGuard& GuardOf(j_common_ptr common);

/// Connects a library object, before it is created, with its guard. Warnings are ignored.
void ConnectGuard(j_common_ptr common, JpegGuard& guard);

/// The library's own message as the cause of a failure.
[[noreturn]] void OnJpegError(j_common_ptr common);

/// Runs a step; false when it gave up, or an earlier one did.
template <class State>
bool RunGuarded(JpegGuard& guard, State& state, void (*step)(State&)) {
  if (guard.result != XpOk) return false;
  if (setjmp(guard.jump) != 0) return false;
  step(state);
  return true;
}

}  // namespace vrx::imaging
