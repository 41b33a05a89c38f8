// Base of files and directories: a path, and the attributes and times of what is there. Code that walks
// directories handles entries through it.
#pragma once

#include <cstdint>

#include "foundation/time/XpDateTime.h"
#include "vrx/XpResult.h"
#include "vrx/XpString.h"

/// Attributes of a directory entry.
enum : std::uint32_t {
  XpAttributeReadOnly = 0x1,
  XpAttributeHidden = 0x2,
  XpAttributeDirectory = 0x10,
  XpAttributeLink = 0x400,  // a symbolic link; the other bits describe its target
};

/// Times are local. Output pointers may be null.
class XpAbstractFSObj {
 public:
  XpAbstractFSObj() = default;
  explicit XpAbstractFSObj(const XpString& path) : m_path(path) {}
  XpAbstractFSObj(const XpAbstractFSObj&) = delete;
  XpAbstractFSObj& operator=(const XpAbstractFSObj&) = delete;

  virtual ~XpAbstractFSObj() = default;
  virtual XpResult SetPathText(const XpString& text);
  virtual XpResult GetPathText(XpString& path) const;
  /// The last part of the path, with extension.
  virtual XpResult GetName(XpString& name) const;
  /// Bytes, -1 on failure.
  virtual std::int64_t GetSize() const;
  virtual XpResult GetTimes(XpDateTime* creation, XpDateTime* write, XpDateTime* access) const;
  virtual XpResult GetCreationTime(XpDateTime& time) const;
  virtual XpResult GetWriteTime(XpDateTime& time) const;
  virtual XpResult GetAccessTime(XpDateTime& time) const;
  /// A null time stays as it is. XpErrNotSupported unless a class offers it.
  virtual XpResult SetTimes(const XpDateTime* creation, const XpDateTime* write, const XpDateTime* access);
  virtual bool IsReadOnly() const = 0;
  virtual bool IsHidden() const = 0;
  virtual XpResult Stat(XpDateTime* creation, XpDateTime* write, XpDateTime* access,
                        std::int64_t* size) const = 0;
  virtual bool IsFile() const = 0;
  virtual bool IsDirectory() const = 0;

 protected:
  XpString m_path;
};
