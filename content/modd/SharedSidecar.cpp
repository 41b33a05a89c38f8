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

constexpr char16_t kExtension[] = u".modd";
constexpr char16_t kRawExtension[] = u".rodd";

bool IsRaw(const XpString& path) {
  return formats::ContainerOf(XpFormatChecker::GetFormatFromName(path)) == formats::Container::Raw;
}

bool IsMedia(const XpPath& file) {
  const auto family = formats::FamilyOf(XpFormatChecker::GetFormatFromName(file.GetText()));
  return family == formats::Family::Still || family == formats::Family::Video;
}

/// The main files of all contents of the stem; none when one of its media files is in no content.
std::vector<XpPath> FindMainFiles(const XpString& contentPath) {
  std::vector<XpPath> list, mains;
  if (GatherStemFiles(XpPath(contentPath), list) != XpOk) return {};
  SfContent content;
  while (!list.empty() && ClassifyNext(list, content) != formats::kUnknown) {
    XpPath main;
    content.GetMainPath(main);
    mains.push_back(main);
    RemoveContentFiles(content, list);
  }
  return std::ranges::any_of(list, IsMedia) ? std::vector<XpPath>() : mains;
}

}  // namespace

XpString XpSharedSidecarPath(const XpString& contentPath) {
  const XpString base = XpPathDirectory(contentPath) + XpPathStem(contentPath);
  return base + (IsRaw(contentPath) ? kRawExtension : kExtension);
}

void XpRemoveUnneededSharedSidecar(const XpString& contentPath) {
  const XpString shared = XpSharedSidecarPath(contentPath);
  if (!IsRaw(contentPath)) {
    const std::vector<XpPath> mains = FindMainFiles(contentPath);
    const auto hasOwn = [](const XpPath& main) { return XpPathIsFile(main.GetText() + kExtension); };
    if (mains.empty() || !std::ranges::all_of(mains, hasOwn)) return;
  }
  XpFileDelete(shared);
}
