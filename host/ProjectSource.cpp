#include "host/ProjectSource.h"

#include <cstdio>

#include "content/plist/PlistReader.h"
#include "content/plist/PlistWriter.h"
#include "foundation/platform/Paths.h"
#include "src/project/ProjectKeys.h"
#include "src/project/ProjectPath.h"

namespace vrx::host {
namespace {

constexpr char16_t kInputName[] = u"standard input";

/// One byte more than a reader takes is enough to be refused.
std::vector<char> ReadInput() {
  const std::size_t most = xml::XmlLimits().bytes + 1;
  std::vector<char> bytes;
  char block[1 << 16];
  for (std::size_t count = 0;
       bytes.size() < most && (count = std::fread(block, 1, sizeof(block), stdin)) > 0;) {
    bytes.insert(bytes.end(), block, block + count);
  }
  return bytes;
}

void MakeAbsolute(const XpIniElement* dict, const plist::Key& key, const XpString& from) {
  if (project::Find(dict, key) == nullptr) return;
  XpIniElement* element = dict->Get(key.name);
  XpString path;
  element->GetString(path);
  element->SetString(project::ResolvePath(from, path));
}

/// The document with the paths that the project at `from` means; as it is when it cannot be read.
std::string WithAbsolutePaths(const std::vector<char>& bytes, const XpString& from) {
  const std::string unchanged(bytes.begin(), bytes.end());
  XpIniDict document;
  if (plist::ReadBytes(bytes, nullptr, document, nullptr) != XpOk) return unchanged;
  const XpIniElement* wrapper = project::Find(&document, project::kRoot);
  for (const plist::Key& track : {project::kVideoTrack, project::kAudioTrack}) {
    const XpIniElement* clips = project::Find(wrapper, track);
    for (std::uint32_t i = 0; clips != nullptr && i < clips->GetCount(); ++i) {
      if (clips->GetAt(i)->GetType() == XpIniType::Dict)
        MakeAbsolute(clips->GetAt(i), project::kSourceFile, from);
    }
  }
  const XpIniElement* output = project::Find(wrapper, project::kOutputSettings);
  MakeAbsolute(output, project::kOutputFilePath, from);
  MakeAbsolute(output, project::kPainterEffect, from);
  std::string text;
  return plist::WriteDocument(document, text) == XpOk ? text : unchanged;
}

}  // namespace

ProjectSource::ProjectSource(const std::string& argument) : m_isInput(argument == "-") {
  m_path = platform::AbsolutePath(m_isInput ? XpString(kInputName) : platform::PathFromNative(argument));
  m_name = m_isInput ? XpString(kInputName) : m_path;
  if (!m_isInput) return;
  m_bytes = ReadInput();
  m_copy = std::make_unique<platform::MemoryFile>(WithAbsolutePaths(m_bytes, m_path));
}

void ProjectSource::NameProblems(check::ProjectReport& report) const {
  for (check::Problem& problem : report.problems) {
    if (problem.file == m_path) problem.file = m_name;
  }
}

}  // namespace vrx::host
