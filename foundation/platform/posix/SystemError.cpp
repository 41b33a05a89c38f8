#include "foundation/platform/SystemError.h"

#include <errno.h>

#include <algorithm>
#include <span>

namespace vrx::platform {
namespace {

struct Mapping {
  int error;
  XpResult result;
};

constexpr Mapping kLastErrors[] = {
    {ENOENT, XpErrFileNotFound},
    {ENOTDIR, XpErrPathNotFound},
    {EMFILE, XpErrTooManyOpenFiles},
    {ENFILE, XpErrTooManyOpenFiles},
    {EACCES, XpErrAccessDenied},
    {EPERM, XpErrAccessDenied},
    {EROFS, XpErrAccessDenied},
    {EISDIR, XpErrAccessDenied},
    {EBADF, XpErrAccessDenied},  // the file was opened for the other direction
    {EBUSY, XpErrAccessDenied},
    {ETXTBSY, XpErrAccessDenied},
    {ENOMEM, XpErrOutOfMemory},
    {ENODEV, XpErrDeviceNotReady},
    {ENXIO, XpErrDeviceNotReady},
    {ENOMEDIUM, XpErrDeviceNotReady},
    {ENOSPC, XpErrDiskFull},
    {EDQUOT, XpErrDiskFull},
    {EFBIG, XpErrDiskFull},  // more than the file system can hold in one file
    {ENETUNREACH, XpErrNetworkUnreachable},
    {ENETDOWN, XpErrNetworkUnreachable},
    {EHOSTUNREACH, XpErrNetworkUnreachable},
    {EHOSTDOWN, XpErrNetworkUnreachable},
    {ENONET, XpErrNetworkUnreachable},
    {ETIMEDOUT, XpErrNetworkUnreachable},
    {EEXIST, XpErrAlreadyExists},
    {ENOTEMPTY, XpErrDirectoryNotEmpty},
    {ESTALE, XpErrInvalidFile},
};

constexpr Mapping kErrnos[] = {
    {ENOENT, XpErrNoSuchFile},       {EBADF, XpErrAccessDenied},
    {EACCES, XpErrAccessDenied},     {EPERM, XpErrAccessDenied},
    {EROFS, XpErrAccessDenied},      {EEXIST, XpErrAlreadyExists},
    {ENOTDIR, XpErrNotAFile},        {EISDIR, XpErrNotAFile},
    {ENAMETOOLONG, XpErrNotAFile},   {EINVAL, XpErrInvalidFileOperation},
    {EMFILE, XpErrTooManyOpenFiles}, {ENFILE, XpErrTooManyOpenFiles},
    {ENOSPC, XpErrDiskFull},         {EDQUOT, XpErrDiskFull},
};

XpResult Map(const std::error_code& error, std::span<const Mapping> table, XpResult other) {
  if (!error) return XpOk;
  const auto found = std::find_if(table.begin(), table.end(),
                                  [&](const Mapping& mapping) { return mapping.error == error.value(); });
  return found == table.end() ? other : found->result;
}

}  // namespace

XpResult LastErrorResult(const std::error_code& error) { return Map(error, kLastErrors, XpErrFailed); }

XpResult ErrnoResult(const std::error_code& error) { return Map(error, kErrnos, XpErrFileSystem); }

}  // namespace vrx::platform
