#include <cstdio>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "content/formats/FormatNames.h"
#include "content/model/ContentGrouping.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/Paths.h"
#include "host/Commands.h"
#include "host/Console.h"
#include "host/FileCauses.h"

namespace vrx::host {
namespace {

struct ContentsOptions {
  std::string folder;
  bool json = false;
};

std::string NameOf(const XpPath& path) {
  return Utf8(XpPathStem(path.GetText()) + XpPathExtension(path.GetText()));
}

std::string FileName(const SfContent& content, std::int32_t index) {
  XpPath path;
  content.GetFileAt(path, index);
  return NameOf(path);
}

std::string FormatText(const SfContent& content, std::int32_t index) {
  return std::string(formats::FormatName(content.GetFormatAt(index)));
}

Json FileJson(const SfContent& content, std::int32_t index) {
  return {{"file", FileName(content, index)},
          {"code", CodeText(content.GetFormatAt(index))},
          {"name", FormatText(content, index)}};
}

Json FolderJson(const std::string& folder, const model::FolderContents& found) {
  Json contents = Json::array(), rest = Json::array();
  for (const SfContent& content : found.contents) {
    Json document = FileJson(content, 0), companions = Json::array();
    for (std::int32_t i = 1; i < content.GetFileCount(); ++i) companions.push_back(FileJson(content, i));
    document["companions"] = companions;
    contents.push_back(document);
  }
  for (const XpPath& path : found.rest) rest.push_back(NameOf(path));
  return {{"folder", folder}, {"contents", contents}, {"rest", rest}};
}

void PrintText(const model::FolderContents& found) {
  for (const SfContent& content : found.contents) {
    std::printf("%-32s  %s\n", Masked(FileName(content, 0)).c_str(), FormatText(content, 0).c_str());
    for (std::int32_t i = 1; i < content.GetFileCount(); ++i) {
      std::printf("  + %-28s  %s\n", Masked(FileName(content, i)).c_str(), FormatText(content, i).c_str());
    }
  }
  if (!found.rest.empty()) std::printf("%sNo content:\n", found.contents.empty() ? "" : "\n");
  for (const XpPath& path : found.rest) std::printf("  %s\n", Masked(NameOf(path)).c_str());
  if (found.contents.empty() && found.rest.empty()) std::printf("The folder holds no files.\n");
}

int RunContents(const ContentsOptions& options) {
  const XpString folder = platform::AbsolutePath(platform::PathFromNative(options.folder));
  if (XpPathIsFile(folder)) return Fail(options.folder + ": it is no folder");
  model::FolderContents found;
  if (const XpResult result = model::ReadFolderContents(folder, found)) {
    return Fail(options.folder + ": " + ReadCause(result));
  }
  if (options.json) {
    PrintJson(FolderJson(options.folder, found), 2);
  } else {
    PrintText(found);
  }
  return kDone;
}

}  // namespace

CommandRun AddContents(CLI::App& command) {
  const auto options = std::make_shared<ContentsOptions>();
  command.add_option("FOLDER", options->folder, "The folder; those within are not looked at")->required();
  command.add_flag("--json", options->json, "Print one JSON document");
  command.footer("Exit status: 0 done, 1 the folder cannot be read, 2 wrong use.");
  return [options] { return RunContents(*options); };
}

}  // namespace vrx::host
