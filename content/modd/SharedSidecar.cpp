#include "content/modd/SharedSidecar.h"

#include <algorithm>
#include <vector>

#include "content/formats/XpFormatChecker.h"
#include "content/model/ContentGrouping.h"
#include "content/model/SfContent.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/text/XpPath.h"

namespace formats = vrx::formats;

namespace {

constexpr char16_t kRawExtension[] = u".rodd";

bool IsRaw(const XpString& path) {
  return formats::ContainerOf(XpFormatChecker::GetFormatFromName(path)) == formats::Container::Raw;
}

bool IsMedia(const XpPath& file) {
  const auto family = formats::FamilyOf(XpFormatChecker::GetFormatFromName(file.GetText()));
  return family == formats::Family::Still || family == formats::Family::Video;
}

/// The RAW files of the stem, by their names.
std::vector<XpPath> FindRawFiles(std::vector<XpPath> list) {
  std::erase_if(list, [](const XpPath& file) { return !IsRaw(file.GetText()); });
  return list;
}

/// The main files of all contents of the stem; none when one of its media files is in no content.
std::vector<XpPath> FindMainFiles(std::vector<XpPath> list) {
  std::vector<XpPath> mains;
  SfContent content;
  while (!list.empty() && ClassifyNext(list, content) != formats::kUnknown) {
    XpPath main;
    content.GetMainPath(main);
    mains.push_back(main);
    RemoveContentFiles(content, list);
  }
  return std::ranges::any_of(list, IsMedia) ? std::vector<XpPath>() : mains;
}

bool HasOwnSidecar(const XpPath& main) { return XpPathIsFile(main.GetText() + kXpSidecarExtension); }

}  // namespace

XpString XpSharedSidecarPath(const XpString& contentPath) {
  const XpString base = XpPathDirectory(contentPath) + XpPathStem(contentPath);
  return base + (IsRaw(contentPath) ? kRawExtension : kXpSidecarExtension);
}

void XpRemoveUnneededSharedSidecar(const XpString& contentPath) {
  std::vector<XpPath> list;
  if (GatherStemFiles(XpPath(contentPath), list) != XpOk) return;
  const std::vector<XpPath> readers = IsRaw(contentPath) ? FindRawFiles(list) : FindMainFiles(list);
  if (readers.empty() || !std::ranges::all_of(readers, HasOwnSidecar)) return;
  XpFileDelete(XpSharedSidecarPath(contentPath));
}
