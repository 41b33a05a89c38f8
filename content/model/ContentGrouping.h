// The contents of a stem, from the files on the disk: gather the files, then take one content after the other
// out of the list. Sidecars are saved by it, and folders are sorted into contents.
#pragma once

#include <vector>

#include "content/formats/FormatCodes.h"
#include "content/model/ISfContent.h"
#include "content/model/SfContent.h"
#include "vrx/XpResult.h"
#include "vrx/XpString.h"

/// All files that may belong to contents of the path's stem: those whose name without its extension, or
/// without its last two, is the stem, without regard to case. The failure of the folder otherwise, with an
/// empty list.
XpResult GatherStemFiles(const XpPath& path, std::vector<XpPath>& list);

/// Fills `content` with the next content of the list, which stays as it is. Its format, or kUnknown with an
/// empty content when no rule fits a file of the list. Looks into the files.
vrx::formats::FormatCode ClassifyNext(const std::vector<XpPath>& list, ISfContent& content);

/// Takes the files of a content out of the list, but a sidecar or its like stays that the files of the stem
/// share.
void RemoveContentFiles(const ISfContent& content, std::vector<XpPath>& list);

namespace vrx::model {

/// The files of a folder in contents.
struct FolderContents {
  std::vector<SfContent> contents;  // by name
  std::vector<XpPath> rest;         // what fits no rule
};

/// Each file is in one content or in the rest; only a sidecar and its like can be in several contents of its
/// stem. Folders within are not looked at. The failure of the folder otherwise.
XpResult ReadFolderContents(const XpString& folder, FolderContents& found);
/// The same of files in one folder, in any order.
void GroupFiles(std::vector<XpPath> files, FolderContents& found);

}  // namespace vrx::model
