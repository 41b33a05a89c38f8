#include "content/modd/SfModdXML.h"

#include "content/formats/XpFormatChecker.h"
#include "content/modd/SharedSidecar.h"
#include "foundation/file/XpFileAvailableChecker.h"
#include "foundation/file/XpFileOperations.h"

namespace formats = vrx::formats;

namespace {

constexpr char16_t kTypeKey[] = u"XMLFileType";
constexpr char16_t kTypeName[] = u"ModdXML";
constexpr char16_t kListKey[] = u"MetaDataList";
constexpr char16_t kTimeZoneKey[] = u"FileTimeZoneOffset";

constexpr std::uint32_t kSearchMs = 1;  // a share that does not answer holds no sidecar

/// True for the name of a sidecar that stands for a stem: what it is appended to is no media file.
bool IsSharedName(const XpString& moddPath) {
  return XpFormatChecker::GetFormatFromName(XpPathStem(moddPath)) == formats::kUnknown;
}

}  // namespace

XpResult SfModdXML::Open(std::uint32_t mode) {
  Begin(mode);
  return End(OpenDocument());
}

XpResult SfModdXML::OpenSidecar(const XpString& moddPath) {
  Begin(SfModdRead);
  m_moddPath = XpPath(moddPath);
  m_sharedByStem = IsSharedName(moddPath);
  m_fileExists = XpFileAvailableChecker().FileExists(moddPath, kSearchMs);
  return End(m_fileExists ? LoadDocument() : XpErrFileNotFound);
}

XpResult SfModdXML::GetFileTimeZoneOffset(std::int32_t& minutes) const {
  if (m_metaDict == nullptr) return XpErrFailed;
  const XpIniElement* offset = m_metaDict->Get(kTimeZoneKey);
  return offset == nullptr ? XpErrElementNotFound : offset->GetInt32(minutes);
}

XpResult SfModdXML::SaveSidecar() {
  if (m_mode == SfModdRead) return XpErrNoSuchFile;
  if (m_mode != SfModdReadWrite) return XpErrInvalidFileOperation;
  if (m_sharedByStem) m_moddPath = XpPath(m_contentPath.GetText() + kXpSidecarExtension);
  const XpString& path = m_moddPath.GetText();
  if (XpPathIsReadOnly(path)) XpPathClearReadOnly(path);
  if (const XpResult result = Save(path)) return result;
  m_fileExists = true;
  XpPathSetHidden(path);  // where the file system cannot keep the mark, the sidecar is simply seen
  if (m_sharedByStem) XpRemoveUnneededSharedSidecar(m_contentPath.GetText());
  return XpOk;
}

void SfModdXML::Begin(std::uint32_t mode) {
  m_metaDict = nullptr;
  Clear();
  m_moddPath = XpPath();
  m_sharedByStem = m_fileExists = m_isNew = false;
  m_mode = mode;
}

XpResult SfModdXML::End(XpResult result) {
  if (result == XpOk) return XpOk;
  m_metaDict = nullptr;
  Clear();
  m_mode = SfModdClosed;
  return result;
}

XpResult SfModdXML::OpenDocument() {
  if (m_contentPath.GetText().IsEmpty()) return XpErrFileNotFound;
  Find();
  switch (m_mode) {
    case SfModdRead:
      return m_fileExists ? LoadDocument() : XpErrFileNotFound;
    case SfModdReadWrite:
      return m_fileExists ? LoadDocument() : CreateDocument();
    default:
      return XpErrInvalidFileOperation;
  }
}

void SfModdXML::Find() {
  XpFileAvailableChecker checker;
  const XpString own = m_contentPath.GetText() + kXpSidecarExtension;
  const XpString shared = XpSharedSidecarPath(m_contentPath.GetText());
  m_fileExists = checker.FileExists(own, kSearchMs);
  if (!m_fileExists) m_fileExists = m_sharedByStem = checker.FileExists(shared, kSearchMs);
  m_isNew = !m_fileExists;
  m_moddPath = XpPath(m_sharedByStem ? shared : own);
}

XpResult SfModdXML::LoadDocument() {
  if (const XpResult result = Load(m_moddPath.GetText())) return result;
  XpString type;
  const XpIniElement* element = Get(kTypeKey);
  if (element == nullptr || element->GetString(type) != XpOk || type != kTypeName) return XpErrFailed;
  return TakeMetaDict();
}

XpResult SfModdXML::CreateDocument() {
  if (const XpResult result = Add(kTypeKey, XpIniType::String, XpString(kTypeName))) return result;
  if (const XpResult result = Add(kListKey, XpIniType::Array, {})) return result;
  XpIniElement* list = Get(kListKey);
  if (list == nullptr) return XpErrFailed;
  if (const XpResult result = list->InsertAt(kAppend, XpIniType::Dict, {})) return result;
  return TakeMetaDict();
}

XpResult SfModdXML::TakeMetaDict() {
  const XpIniElement* list = Get(kListKey);
  m_metaDict = list == nullptr ? nullptr : list->GetAt(0);
  return m_metaDict == nullptr ? XpErrFailed : XpOk;
}
