#include "host/ProjectSource.h"

#include <cstdio>

#include "foundation/platform/Paths.h"
#include "foundation/text/XpPath.h"
#include "foundation/xml/XmlDocument.h"
#include "host/WholeFile.h"

namespace vrx::host {
namespace {

constexpr char16_t kInputName[] = u"standard input";

/// One byte more than a reader takes is enough to be refused.
constexpr std::size_t MostBytes() { return xml::XmlLimits().bytes + 1; }

std::vector<char> ReadInput() {
  std::vector<char> bytes;
  char block[1 << 16];
  for (std::size_t count = 0;
       bytes.size() < MostBytes() && (count = std::fread(block, 1, sizeof(block), stdin)) > 0;) {
    bytes.insert(bytes.end(), block, block + count);
  }
  return bytes;
}

/// False for a file that cannot be read; its own reader says why.
bool ReadFile(const XpString& path, std::vector<char>& bytes) {
  std::string text, cause;
  if (!ReadWholeFile(path, static_cast<std::int64_t>(xml::XmlLimits().bytes >> 20), "project", text, cause))
    return false;
  bytes.assign(text.begin(), text.end());
  return true;
}

}  // namespace

ProjectSource::ProjectSource(const std::string& argument, const ProjectChanges& changes)
    : m_isInput(argument == "-"), m_isChanged(!changes.IsEmpty()) {
  m_path = platform::AbsolutePath(m_isInput ? XpString(kInputName) : platform::PathFromNative(argument));
  m_name = m_isInput ? XpString(kInputName) : m_path;
  if (m_isInput) {
    m_bytes = ReadInput();
  } else if (!m_isChanged || !ReadFile(m_path, m_bytes)) {
    return;
  }
  const std::string changed = ChangeProject(m_bytes, m_path, changes);
  if (m_isChanged) m_bytes.assign(changed.begin(), changed.end());
  m_copy = std::make_unique<platform::MemoryFile>(changed);
}

void ProjectSource::HideDocuments(const XpString& name) {
  m_isHidden = true;
  m_name = name;
}

void ProjectSource::NameFile(check::Problem& problem) const {
  const bool isHidden = m_isHidden && XpPathDirectory(problem.file) == XpPathDirectory(m_path);
  if (isHidden || (problem.file == m_path && m_isChanged)) problem.line = 0;
  if (isHidden || problem.file == m_path) problem.file = m_name;
}

void ProjectSource::NameFiles(check::ProjectReport& report) const {
  for (check::Problem& problem : report.problems) NameFile(problem);
  if (m_isChanged || m_isHidden) {
    for (check::ClipRow& clip : report.clips) clip.line = 0;
  }
}

}  // namespace vrx::host
