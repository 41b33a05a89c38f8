// Result codes of the whole library. A function that can fail returns an XpResult; 0 means success. The
// high byte is the family: 0x80 general, 0x81 files, 0x82 threads, 0x84 memory, 0x85 property lists,
// 0x86 image codecs, 0x88 ICC profiles.
#pragma once

#include <cstdint>

using XpResult = std::uint32_t;

enum : XpResult {
  XpOk = 0,

  XpErrFailed = 0x8000,            // failure with no finer code
  XpErrBasebandDocument = 0x8001,  // baseband source could not be parsed
  XpErrNoObject = 0x8003,          // no object to work on; generic engine failure towards the host
  XpErrInvalidArgument = 0x8004,   // invalid argument or unusable input
  XpErrNetworkUnreachable = 0x8008,

  XpErrFileSystem = 0x8100,  // file system error with no finer code
  XpErrNotAFile = 0x8101,    // not a file, or a directory, or the name is too long
  XpErrInvalidFileOperation = 0x8102,
  XpErrEndOfFile = 0x8103,
  XpErrLineTooLong = 0x8104,        // longer than the caller's buffer
  XpErrPastEnd = XpErrLineTooLong,  // an offset in the file leads to its end or past it
  XpErrFileNotFound = 0x8105,
  XpErrPathNotFound = 0x8106,
  XpErrAlreadyOpen = 0x8107,
  XpErrAccessDenied = 0x8108,
  XpErrDiskFull = 0x8109,
  XpErrAlreadyExists = 0x810A,
  XpErrTooManyOpenFiles = 0x810B,
  XpErrOpenFailed = 0x810D,
  XpErrNotOpen = 0x810E,
  XpErrDeleteFailed = 0x810F,
  XpErrMalformedRecord = 0x8110,  // in a tagged container, or a strip past the end of a picture file
  XpErrNoSuchFile = 0x8111,
  XpErrPathForm = 0x8112,
  XpErrShellMoveFailed = 0x8114,
  XpErrMoveFailed = 0x8115,
  XpErrNotSupported = 0x8116,  // by this file-system object
  XpErrDirectoryNotEmpty = 0x8117,
  XpErrInvalidFile = 0x8119,
  XpErrDeviceNotReady = 0x811A,

  XpErrThread = 0x8200,  // thread error with no finer code
  XpErrTimeout = 0x8201,
  XpErrNotOwner = 0x8202,
  XpErrLockNotSupported = 0x8203,
  XpErrAbandoned = 0x8204,  // lock abandoned by its owner
  XpErrSelfWait = 0x8205,   // a thread waits for itself
  XpErrNoHandle = 0x8206,   // no such thread or handle

  XpErrOutOfMemory = 0x8401,

  XpErrNoDocument = 0x8500,        // no document or no document element
  XpErrWrongElementType = 0x8501,  // operation not valid on this element type
  XpErrElementNotFound = 0x8502,
  XpErrNotWellFormed = 0x8503,
  XpErrWrongRoot = 0x8504,  // root node or element of the wrong kind
  XpErrComUnavailable = 0x8505,
  XpErrXmlUnavailable = 0x8506,
  XpErrUnknownElementType = 0x8507,
  XpErrKeyExists = 0x8508,
  XpErrValueDoesNotFit = 0x8509,

  XpErrImageUnusable = 0x8600,  // there is nothing to work on, or the result does not fit its place
  XpErrImageNoData = 0x8601,    // the data asked for, such as a tag, is not in the picture
  XpErrImageInvalid = 0x8602,   // not a valid picture of its format
  XpErrImageKind = 0x8603,      // a kind of picture or segment that is not read here
  XpErrImageArgument = 0x8604,
  XpErrImageNotProvided = 0x8605,  // the format does not offer this operation
  XpErrImageCancelled = 0x8607,
  XpErrImageMismatch = 0x8609,  // a value that may not differ does, or its type or size

  XpErrIccType = 0x8801,  // a tag of an ICC profile is of another type than was asked for
};
