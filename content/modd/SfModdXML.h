// The .modd sidecar of a content: metadata that a user or a camera added, in a property list beside the media
// file. The GPS overlay asks it for the time zone, and programs store what a user says of a clip.
#pragma once

#include <cstdint>

#include "content/plist/XpIniDict.h"
#include "foundation/text/XpPath.h"

/// Modes of SfModdXML::Open; the last one is the state without a document.
enum : std::uint32_t { SfModdRead = 0, SfModdReadWrite = 1, SfModdClosed = 2 };

/// The object is the root of its document. A sidecar is one of its own (clip.mp4.modd) or one that all files
/// of a stem share (clip.modd; shot.rodd for RAW pictures).
class SfModdXML : public XpIniDict {
 public:
  explicit SfModdXML(const XpString& contentPath) : m_contentPath(contentPath) {}

  /// Finds and loads the sidecar. Without one, XpErrFileNotFound for SfModdRead, and for SfModdReadWrite a
  /// new document in memory. XpErrInvalidFileOperation for another mode; XpErrFailed for a property list that
  /// is no sidecar; otherwise the codes of XpIniDict::Load. A failure leaves the object closed; the path and
  /// the flags below then still say what was found.
  XpResult Open(std::uint32_t mode);
  /// Loads this sidecar, whatever content it belongs to, for reading.
  XpResult OpenSidecar(const XpString& moddPath);

  /// Writes the document into the sidecar of the content's own, clip.mp4.modd, also when it was read from the
  /// one that its stem shares; a write-protected one is replaced. The file is marked as hidden by an extended
  /// attribute, since a leading dot would change its name. A shared sidecar is deleted once no content of the
  /// stem needs it. XpErrNoSuchFile when open for reading, XpErrInvalidFileOperation when closed, otherwise
  /// the codes of XpIniDict::Save.
  virtual XpResult SaveSidecar();

  /// The content's local time minus UTC. XpErrFailed when closed, XpErrElementNotFound when it is not set,
  /// otherwise the codes of XpIniElement::GetInt32.
  XpResult GetFileTimeZoneOffset(std::int32_t& minutes) const;

  /// The sidecar in use, or the one to be made.
  const XpString& GetModdPath() const { return m_moddPath.GetText(); }
  bool IsSharedByStem() const { return m_sharedByStem; }
  bool FileExists() const { return m_fileExists; }
  /// True when no sidecar was found.
  bool IsNew() const { return m_isNew; }
  std::uint32_t GetMode() const { return m_mode; }
  /// Null when closed.
  XpIniElement* GetMetaDict() const { return m_metaDict; }

 private:
  XpResult OpenDocument();
  void Find();
  void Begin(std::uint32_t mode);
  XpResult End(XpResult result);
  XpResult LoadDocument();
  XpResult CreateDocument();
  XpResult TakeMetaDict();

  XpIniElement* m_metaDict = nullptr;  // element 0 of the list
  const XpPath m_contentPath;
  XpPath m_moddPath;
  bool m_sharedByStem = false;
  bool m_fileExists = false;
  bool m_isNew = false;
  std::uint32_t m_mode = SfModdClosed;
};
