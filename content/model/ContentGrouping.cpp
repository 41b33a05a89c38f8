#include "content/model/ContentGrouping.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "content/formats/XpFormatChecker.h"
#include "content/model/StemFiles.h"
#include "foundation/file/XpDir.h"

using namespace vrx::formats;

namespace {

bool IsSame(const XpString& a, const XpString& b) { return XpCompareNoCase(a, b) == 0; }

/// Of the files, not of the folders, whose names begin with `prefix`.
XpResult ListFiles(const XpString& folder, const XpString& prefix, std::vector<XpPath>& files) {
  files.clear();
  XpDir directory(folder);
  if (const XpResult result = directory.Open(XpDirFiles | XpDirPrefix, prefix)) return result;
  while (const XpSharedPtr<XpAbstractFSObj> entry = directory.Next()) {
    XpString path;
    if (entry->GetPathText(path) == XpOk) files.emplace_back(path);
  }
  return directory.Close();
}

/// Only of the search: in it, characters of names are none of patterns.
XpString WithoutWildcards(const XpString& stem) {
  const std::u16string_view text = stem.AsView();
  return XpString(text.substr(0, std::min(text.find_first_of(u"*?"), text.size())));
}

}  // namespace

XpResult GatherStemFiles(const XpPath& path, std::vector<XpPath>& list) {
  const XpString stem = XpPathStem(path.GetText());
  std::vector<XpPath> files;
  list.clear();
  if (const XpResult result = ListFiles(XpPathDirectory(path.GetText()), WithoutWildcards(stem), files))
    return result;
  for (const XpPath& file : files) {
    const XpString own = XpPathStem(file.GetText());
    if (IsSame(own, stem) || IsSame(XpPathStem(own), stem)) list.push_back(file);
  }
  return XpOk;
}

FormatCode ClassifyNext(const std::vector<XpPath>& list, ISfContent& content) {
  return vrx::model::StemFiles(list).Classify(content);
}

void RemoveContentFiles(const ISfContent& content, std::vector<XpPath>& list) {
  XpPath main;
  content.GetMainPath(main);
  const XpString stem = XpPathStem(main.GetText());
  std::set<XpString> listed;
  for (const XpPath& file : list) listed.insert(file.GetText());
  std::erase_if(list, [&](const XpPath& file) {
    XpPath found;
    content.GetFileAt(found, content.IndexOfPath(file));
    if (found.GetText().IsEmpty()) return false;
    // The file system may have two files whose names differ in case only: the other one is not in the
    // content.
    if (found.GetText() != file.GetText() && listed.contains(found.GetText())) return false;
    const bool isSidecar = FamilyOf(XpFormatChecker::GetFormatFromName(file.GetText())) == Family::Other;
    return !isSidecar || !IsSame(XpPathStem(file.GetText()), stem);
  });
}

namespace vrx::model {

namespace {

using Key = std::u16string;  // of a file or stem, without regard to case

Key KeyOf(const XpString& text) { return Key(XpFoldCase(text).AsView()); }

/// Groups folders stem by stem, each before those that begin with it: a.mpo.jpg goes with a.mpo before it
/// could be a content of the stem a.mpo.
class FolderGrouping {
 public:
  explicit FolderGrouping(const std::vector<XpPath>& files) : m_files(files), m_isTaken(files.size()) {
    std::set<Key> names;
    for (std::size_t i = 0; i < files.size(); ++i) {
      const XpString& path = files[i].GetText();
      m_byPath.emplace(std::u16string(path.AsView()), i);
      m_ofStem[KeyOf(XpPathStem(path))].push_back(i);
      names.insert(KeyOf(XpPathStem(path) + XpPathExtension(path)));
    }
    for (std::size_t i = 0; i < files.size(); ++i) {
      const XpString stem = XpPathStem(files[i].GetText());
      if (XpPathExtension(stem).IsEmpty()) continue;
      // It has the whole name of another file in it, or no file of that stem needs it.
      if (names.contains(KeyOf(stem))) m_belowStem[KeyOf(XpPathStem(stem))].push_back(i);
    }
  }

  void Run(FolderContents& found) {
    for (const auto& [stem, files] : m_ofStem) GroupStem(stem, found);
    for (std::size_t i = 0; i < m_files.size(); ++i) {
      if (!m_isTaken[i]) found.rest.push_back(m_files[i]);
    }
  }

 private:
  void GroupStem(const Key& stem, FolderContents& found) {
    std::vector<std::size_t> indices;
    const auto add = [&](const std::map<Key, std::vector<std::size_t>>& stems) {
      const auto files = stems.find(stem);
      if (files != stems.end()) indices.insert(indices.end(), files->second.begin(), files->second.end());
    };
    add(m_ofStem);
    add(m_belowStem);
    std::erase_if(indices, [&](std::size_t i) { return m_isTaken[i] && !IsShared(i); });
    std::ranges::sort(indices);
    std::vector<XpPath> files;
    for (const std::size_t i : indices) files.push_back(m_files[i]);
    StemFiles stemFiles(files);
    SfContent content;
    while (stemFiles.Classify(content) != kUnknown) {
      stemFiles.RemoveLast();
      XpPath main;
      content.GetMainPath(main);
      // Main files of longer stems have their turn with all that goes with them.
      if (KeyOf(XpPathStem(main.GetText())) == stem) Take(content, found);
    }
  }

  bool IsShared(std::size_t i) const {
    return FamilyOf(XpFormatChecker::GetFormatFromName(m_files[i].GetText())) == Family::Other;
  }

  void Take(const SfContent& content, FolderContents& found) {
    found.contents.push_back(content);
    XpPath path;
    for (std::int32_t i = 0; i < content.GetFileCount(); ++i) {
      content.GetFileAt(path, i);
      m_isTaken[m_byPath.at(std::u16string(path.GetText().AsView()))] = true;
    }
  }

  const std::vector<XpPath>& m_files;
  std::vector<bool> m_isTaken;
  std::map<Key, std::vector<std::size_t>> m_ofStem, m_belowStem;
  std::map<std::u16string, std::size_t> m_byPath;
};

}  // namespace

void GroupFiles(std::vector<XpPath> files, FolderContents& found) {
  found = {};
  std::ranges::sort(files, [](const XpPath& a, const XpPath& b) {
    const int order = XpCompareNoCase(a.GetText(), b.GetText());
    return order != 0 ? order < 0 : a.GetText() < b.GetText();
  });
  FolderGrouping(files).Run(found);
  std::ranges::sort(found.contents, [](const SfContent& a, const SfContent& b) {
    XpPath left, right;
    a.GetMainPath(left);
    b.GetMainPath(right);
    const int order = XpCompareNoCase(left.GetText(), right.GetText());
    return order != 0 ? order < 0 : left.GetText() < right.GetText();
  });
}

XpResult ReadFolderContents(const XpString& folder, FolderContents& found) {
  std::vector<XpPath> files;
  found = {};
  if (const XpResult result = ListFiles(folder, XpString(), files)) return result;
  GroupFiles(std::move(files), found);
  return XpOk;
}

}  // namespace vrx::model
