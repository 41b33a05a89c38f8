// An open .moff container: the hidden file beside a content that keeps its binary data, such as thumbnails
// and GPS logs. The reader of GPS logs, importers and the commands use it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "content/moff/MoffTree.h"
#include "content/moff/SfMoffGroup.h"
#include "foundation/file/XpFile.h"
#include "foundation/memory/XpSharedPtr.h"
#include "vrx/XpString.h"

/// Belongs to one thread. Paths are those of a content or of its container. Each opening operation closes
/// first, without writing; a failed one leaves the object closed.
class SfMoffFile {
 public:
  SfMoffFile();
  SfMoffFile(const SfMoffFile&) = delete;
  SfMoffFile& operator=(const SfMoffFile&) = delete;
  ~SfMoffFile();

  /// Reads the tables; bodies are read when they are asked for. XpErrMalformedRecord for damaged tables,
  /// XpErrEndOfFile when the file ends in them, XpErrFileNotFound when there is no container or when its
  /// media file is missing or another one.
  XpResult Open(const XpString& path);
  /// Reads the bodies as well, so that the container can be changed. Also XpErrFailed for a body that is
  /// incomplete or of unknown kind.
  XpResult OpenFully(const XpString& path);
  /// Starts a container without groups in memory, for a media file that exists: XpErrFileNotFound if not.
  XpResult Create(const XpString& path);
  /// With `commit`, writes a container that is completely in memory: the old file is replaced by the complete
  /// new one or stays as it is. XpErrOpenFailed without a path, XpErrMalformedRecord for a container of more
  /// than 4 GiB, otherwise the codes of XpReplaceFile. Closed afterwards in any case.
  XpResult Close(bool commit);

  /// The first group with GPS data; null when there is none. XpErrNotOpen when closed.
  XpResult FindGpsGroup(XpSharedPtr<SfMoffGroup>& group);
  /// The first binary body of the first group with this id, in a block of malloc that the caller frees. Null,
  /// with `size` 0, when there is none or it cannot be read.
  void* ReadGroupData(std::uint32_t groupId, std::int64_t& size);

  /// Sets the values and the first binary body of the first group with this id, which is added when it is
  /// missing. For a container that is completely in memory, else XpErrNotOpen. XpErrInvalidArgument for data
  /// of 4 GiB.
  XpResult SetGroupData(std::uint32_t groupId, const std::array<std::uint32_t, 4>& values,
                        std::span<const std::byte> data);

  /// With `skip`, containers are opened whether or not their media file fits them. Off by default.
  void SetSkipValidation(bool skip) { m_skipValidation = skip; }
  /// Both are empty when closed; the source also when none was found.
  const XpString& GetMoffPath() const { return m_moffPath; }
  const XpString& GetSourcePath() const { return m_sourcePath; }

  const vrx::moff::FileHeader& GetHeader() const;
  std::vector<vrx::moff::GroupInfo> ListGroups() const;
  /// The data of any body, by the places of group and entry from 0. XpErrInvalidArgument when there is no
  /// such entry, otherwise the codes of OpenFully.
  XpResult ReadEntry(std::size_t group, std::size_t entry, XpSharedPtr<XpMemoryFile>& data) const;

 private:
  enum class State : std::uint32_t { Closed = 0, OnDemand = 1, Complete = 2 };

  XpResult OpenTables(const XpString& path, XpSharedPtr<XpFile>& stream);
  XpResult Commit();
  void RemoveEmptyFile() const;
  void Reset();

  std::vector<XpWeakPtr<SfMoffGroup>> m_groups;  // the handles given out
  State m_state = State::Closed;
  XpString m_sourcePath;
  XpString m_moffPath;
  XpSharedPtr<XpFile> m_stream;   // of a container that is read on demand
  vrx::moff::BodyRange m_bodies;  // of the stream
  std::unique_ptr<vrx::moff::FileTag> m_root;
  bool m_skipValidation = false;
};
