#include "content/moff/MoffSource.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "content/formats/XpFormatChecker.h"
#include "foundation/file/XpFile.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/text/XpPath.h"

namespace vrx::moff {
namespace {

constexpr char16_t kExtension[] = u".moff";

/// The place of the name's extension among those of media files; their number for another extension.
std::size_t RankOf(const XpString& name) {
  const auto table = formats::GetMediaExtensions();
  const XpString extension = XpPathExtension(name);
  return static_cast<std::size_t>(std::ranges::find_if(table,
                                                       [&](const formats::ExtensionFormat& row) {
                                                         return XpCompareNoCase(extension, row.extension) ==
                                                                0;
                                                       }) -
                                  table.begin());
}

/// The name of a media file called `stem` in the folder; `preferred` if that is one.
XpString FindByStem(const XpString& folder, const XpString& stem, const XpString& preferred) {
  std::vector<XpString> names;
  if (platform::ListFolder(folder.IsEmpty() ? XpString(u".") : folder, names)) return {};
  XpString found;
  std::size_t best = formats::GetMediaExtensions().size();
  for (const XpString& name : names) {
    if (XpPathStem(name) != stem || !XpPathIsFile(folder + name)) continue;
    const std::size_t rank = RankOf(name);
    if (rank == formats::GetMediaExtensions().size()) continue;
    if (name == preferred) return name;
    if (rank < best || (rank == best && name < found)) {
      best = rank;
      found = name;
    }
  }
  return found;
}

/// Formats whose files are rewritten in place by players and editors, so that their size says little.
bool MayChangeSize(formats::FormatCode format) {
  constexpr std::uint32_t kBelowFamily = 0x00FFFFFF;
  const auto subfamily = formats::SubfamilyOf(format);
  switch (formats::ContainerOf(format)) {
    case formats::Container::Jpeg:
      return true;
    case formats::Container::Raw:
      return subfamily == formats::SubfamilyOf(formats::kKrw) ||
             subfamily == formats::SubfamilyOf(formats::kKrq);
    default:
      return (format & kBelowFamily) == (formats::kMp4 & kBelowFamily);
  }
}

}  // namespace

XpString MoffPathFor(const XpString& path) {
  XpString folder;
  XpString stem;
  XpString extension;
  XpPathSplit(path, &folder, &stem, &extension);
  if (extension == kExtension) return path;
  const XpString shared = folder + stem + kExtension;
  return XpPathIsFile(shared) ? shared : folder + stem + extension + kExtension;
}

XpString FindSource(const XpString& moffPath, const FileHeader& header) {
  XpString folder;
  XpString stem;
  XpPathSplit(moffPath, &folder, &stem, nullptr);
  if (XpPathIsFile(folder + stem)) return folder + stem;
  const XpString name = FindByStem(folder, stem, SourceName(header));
  return name.IsEmpty() ? name : folder + name;
}

XpResult SourceCheck::Result() const {
  return fit == SourceFit::Same || fit == SourceFit::ChangedAccepted ? XpOk : XpErrFileNotFound;
}

SourceCheck CheckSource(const XpString& moffPath, const FileHeader& header) {
  SourceCheck check;
  check.path = FindSource(moffPath, header);
  if (check.path.IsEmpty()) return check;
  check.size = XpFile(check.path).GetSize();
  const bool mayChange = MayChangeSize(XpFormatChecker::GetFormatFromName(check.path));
  check.fit = check.size == header.sourceSize ? SourceFit::Same
              : mayChange                     ? SourceFit::ChangedAccepted
                                              : SourceFit::Changed;
  return check;
}

XpResult DescribeSource(const XpString& path, FileHeader& header) {
  XpDateTime created;
  XpDateTime written;
  const XpFile file(path);
  if (const XpResult result = file.Stat(&created, &written, nullptr, &header.sourceSize)) return result;
  header.created = created.ToTimeT();
  header.written = written.ToTimeT();
  XpString name;
  file.GetName(name);
  // No file system allows a name that does not fit with its zero.
  constexpr auto kMostUnits = static_cast<std::int32_t>(std::tuple_size_v<decltype(header.sourceName)>) - 1;
  header.sourceName.fill(0);
  std::ranges::copy(name.Left(kMostUnits).AsView(), header.sourceName.begin());
  return XpOk;
}

XpString SourceName(const FileHeader& header) {
  const std::u16string_view name(header.sourceName.data(), header.sourceName.size());
  return XpString(name.substr(0, name.find(u'\0')));
}

}  // namespace vrx::moff
