#include "content/model/SfContent.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "foundation/file/XpFileOperations.h"

using vrx::formats::FormatCode;

bool SfContent::Holds(std::int32_t index) const { return index >= 0 && index < GetFileCount(); }

void SfContent::AddFile(const XpPath& path, FormatCode format) {
  m_files.push_back(path);
  m_formats.push_back(format);
}

void SfContent::ReplaceFile(const XpPath& path, FormatCode format) {
  const std::int32_t index = IndexOfFormat(format);
  if (index < 0) return;
  const XpPath added = path;  // may be the one that goes
  RemoveAt(index);
  AddFile(added, format);
}

void SfContent::RemoveAt(std::int32_t index) {
  m_files.erase(m_files.begin() + index);
  m_formats.erase(m_formats.begin() + index);
}

XpResult SfContent::DeleteFileAt(std::int32_t index) {
  if (!Holds(index)) return XpErrInvalidArgument;
  const XpResult result = XpFileDelete(m_files[static_cast<std::size_t>(index)].GetText());
  if (result == XpOk) RemoveAt(index);
  return result;
}

void SfContent::Clear() {
  m_files.clear();
  m_formats.clear();
  m_mark = -1;
}

std::int32_t SfContent::IndexOfFormat(FormatCode format) const {
  const auto found = std::ranges::find(m_formats, format);
  return found == m_formats.end() ? -1 : static_cast<std::int32_t>(found - m_formats.begin());
}

std::int32_t SfContent::IndexOfPath(const XpPath& path) const {
  const auto found = std::ranges::find_if(m_files, [&](const XpPath& file) {
    return XpPathCompare(file.GetText(), path.GetText()) == XpPathEqual;
  });
  return found == m_files.end() ? -1 : static_cast<std::int32_t>(found - m_files.begin());
}

void SfContent::GetMainPath(XpPath& path) const { GetFileAt(path, 0); }

FormatCode SfContent::GetMainFormat() const { return GetFormatAt(0); }

std::int32_t SfContent::GetFileCount() const { return static_cast<std::int32_t>(m_files.size()); }

void SfContent::GetFileAt(XpPath& path, std::int32_t index) const {
  path = Holds(index) ? m_files[static_cast<std::size_t>(index)] : XpPath();
}

FormatCode SfContent::GetFormatAt(std::int32_t index) const {
  return Holds(index) ? m_formats[static_cast<std::size_t>(index)] : FormatCode{0};
}

bool SfContent::IsReadOnly() const {
  for (std::size_t i = 0; i < m_files.size(); ++i) {
    if (vrx::formats::FamilyOf(m_formats[i]) == vrx::formats::Family::Other) continue;
    if (XpPathIsReadOnly(m_files[i].GetText())) return true;
  }
  return false;
}

bool SfContent::Exists(bool mainOnly) const {
  if (mainOnly) return !m_files.empty() && XpPathIsFile(m_files.front().GetText());
  return std::ranges::all_of(m_files,
                             [](const XpPath& file) { return XpPathExists(file.GetText(), nullptr); });
}

void SfContent::SetMark(std::int32_t mark) { m_mark = mark; }

std::int32_t SfContent::GetMark() const { return m_mark; }

void SfContent::CopyFrom(const ISfContent& other) {
  if (&other == this) return;
  Clear();
  XpPath path;
  for (std::int32_t i = 0; i < other.GetFileCount(); ++i) {
    other.GetFileAt(path, i);
    AddFile(path, other.GetFormatAt(i));
  }
  m_mark = other.GetMark();
}

void SfContent::SetMainFormat(FormatCode format) {
  if (!m_formats.empty()) m_formats.front() = format;
}
