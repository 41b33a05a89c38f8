// One open key of the settings store. A key is opened for one task and then closed; an object belongs to one
// thread.
#pragma once

#include <cstdint>
#include <memory>

#include "foundation/registry/RegistryStore.h"
#include "vrx/XpResult.h"
#include "vrx/XpString.h"

/// Root kinds; any other number means the current user.
enum : std::uint32_t { XpRegistryCurrentUser = 0, XpRegistryLocalMachine = 1, XpRegistryClassesRoot = 2 };
/// Access bits. The last two are ignored, since there is only one view.
enum : std::uint32_t {
  XpRegistryRead = 1,
  XpRegistryWrite = 2,
  XpRegistry64BitView = 4,
  XpRegistry32BitView = 8
};

/// Names of keys and values are found whatever their case. In Open and in value names a '/' counts as a
/// backslash.
class XpRegistry {
 public:
  XpRegistry() = default;
  XpRegistry(const XpRegistry&) = delete;
  XpRegistry& operator=(const XpRegistry&) = delete;
  virtual ~XpRegistry() = default;

  /// Closes an open key first. Opening for more than reading makes a missing key; a missing key cannot be
  /// opened for reading: XpErrFailed. The empty path is the root, which is always there.
  virtual XpResult Open(const XpString& path, std::uint32_t rootKind, std::uint32_t access);
  /// The same with every '/' of the path as part of a name.
  virtual XpResult OpenRaw(const XpString& path, std::uint32_t rootKind, std::uint32_t access);
  /// XpErrFailed when nothing is open.
  virtual XpResult Close();

  /// The default for a key that is closed or open for writing alone, and for a value that is missing or of
  /// another type.
  XpString GetString(const XpString& name, const XpString& absent) const;
  std::uint32_t GetDword(const XpString& name, std::uint32_t absent) const;
  /// A number that isn't 0.
  bool GetBool(const XpString& name) const;
  bool HasValue(const XpString& name) const;
  /// XpErrFailed for a key that is closed or open for reading only, and when the store cannot be written.
  XpResult SetString(const XpString& name, const XpString& value);
  XpResult SetDword(const XpString& name, std::uint32_t value);

  /// Opened for reading; null when there is no such key.
  std::unique_ptr<XpRegistry> OpenSubKey(const XpString& name) const;

 private:
  bool FindValue(const XpString& name, vrx::registry::Value& value) const;
  XpResult SetValue(const XpString& name, const vrx::registry::Value& value);

  bool m_isOpen = false;
  XpString m_keyPath;
  std::uint32_t m_rootKind = XpRegistryCurrentUser;
  std::uint32_t m_access = XpRegistryRead;
};

/// Null when the key cannot be opened.
std::unique_ptr<XpRegistry> XpRegistryOpen(const XpString& path, std::uint32_t rootKind,
                                           std::uint32_t access);
