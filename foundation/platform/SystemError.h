// Turns errors of the operating system into result codes. All file operations use it; the errors are passed
// as std::error_code of the system category.
#pragma once

#include <system_error>

#include "vrx/XpResult.h"

namespace vrx::platform {

/// The codes of operations on opened files, paths and folders. XpErrFailed for an error with no code of its
/// own.
XpResult LastErrorResult(const std::error_code& error);

/// The coarser codes of making a file. XpErrFileSystem for an error with no code of its own.
XpResult ErrnoResult(const std::error_code& error);

}  // namespace vrx::platform
