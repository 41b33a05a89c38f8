// Reads a painter document: the overlays that a project names under PainterEffect.
#pragma once

#include <memory>

#include "content/plist/PlistReader.h"
#include "content/plist/XpIniDict.h"
#include "foundation/text/XpPath.h"
#include "overlay/document/PainterInfo.h"

class TKLXPainterInfoXml {
 public:
  TKLXPainterInfoXml() = default;
  TKLXPainterInfoXml(const TKLXPainterInfoXml&) = delete;
  TKLXPainterInfoXml& operator=(const TKLXPainterInfoXml&) = delete;
  virtual ~TKLXPainterInfoXml() = default;

  /// XpErrFileNotFound when there is no such file or no `PainterInfo` in it; the document layer's code when
  /// it cannot be read. Otherwise the state of the last one read of VideoWidth, DrawEndTime, Duration of a
  /// log and TrimedShift: XpErrElementNotFound when it is missing or has another type. `problem` (may be
  /// null) gets the parser's words.
  XpResult Load(const XpPath& path, vrx::plist::Findings* findings = nullptr);

  const PainterInfo& GetPainterInfo() const { return m_info; }
  const XpIniDict& GetDocument() const { return m_document; }

 private:
  XpIniDict m_document;
  PainterInfo m_info;
};
