#include "host/Commands.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "content/moff/MoffSource.h"
#include "content/moff/SfMoffFile.h"
#include "foundation/file/XpReplaceFile.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/LocalTime.h"
#include "foundation/platform/Paths.h"
#include "host/Console.h"
#include "host/FileCauses.h"
#include "host/MoffCheck.h"

namespace vrx::host {
namespace {

enum class MoffAction { List, Extract, Validate };

struct MoffOptions {
  MoffAction action = MoffAction::List;
  std::string file;  // a content or its container
  bool json = false;
  std::uint32_t group = 0;  // id
  std::uint32_t entry = 1;  // of the group, from 1
  std::string output;       // of Extract
};

XpString MoffPathOf(const MoffOptions& options) {
  return moff::MoffPathFor(platform::AbsolutePath(platform::PathFromNative(options.file)));
}

/// Whether or not the media file still fits: these commands show what is there.
bool Open(const XpString& moffPath, SfMoffFile& file) {
  file.SetSkipValidation(true);
  const XpResult result = file.Open(moffPath);
  if (result != XpOk) Fail(Utf8(moffPath) + ": " + ReadCause(result));
  return result == XpOk;
}

std::string TimeText(std::int64_t seconds) {
  constexpr std::int64_t kYear1 = -62'135'596'800;
  constexpr std::int64_t kYear10000 = 253'402'300'800;
  platform::CalendarTime time;
  const bool isDate = seconds >= kYear1 && seconds < kYear10000 && platform::LocalFromUnix(seconds, time);
  if (!isDate) return "at no valid time";
  char text[64];
  std::snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d:%02d", time.year, time.month, time.day,
                time.hour, time.minute, time.second);
  return text;
}

std::string FitText(const moff::SourceCheck& source) {
  const std::string path = Utf8(source.path);
  switch (source.fit) {
    case moff::SourceFit::Same:
      return path + ", unchanged";
    case moff::SourceFit::ChangedAccepted:
      return path + ", now of " + std::to_string(source.size) + " bytes, which its format allows";
    case moff::SourceFit::Changed:
      return path + ", which has " + std::to_string(source.size) + " bytes and does not fit (" +
             CodeText(source.Result()) + ")";
    case moff::SourceFit::Missing:
      break;
  }
  return "missing (" + CodeText(source.Result()) + ")";
}

const char* FitName(moff::SourceFit fit) {
  switch (fit) {
    case moff::SourceFit::Same:
      return "same";
    case moff::SourceFit::ChangedAccepted:
      return "changed-accepted";
    case moff::SourceFit::Changed:
      return "changed";
    case moff::SourceFit::Missing:
      break;
  }
  return "missing";
}

std::string NumberText(std::uint32_t number) {
  char text[16];
  std::snprintf(text, sizeof(text), "0x%08x", number);
  return text;
}

void PrintText(const SfMoffFile& file, const moff::SourceCheck& source) {
  const moff::FileHeader& header = file.GetHeader();
  std::printf("Container   %s, format %s\n", Plain(file.GetMoffPath()).c_str(),
              NumberText(header.version).c_str());
  std::printf("Made for    %s, %lld bytes, made %s, written %s\n", Plain(moff::SourceName(header)).c_str(),
              static_cast<long long>(header.sourceSize), TimeText(header.created).c_str(),
              TimeText(header.written).c_str());
  std::printf("Media file  %s\n", Masked(FitText(source)).c_str());
  for (const moff::GroupInfo& group : file.ListGroups()) {
    std::printf("\nGroup %u, values %u %u %u %u\n", group.id, group.values[0], group.values[1],
                group.values[2], group.values[3]);
    if (!group.entries.empty()) std::printf("  %5s  %-10s %10s %12s\n", "Entry", "Kind", "Size", "Position");
    unsigned number = 0;
    for (const moff::EntryInfo& entry : group.entries) {
      const std::string problem =
          entry.result == XpOk ? "" : "  cannot be read (" + CodeText(entry.result) + ")";
      std::printf("  %5u  %-10s %10u %12lld%s\n", ++number, KindText(entry.head.kind).c_str(),
                  entry.head.size, static_cast<long long>(entry.position), problem.c_str());
    }
  }
}

Json EntryJson(const moff::EntryInfo& entry) {
  const Json problem = entry.result == XpOk ? Json() : Json(CodeText(entry.result));
  return {{"kind", KindText(entry.head.kind)},
          {"size", entry.head.size},
          {"position", entry.position},
          {"problem", problem}};
}

Json ListJson(const SfMoffFile& file, const moff::SourceCheck& source) {
  const moff::FileHeader& header = file.GetHeader();
  const bool isMissing = source.fit == moff::SourceFit::Missing;
  Json document{{"container", Utf8(file.GetMoffPath())}, {"format", NumberText(header.version)}};
  document["madeFor"] = {{"name", Utf8(moff::SourceName(header))},
                         {"size", header.sourceSize},
                         {"created", header.created},
                         {"written", header.written}};
  document["mediaFile"] = {{"path", isMissing ? Json() : Json(Utf8(source.path))},
                           {"size", isMissing ? Json() : Json(source.size)},
                           {"fit", FitName(source.fit)}};
  document["groups"] = Json::array();
  for (const moff::GroupInfo& group : file.ListGroups()) {
    Json entries = Json::array();
    for (const moff::EntryInfo& entry : group.entries) entries.push_back(EntryJson(entry));
    document["groups"].push_back(
        {{"id", group.id}, {"values", group.values}, {"entries", std::move(entries)}});
  }
  return document;
}

int List(const MoffOptions& options) {
  SfMoffFile file;
  if (!Open(MoffPathOf(options), file)) return kFailed;
  const moff::SourceCheck source = moff::CheckSource(file.GetMoffPath(), file.GetHeader());
  if (options.json) {
    PrintJson(ListJson(file, source), 2);
  } else {
    PrintText(file, source);
  }
  return kDone;
}

/// The place of the first group with this id.
std::optional<std::size_t> PlaceOf(const std::vector<moff::GroupInfo>& groups, std::uint32_t id) {
  for (std::size_t i = 0; i < groups.size(); ++i) {
    if (groups[i].id == id) return i;
  }
  return std::nullopt;
}

int Extract(const MoffOptions& options) {
  SfMoffFile file;
  if (!Open(MoffPathOf(options), file)) return kFailed;
  const std::string name = Utf8(file.GetMoffPath());
  const std::vector<moff::GroupInfo> groups = file.ListGroups();
  const auto group = PlaceOf(groups, options.group);
  const std::string groupName = "group " + std::to_string(options.group);
  if (!group) return Fail(name + ": there is no " + groupName);
  const std::size_t count = groups[*group].entries.size();
  if (options.entry > count) {
    return Fail(name + ": " + groupName + " has " + std::to_string(count) + " entries: there is no entry " +
                std::to_string(options.entry));
  }
  const XpString output = platform::AbsolutePath(platform::PathFromNative(options.output));
  for (const XpString& input : {file.GetMoffPath(), file.GetSourcePath()}) {
    if (!platform::IsSameFile(output, input)) continue;
    return Fail(options.output + " is " + Utf8(input) + " and would be overwritten");
  }
  XpSharedPtr<XpMemoryFile> data;
  if (const XpResult result = file.ReadEntry(*group, options.entry - 1, data)) {
    return Fail(name + ": entry " + std::to_string(options.entry) + " of " + groupName +
                " cannot be read: " + ReadCause(result));
  }
  const auto* first = static_cast<const std::byte*>(data->GetData());
  const XpResult result = XpReplaceFile(output, {first, static_cast<std::size_t>(data->GetSize())});
  return result == XpOk ? kDone : Fail(options.output + " cannot be written: " + WriteCause(result));
}

int Validate(const MoffOptions& options) {
  const XpString path = MoffPathOf(options);
  const MoffReport report = CheckMoff(path);
  for (const std::string& problem : report.problems) {
    std::printf("error: %s: %s\n", Plain(path).c_str(), Masked(problem).c_str());
  }
  if (!report.problems.empty()) return kFailed;
  std::printf("%s: no problems found in %zu groups with %zu entries\n", Plain(path).c_str(), report.groups,
              report.entries);
  return kDone;
}

int RunMoff(const MoffOptions& options) {
  switch (options.action) {
    case MoffAction::Extract:
      return Extract(options);
    case MoffAction::Validate:
      return Validate(options);
    default:
      return List(options);
  }
}

CLI::App* AddMoffAction(CLI::App& moff, MoffOptions& options, const char* name, const char* help,
                        MoffAction action) {
  CLI::App* command = moff.add_subcommand(name, help);
  command->callback([&options, action] { options.action = action; });
  command->add_option("FILE", options.file, "The media file or its container")->required();
  return command;
}

}  // namespace

CommandRun AddMoff(CLI::App& moff) {
  const auto options = std::make_shared<MoffOptions>();
  moff.require_subcommand(1);
  CLI::App* list =
      AddMoffAction(moff, *options, "list", "Print the groups and entries of a container", MoffAction::List);
  list->add_flag("--json", options->json, "Print one JSON document");
  CLI::App* extract =
      AddMoffAction(moff, *options, "extract", "Write the data of an entry to a file", MoffAction::Extract);
  extract->add_option("--group", options->group, "The group's id")->required();
  extract
      ->add_option("--entry", options->entry,
                   "Number of the entry in the group, from 1; the first if not given")
      ->check(CLI::PositiveNumber);
  extract->add_option("-o,--output", options->output, "The file to write")->required();
  AddMoffAction(moff, *options, "validate", "Print everything that is wrong with a container",
                MoffAction::Validate);
  moff.footer("Exit status: 0 done, 1 it cannot be read or written or is damaged, 2 wrong use.");
  return [options] { return RunMoff(*options); };
}

}  // namespace vrx::host
