// What a user thinks of as one photo or one clip: a main file and the files that belong to it, such as a
// sidecar or a thumbnail. Importers and sidecars work on it.
#pragma once

#include <cstdint>

#include "content/formats/FormatCodes.h"
#include "foundation/text/XpPath.h"
#include "vrx/XpResult.h"

/// Indices count from 0; file 0 is the main file.
class ISfContent {
 public:
  virtual ~ISfContent() = default;

  virtual void AddFile(const XpPath& path, vrx::formats::FormatCode format) = 0;
  /// Removes the first file of this format, then adds. Nothing happens when there is none.
  virtual void ReplaceFile(const XpPath& path, vrx::formats::FormatCode format) = 0;
  /// Deletes the file from the disk, and only when that succeeds takes it out of the content.
  /// XpErrInvalidArgument for an index past the end.
  virtual XpResult DeleteFileAt(std::int32_t index) = 0;
  /// Also makes the mark -1.
  virtual void Clear() = 0;

  // The first index, or -1. Paths are compared as by XpPathCompare.
  virtual std::int32_t IndexOfFormat(vrx::formats::FormatCode format) const = 0;
  virtual std::int32_t IndexOfPath(const XpPath& path) const = 0;

  // An empty path and a format of 0 past the end.
  virtual void GetMainPath(XpPath& path) const = 0;
  virtual vrx::formats::FormatCode GetMainFormat() const = 0;
  virtual std::int32_t GetFileCount() const = 0;
  virtual void GetFileAt(XpPath& path, std::int32_t index) const = 0;
  virtual vrx::formats::FormatCode GetFormatAt(std::int32_t index) const = 0;

  /// One of the files, other than sidecars and their like, exists and is write-protected.
  virtual bool IsReadOnly() const = 0;
  /// The main file exists and is no folder; without `mainOnly`, every file.
  virtual bool Exists(bool mainOnly) const = 0;
  // A number that travels with the content; its user gives it a meaning.
  virtual void SetMark(std::int32_t mark) = 0;
  virtual std::int32_t GetMark() const = 0;
  virtual void CopyFrom(const ISfContent& other) = 0;
  /// No effect on a content without files.
  virtual void SetMainFormat(vrx::formats::FormatCode format) = 0;
};
