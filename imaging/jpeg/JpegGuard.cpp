#include "imaging/jpeg/JpegGuard.h"

#include <jerror.h>

namespace vrx::imaging {

namespace {

void IgnoreWarning(j_common_ptr, int) {}
void IgnoreText(j_common_ptr) {}

}  // namespace

void JpegGuard::Note(XpResult failure, const char* cause) noexcept {
  if (result != XpOk) return;
  result = failure;
  std::snprintf(words, sizeof words, "%s", cause);
}

void JpegGuard::GiveUp(XpResult failure, const char* cause) {
  Note(failure, cause);
  std::longjmp(jump, 1);
}

JpegGuard& GuardOf(j_common_ptr common) { return *static_cast<JpegGuard*>(common->client_data); }

void OnJpegError(j_common_ptr common) {
  char cause[JMSG_LENGTH_MAX];
  common->err->format_message(common, cause);
  const int code = common->err->msg_code;
  const bool isMemory = code == JERR_OUT_OF_MEMORY || code == JERR_NO_BACKING_STORE;
  GuardOf(common).GiveUp(isMemory ? XpErrOutOfMemory : XpErrInvalidFile, cause);
}

void ConnectGuard(j_common_ptr common, JpegGuard& guard) {
  common->err = jpeg_std_error(&guard.errors);
  guard.errors.error_exit = OnJpegError;
  guard.errors.emit_message = IgnoreWarning;
  guard.errors.output_message = IgnoreText;
  common->client_data = &guard;
}

}  // namespace vrx::imaging
