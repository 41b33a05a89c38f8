#include "content/moff/SfMoffFile.h"

#include <algorithm>

#include "content/moff/MoffSource.h"
#include "content/moff/MoffTags.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/file/XpReplaceFile.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/Paths.h"
#include "foundation/text/XpPath.h"

namespace moff = vrx::moff;
namespace platform = vrx::platform;

namespace {

/// True for a file that is no device or anything else that must not be touched.
bool IsPlainFile(const XpString& path, platform::Links links, platform::FileStatus& status) {
  return !platform::StatPath(path, links, status) && !status.isDirectory && !status.isSpecial;
}

/// Other programs leave such a file behind when they are interrupted.
XpResult RemoveOldTemporary(const XpString& moffPath) {
  const XpString path = XpPathDirectory(moffPath) + XpPathStem(moffPath) + u".mofb";
  platform::FileStatus status;
  return IsPlainFile(path, platform::Links::Keep, status) ? XpFileDelete(path) : XpOk;
}

/// Lifts the write protection of a file for a replacement; a failed one gets it back.
class LiftedProtection {
 public:
  explicit LiftedProtection(const XpString& path) : m_path(path) {
    platform::FileStatus status;
    m_wasProtected = IsPlainFile(path, platform::Links::Follow, status) && status.isReadOnly;
    if (m_wasProtected) m_result = XpPathClearReadOnly(path);
  }
  LiftedProtection(const LiftedProtection&) = delete;
  LiftedProtection& operator=(const LiftedProtection&) = delete;
  ~LiftedProtection() {
    if (m_wasProtected && !m_isReplaced) platform::SetReadOnly(m_path, true);
  }

  XpResult GetResult() const { return m_result; }
  void SetReplaced() { m_isReplaced = true; }

 private:
  const XpString m_path;
  bool m_wasProtected = false;
  bool m_isReplaced = false;
  XpResult m_result = XpOk;
};

}  // namespace

void* SfMoffGroup::ReadData(std::int64_t& size) const {
  size = 0;
  return m_owner == nullptr ? nullptr : m_owner->ReadGroupData(m_id, size);
}

SfMoffFile::SfMoffFile() : m_root(std::make_unique<moff::FileTag>()) {}

SfMoffFile::~SfMoffFile() { Close(false); }

XpResult SfMoffFile::OpenTables(const XpString& path, XpSharedPtr<XpFile>& stream) {
  Close(false);
  if (path.IsEmpty()) return XpErrOpenFailed;
  const XpString moffPath = moff::MoffPathFor(platform::AbsolutePath(path));
  stream = XpSharedPtr<XpFile>(new XpFile(moffPath));
  if (const XpResult result = stream->Open(XpOpenRead, XpShareRead)) return result;
  if (const XpResult result = moff::ReadHeaders(*stream, *m_root, m_bodies)) return result;
  const moff::SourceCheck source = moff::CheckSource(moffPath, m_root->record);
  if (!m_skipValidation && source.Result() != XpOk) return source.Result();
  m_sourcePath = source.path;
  m_moffPath = moffPath;
  return XpOk;
}

XpResult SfMoffFile::Open(const XpString& path) {
  XpSharedPtr<XpFile> stream;
  const XpResult result = OpenTables(path, stream);
  if (result != XpOk) {
    Reset();
    return result;
  }
  m_stream = stream;
  m_state = State::OnDemand;
  return XpOk;
}

XpResult SfMoffFile::OpenFully(const XpString& path) {
  XpSharedPtr<XpFile> stream;
  XpResult result = OpenTables(path, stream);
  if (result == XpOk) result = moff::ReadBodies(*stream, m_bodies, *m_root);
  if (result != XpOk) {
    Reset();
    return result;
  }
  m_state = State::Complete;
  return XpOk;
}

XpResult SfMoffFile::Create(const XpString& path) {
  Close(false);
  if (path.IsEmpty()) return XpErrOpenFailed;
  const XpString whole = platform::AbsolutePath(path);
  const XpString moffPath = moff::MoffPathFor(whole);
  const XpString source = moffPath == whole ? moff::FindSource(moffPath, {}) : whole;
  if (!XpPathIsFile(source)) return XpErrFileNotFound;
  moff::FileHeader header;
  header.version = moff::kFormatVersion;
  if (const XpResult result = moff::DescribeSource(source, header)) return result;
  m_root->record = header;
  m_sourcePath = source;
  m_moffPath = moffPath;
  m_state = State::Complete;
  // A file system that cannot keep the mark still keeps the container.
  if (XpPathIsFile(moffPath)) XpPathSetHidden(moffPath);
  return XpOk;
}

XpResult SfMoffFile::Close(bool commit) {
  XpResult result = XpOk;
  if (m_state == State::Complete && commit) result = Commit();
  if (m_state == State::Complete && !commit) RemoveEmptyFile();
  Reset();
  return result;
}

XpResult SfMoffFile::Commit() {
  if (m_moffPath.IsEmpty()) return XpErrOpenFailed;
  if (const XpResult result = moff::PlaceTree(*m_root)) return result;
  if (const XpResult result = XpPathMake(XpPathDirectory(m_moffPath))) return result;
  if (const XpResult result = RemoveOldTemporary(m_moffPath)) return result;
  LiftedProtection protection(m_moffPath);
  if (const XpResult result = protection.GetResult()) return result;
  const auto write = [this](XpAbstractFile& file) { return moff::WriteTree(file, *m_root); };
  if (const XpResult result = XpReplaceFile(m_moffPath, write)) return result;
  protection.SetReplaced();
  // A file system that cannot keep the mark still keeps the container.
  XpPathSetHidden(m_moffPath);
  return XpOk;
}

/// Of a container that was never written nothing stays.
void SfMoffFile::RemoveEmptyFile() const {
  platform::FileStatus status;
  const bool isEmpty =
      IsPlainFile(m_moffPath, platform::Links::Keep, status) && !status.isLink && status.size == 0;
  if (isEmpty) XpFileDelete(m_moffPath);
}

void SfMoffFile::Reset() {
  for (const auto& weak : m_groups) {
    if (!weak.IsExpired()) XpSharedPtr<SfMoffGroup>(weak)->m_owner = nullptr;
  }
  m_groups.clear();
  m_state = State::Closed;
  m_sourcePath = XpString();
  m_moffPath = XpString();
  m_stream = nullptr;
  m_bodies = {};
  m_root = std::make_unique<moff::FileTag>();
}

XpResult SfMoffFile::FindGpsGroup(XpSharedPtr<SfMoffGroup>& group) {
  group = nullptr;
  if (m_state == State::Closed) return XpErrNotOpen;
  const auto& groups = m_root->child->GetChildren();
  const auto found =
      std::ranges::find_if(groups, [](const auto& tag) { return tag->record.id == moff::kGpsGroup; });
  if (found == groups.end()) return XpOk;
  const auto index = static_cast<std::uint32_t>(found - groups.begin());
  group = XpSharedPtr<SfMoffGroup>(new SfMoffGroup(*this, index, moff::kGpsGroup, (*found)->record.values));
  std::erase_if(m_groups, [](const auto& weak) { return weak.IsExpired(); });
  m_groups.emplace_back(group);
  return XpOk;
}

void* SfMoffFile::ReadGroupData(std::uint32_t groupId, std::int64_t& size) {
  size = 0;
  const moff::GroupTag* group = moff::FindGroup(*m_root, groupId);
  return group == nullptr ? nullptr
                          : moff::ReadFirstBody(m_stream.Get(), m_bodies, *group, moff::kBinaryBody, size);
}

XpResult SfMoffFile::SetGroupData(std::uint32_t groupId, const std::array<std::uint32_t, 4>& values,
                                  std::span<const std::byte> data) {
  if (m_state != State::Complete) return XpErrNotOpen;
  XpSharedPtr<moff::FileBody> body;
  if (const XpResult result = moff::MakeBody(moff::kBinaryBody, data, body)) return result;
  moff::GroupTag* group = moff::FindGroup(*m_root, groupId);
  if (group == nullptr) {
    group = &m_root->child->Add();
    group->record.id = groupId;
  }
  group->record.values = values;
  const auto& entries = group->child->GetChildren();
  const auto isBinary = [](const auto& tag) { return tag->body && tag->body->kind == moff::kBinaryBody; };
  const auto found = std::ranges::find_if(entries, isBinary);
  moff::EntryTag& entry = found == entries.end() ? group->child->Add() : **found;
  entry.body = body;
  return XpOk;
}

const moff::FileHeader& SfMoffFile::GetHeader() const { return m_root->record; }

std::vector<moff::GroupInfo> SfMoffFile::ListGroups() const {
  return moff::ListGroups(m_stream.Get(), m_bodies, *m_root);
}

XpResult SfMoffFile::ReadEntry(std::size_t group, std::size_t entry, XpSharedPtr<XpMemoryFile>& data) const {
  const auto& groups = m_root->child->GetChildren();
  if (group >= groups.size()) return XpErrInvalidArgument;
  const moff::IndexTable& index = *groups[group]->child;
  if (entry >= index.GetChildren().size()) return XpErrInvalidArgument;
  const moff::EntryTag& tag = *index.GetChildren()[entry];
  XpSharedPtr<moff::FileBody> body = tag.body;
  if (!body) {
    if (!m_stream) return XpErrNotOpen;
    const std::int64_t position = index.position + tag.record.position;
    moff::BodyHead head;
    if (const XpResult result = moff::ReadBodyHead(*m_stream, m_bodies, position, head)) return result;
    if (const XpResult result = moff::ReadBody(*m_stream, position, head, body)) return result;
  }
  data = body->data;
  return XpOk;
}
