// Groups the files of one stem into contents by the rules. Each file is looked into once and found by its
// name from then on, so that many files with one stem take no longer than as many with their own.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "content/model/ContentRules.h"
#include "content/model/ISfContent.h"

namespace vrx::model {

class StemFiles {
 public:
  /// All of them in one folder. Their order decides which of several equal main files comes first.
  explicit StemFiles(const std::vector<XpPath>& files);

  /// Fills `content` with the next content of the files that are left, which stay. Its format, or kUnknown
  /// with an empty content when no rule fits any of them.
  formats::FormatCode Classify(ISfContent& content);
  /// Takes the files of the last content out. A sidecar that the files of its stem share stays, for the next
  /// content.
  void RemoveLast();

 private:
  struct File {
    XpPath path;
    XpString name, stem;  // without regard to case
    formats::FormatCode named = formats::kUnknown;
    formats::FormatCode real = formats::kUnknown;
    bool isGone = false;
  };
  using Indices = std::vector<std::size_t>;

  void SortIntoRules();
  /// The first main file of a rule that is left; the number of files when there is none.
  std::size_t NextMain(std::size_t rule);
  void AddCompanions(const ContentRule& rule, const File& main, ISfContent& content);
  std::size_t FindCompanion(formats::FormatCode companion, const File& main) const;
  /// Those that are left, in the order of the list.
  Indices WithNames(const std::vector<std::u16string>& names) const;
  bool HasFile(const std::u16string& name, formats::FormatCode named) const;
  bool CountsAs(const File& file, formats::FormatCode companion, const File& main) const;

  std::vector<File> m_files;
  std::unordered_map<std::u16string, Indices> m_byName;
  std::vector<Indices> m_byRule;          // empty until the first content is asked for
  std::vector<std::size_t> m_nextOfRule;  // in each list of m_byRule
  Indices m_last;                         // files of the last content
};

}  // namespace vrx::model
