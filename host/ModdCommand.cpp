#include "host/Commands.h"

#include <cstdio>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "content/formats/XpFormatChecker.h"
#include "content/modd/SfModdXML.h"
#include "foundation/platform/Paths.h"
#include "host/Console.h"
#include "host/FileCauses.h"
#include "host/ModdEdit.h"
#include "host/ModdValues.h"

namespace vrx::host {
namespace {

enum class ModdTask { Show, Get, Set };

struct ModdOptions {
  ModdTask task = ModdTask::Show;
  ModdEdit edit;  // of `show` only the file, a content or its sidecar
  bool json = false;
};

void PrintValue(const std::string& name, const Json& value, int depth) {
  constexpr int kIndent = 2;
  const std::string start(static_cast<std::size_t>(depth) * kIndent, ' ');
  if (!value.is_structured() || value.empty()) {
    std::printf("%s%s = %s\n", start.c_str(), Masked(name).c_str(), InOneLine(value).c_str());
    return;
  }
  std::printf("%s%s\n", start.c_str(), Masked(name).c_str());
  if (value.is_object()) {
    for (const auto& [key, child] : value.items()) PrintValue(key, child, depth + 1);
  } else {
    for (std::size_t i = 0; i < value.size(); ++i) PrintValue(std::to_string(i), value[i], depth + 1);
  }
}

void PrintText(const SfModdXML& modd, XpResult zoneResult, std::int32_t zoneMinutes, const Json& metadata) {
  std::printf("Sidecar    %s, of %s\n", Plain(modd.GetModdPath()).c_str(),
              modd.IsSharedByStem() ? "all files of its stem" : "this file alone");
  if (zoneResult == XpOk) {
    std::printf("Time zone  %+d minutes from UTC\n", zoneMinutes);
  } else {
    std::printf("Time zone  %s (%s)\n", zoneResult == XpErrElementNotFound ? "not set" : "unusable",
                CodeText(zoneResult).c_str());
  }
  PrintValue("Metadata", metadata, 0);
}

std::string CauseOf(XpResult result) {
  if (result == XpErrFailed) return "it is no sidecar of metadata (" + CodeText(result) + ")";
  return ReadCause(result);
}

int RunModd(const ModdOptions& options) {
  const XpString path = platform::AbsolutePath(platform::PathFromNative(options.edit.file));
  const bool isSidecar = XpFormatChecker::GetFormatFromName(path) == formats::kModd;
  SfModdXML modd(path);
  if (const XpResult result = isSidecar ? modd.OpenSidecar(path) : modd.Open(SfModdRead)) {
    const bool isFound = isSidecar || modd.FileExists();
    Say("error: " + (isFound
                         ? Utf8(modd.GetModdPath()) + ": " + CauseOf(result)
                         : options.edit.file + ": it has no sidecar of metadata (" + CodeText(result) + ")"));
    return kFailed;
  }
  std::int32_t zoneMinutes = 0;
  const XpResult zoneResult = modd.GetFileTimeZoneOffset(zoneMinutes);
  const Json metadata = ValueJson(*modd.GetMetaDict());
  if (options.json) {
    PrintJson({{"sidecar", Utf8(modd.GetModdPath())},
               {"shared", modd.IsSharedByStem()},
               {"timeZoneMinutes", zoneResult == XpOk ? Json(zoneMinutes) : Json()},
               {"metadata", metadata}},
              2);
  } else {
    PrintText(modd, zoneResult, zoneMinutes, metadata);
  }
  return kDone;
}

}  // namespace

CommandRun AddModd(CLI::App& modd) {
  const auto options = std::make_shared<ModdOptions>();
  ModdEdit& edit = options->edit;
  modd.require_subcommand(1);
  CLI::App* show = modd.add_subcommand("show", "Print the metadata and where it was found");
  show->add_option("FILE", edit.file, "The media file, or its .modd or .rodd file")->required();
  show->add_flag("--json", options->json, "Print one JSON document");
  CLI::App* get = modd.add_subcommand("get", "Print one value of the metadata");
  get->callback([options] { options->task = ModdTask::Get; });
  get->add_option("FILE", edit.file, "The media file, or its .modd or .rodd file")->required();
  get->add_option("KEY", edit.key, "Such as Rating; a/b goes into dictionaries and lists")->required();
  get->add_flag("--json", options->json, "Print the value as JSON");
  CLI::App* set = modd.add_subcommand("set", "Change one value of the metadata, or add it");
  set->callback([options] { options->task = ModdTask::Set; });
  set->add_option("FILE", edit.file, "The media file; its sidecar is made when it has none")->required();
  set->add_option("KEY", edit.key, "Such as Rating; a/b goes into dictionaries and lists")->required();
  set->add_option("VALUE", edit.value, "The new value")->required();
  set->add_option("--type", edit.type,
                  "What the value is; if not given as the one that is there, or else an integer where it is "
                  "one, and text")
      ->check(CLI::IsMember({"text", "integer", "real", "bool", "date"}))
      ->option_text("TYPE");
  modd.footer("Exit status: 0 done, 1 there is none or it cannot be read or written, 2 wrong use.");
  return [options] {
    switch (options->task) {
      case ModdTask::Get:
        return GetModdValue(options->edit, options->json);
      case ModdTask::Set:
        return SetModdValue(options->edit);
      default:
        return RunModd(*options);
    }
  };
}

}  // namespace vrx::host
