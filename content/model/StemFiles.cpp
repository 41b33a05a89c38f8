#include "content/model/StemFiles.h"

#include <algorithm>

#include "content/formats/XpFormatChecker.h"
#include "content/probe/DeepCheck.h"

namespace vrx::model {

using namespace formats;

namespace {

constexpr std::u16string_view kRawSidecar = u".rodd";

bool IsMpoContent(FormatCode format) {
  return format == kMpo || format == kMpoOther || format == kMpoPanorama || format == kMpoFrames ||
         format == kMpoStereo;
}

bool IsSpf(FormatCode format) { return format == kSpf || format == kSpf257 || format == kSpf258; }

std::u16string Joined(const XpString& name, std::u16string_view extension) {
  return std::u16string(name.AsView()).append(extension);
}

}  // namespace

StemFiles::StemFiles(const std::vector<XpPath>& files) {
  m_files.reserve(files.size());
  for (const XpPath& path : files) {
    XpString stem, extension;
    XpPathSplit(path.GetText(), nullptr, &stem, &extension);
    const XpString name = XpFoldCase(stem + extension);
    m_byName[std::u16string(name.AsView())].push_back(m_files.size());
    m_files.push_back({.path = path,
                       .name = name,
                       .stem = XpFoldCase(stem),
                       .named = XpFormatChecker::GetFormatFromName(path.GetText())});
  }
}

void StemFiles::SortIntoRules() {
  m_byRule.resize(ContentRules().size());
  m_nextOfRule.resize(ContentRules().size());
  for (std::size_t i = 0; i < m_files.size(); ++i) {
    m_files[i].real = CheckFormat(m_files[i].path.GetText());
    const std::size_t rule = FindContentRule(m_files[i].real);
    if (rule != kNoRule) m_byRule[rule].push_back(i);
  }
}

std::size_t StemFiles::NextMain(std::size_t rule) {
  const Indices& mains = m_byRule[rule];
  std::size_t& next = m_nextOfRule[rule];
  while (next < mains.size() && m_files[mains[next]].isGone) ++next;
  return next < mains.size() ? mains[next] : m_files.size();
}

FormatCode StemFiles::Classify(ISfContent& content) {
  content.Clear();
  m_last.clear();
  if (m_byRule.empty()) SortIntoRules();
  for (std::size_t rule = 0; rule < m_byRule.size(); ++rule) {
    const std::size_t main = NextMain(rule);
    if (main == m_files.size()) continue;
    m_last.push_back(main);
    content.AddFile(m_files[main].path, m_files[main].real);
    AddCompanions(ContentRules()[rule], m_files[main], content);
    return m_files[main].real;
  }
  return kUnknown;
}

void StemFiles::AddCompanions(const ContentRule& rule, const File& main, ISfContent& content) {
  if (main.stem.IsEmpty()) return;
  for (const FormatCode companion : rule.companions) {
    if (companion == kNoCompanion) return;
    const std::size_t found = FindCompanion(companion, main);
    if (found == m_files.size()) continue;
    m_last.push_back(found);
    content.AddFile(m_files[found].path, companion);
  }
}

std::size_t StemFiles::FindCompanion(FormatCode companion, const File& main) const {
  const std::u16string_view extension = CompanionExtension(companion);
  if (extension.empty()) return m_files.size();
  const std::u16string shared = Joined(main.stem, extension), own = Joined(main.name, extension);
  const bool isOfRaw = companion == kModd && ContainerOf(main.real) == Container::Raw;
  const std::u16string sharedOfRaw = Joined(main.stem, kRawSidecar);
  // A file of its own counts more than one that several share.
  const bool hasOwn = FamilyOf(companion) == Family::Other && HasFile(own, companion);
  for (const std::size_t i : WithNames({isOfRaw ? sharedOfRaw : shared, own})) {
    if (!CountsAs(m_files[i], companion, main)) continue;
    if (m_files[i].name.AsView() == own || !hasOwn) return i;
  }
  return m_files.size();
}

bool StemFiles::CountsAs(const File& file, FormatCode companion, const File& main) const {
  if (file.named != kJpeg) return file.named == companion;
  return companion == kJpegPlain && !(IsMpoContent(main.real) && IsSpf(file.real));
}

bool StemFiles::HasFile(const std::u16string& name, FormatCode named) const {
  const Indices files = WithNames({name});
  return std::ranges::any_of(files, [&](std::size_t i) { return m_files[i].named == named; });
}

StemFiles::Indices StemFiles::WithNames(const std::vector<std::u16string>& names) const {
  Indices found;
  for (const std::u16string& name : names) {
    const auto place = m_byName.find(name);
    if (place == m_byName.end()) continue;
    for (const std::size_t i : place->second) {
      if (!m_files[i].isGone) found.push_back(i);
    }
  }
  std::ranges::sort(found);
  return found;
}

void StemFiles::RemoveLast() {
  if (m_last.empty()) return;
  const XpString stem = m_files[m_last.front()].stem;
  for (const std::size_t i : m_last) {
    const bool isShared = FamilyOf(m_files[i].named) == Family::Other && m_files[i].stem == stem;
    m_files[i].isGone = !isShared;
  }
}

}  // namespace vrx::model
