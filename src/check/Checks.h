// The parts of a project's inspection. CheckProject runs them one after the other; each adds what it finds to
// the report. `file` is the path of the project document.
#pragma once

#include <vector>

#include "content/plist/PlistReader.h"
#include "content/plist/XpIniDict.h"
#include "src/check/ProjectReport.h"

namespace vrx::check {

/// What the reader of a property list says of the document `file`.
Problem RemarkOf(const XpString& file, const plist::Remark& remark);

/// Values of the wrong type, unknown keys, and dicts that are missing.
void CheckDocument(const XpIniDict& document, const XpString& file, std::vector<Problem>& problems);

struct SourceLook {
  SourceProbe probe;  // may be empty
  StillLook stills = StillLook::Size;
};

/// Lays out the clips of both tracks and looks into their sources. The report holds the output settings.
void CheckClips(const XpString& file, const TKLXOutputXml& project, const SourceLook& look,
                ProjectReport& report);

/// The output settings and the path of the movie, both in the report.
void CheckOutput(const XpString& file, ProjectReport& report);

/// The painter document: what is wrong with it, which frames get overlays, and which captions never show.
void CheckOverlays(const XpString& file, const TKLXOutputXml& project, ProjectReport& report);

}  // namespace vrx::check
