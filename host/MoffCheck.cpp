#include "host/MoffCheck.h"

#include <algorithm>

#include "content/moff/MoffSource.h"
#include "content/moff/MoffTags.h"
#include "content/moff/MoffTree.h"
#include "foundation/file/XpFile.h"
#include "host/Console.h"
#include "host/FileCauses.h"

namespace vrx::host {
namespace {

using Problems = std::vector<std::string>;

std::string InCode(XpResult code) { return " (" + CodeText(code) + ")"; }

/// "group 2 (id 7)", counted from 1.
std::string GroupName(std::size_t index, std::uint32_t id) {
  return "group " + std::to_string(index + 1) + " (id " + std::to_string(id) + ")";
}

std::string TableProblem(const moff::FileTag& root, const moff::HeaderPlace& place, XpResult code) {
  const auto& groups = root.child->GetChildren();
  const auto group = static_cast<std::size_t>(std::max<std::int64_t>(place.group, 0));
  const std::string table = place.group >= 0 ? "the table of " + GroupName(group, groups[group]->record.id)
                            : root.child->position != 0 ? "the table of groups"
                                                        : "the header";
  const std::string cause =
      code == XpErrEndOfFile ? " is cut off at byte " : " is damaged before or at byte ";
  return table + cause + std::to_string(place.position) + InCode(code);
}

/// What is wrong with one body; empty when it can be read.
std::string BodyProblem(const moff::EntryInfo& entry, const moff::BodyRange& range) {
  if (entry.result == XpOk) return {};
  const std::string place = "its body at byte " + std::to_string(entry.position);
  const std::string code = InCode(entry.result);
  if (entry.position < range.first) return place + " lies in the tables" + code;
  if (range.end - entry.position < moff::BodyHead::kSize)
    return place + " lies past the end of the file" + code;
  if (entry.result == XpErrMalformedRecord) {
    return place + " has a size of " + std::to_string(entry.head.size) + ", less than its own head" + code;
  }
  if (entry.result != XpErrFailed) return place + ": " + ReadCause(entry.result);
  if (entry.head.size > range.end - entry.position) return place + " reaches past the end of the file" + code;
  return place + " is of the unknown kind " + KindText(entry.head.kind) + code;
}

/// No reader uses the offset of the bodies in a group's record, but one past the end is certainly wrong.
void AddOffsetProblems(const moff::FileTag& root, const moff::BodyRange& range, Problems& problems) {
  const moff::GroupTable& table = *root.child;
  for (std::size_t i = 0; i < table.GetChildren().size(); ++i) {
    const moff::GroupData& group = table.GetChildren()[i]->record;
    if (table.position + group.bodiesOffset <= range.end) continue;
    problems.push_back(GroupName(i, group.id) + ": its bodies begin past the end of the file" +
                       InCode(XpErrMalformedRecord));
  }
}

struct BodyPlace {
  std::int64_t start;
  std::int64_t end;
  std::string name;
};

void AddOverlaps(std::vector<BodyPlace> bodies, Problems& problems) {
  std::ranges::stable_sort(bodies, {}, &BodyPlace::start);
  for (std::size_t i = 1, widest = 0; i < bodies.size(); ++i) {
    if (bodies[i].start < bodies[widest].end) {
      problems.push_back(bodies[i].name + ": its body overlaps that of " + bodies[widest].name +
                         InCode(XpErrMalformedRecord));
    }
    if (bodies[i].end > bodies[widest].end) widest = i;
  }
}

void AddGroupProblems(const std::vector<moff::GroupInfo>& groups, const moff::BodyRange& range,
                      MoffReport& report) {
  std::vector<BodyPlace> bodies;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    for (std::size_t j = 0; j < groups[i].entries.size(); ++j) {
      const moff::EntryInfo& entry = groups[i].entries[j];
      std::string name = GroupName(i, groups[i].id) + ", entry " + std::to_string(j + 1);
      if (const std::string problem = BodyProblem(entry, range); !problem.empty()) {
        report.problems.push_back(name + ": " + problem);
      } else {
        bodies.push_back({entry.position, entry.position + entry.head.size, std::move(name)});
      }
    }
    report.entries += groups[i].entries.size();
  }
  report.groups = groups.size();
  AddOverlaps(std::move(bodies), report.problems);
}

void AddSourceProblem(const XpString& moffPath, const moff::FileHeader& header, Problems& problems) {
  const moff::SourceCheck source = moff::CheckSource(moffPath, header);
  if (source.Result() == XpOk) return;
  const std::string code = InCode(source.Result());
  if (source.fit == moff::SourceFit::Missing) {
    problems.push_back("there is no media file beside it" + code);
  } else {
    problems.push_back("its media file " + Utf8(source.path) + " has " + std::to_string(source.size) +
                       " bytes instead of " + std::to_string(header.sourceSize) + code);
  }
}

}  // namespace

MoffReport CheckMoff(const XpString& moffPath) {
  MoffReport report;
  XpFile file(moffPath);
  if (const XpResult result = file.Open(XpOpenRead, XpShareRead)) {
    report.problems.push_back("it cannot be read: " + ReadCause(result));
    return report;
  }
  moff::FileTag root;
  moff::BodyRange range;
  moff::HeaderPlace place;
  if (const XpResult result = moff::ReadHeaders(file, root, range, {}, &place)) {
    report.problems.push_back(TableProblem(root, place, result));
    return report;
  }
  AddOffsetProblems(root, range, report.problems);
  AddGroupProblems(moff::ListGroups(&file, range, root), range, report);
  if (report.problems.empty()) {
    const XpResult result = moff::ReadBodies(file, range, root);
    if (result != XpOk) report.problems.push_back("a body cannot be read: " + ReadCause(result));
  }
  AddSourceProblem(moffPath, root.record, report.problems);
  return report;
}

std::string KindText(std::uint32_t kind) {
  std::string text;
  for (int shift = 0; shift < 32; shift += 8) text += static_cast<char>(kind >> shift & 0xFF);
  const bool isText = std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
  return isText ? text : CodeText(kind);
}

}  // namespace vrx::host
