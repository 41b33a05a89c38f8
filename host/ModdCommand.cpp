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

namespace vrx::host {
namespace {

struct ModdOptions {
  std::string file;  // a content or its sidecar
  bool json = false;
};

std::string HexText(const XpIniElement& element) {
  const std::byte* data = nullptr;
  std::uint64_t size = 0;
  element.GetData(data, size);
  std::string text;
  char digits[4];
  for (std::uint64_t i = 0; i < size; ++i) {
    std::snprintf(digits, sizeof(digits), "%02x", std::to_integer<unsigned>(data[i]));
    text += digits;
  }
  return text;
}

/// As in ISO 8601, without a zone: dates have none.
Json DateJson(const XpIniElement& element) {
  XpDateTime date;
  element.GetDate(date);
  if (!date.IsValid()) return {};
  char text[64];
  std::snprintf(text, sizeof(text), "%04d-%02d-%02dT%02d:%02d:%02d", date.GetYear(), date.GetMonth(),
                date.GetDay(), date.GetHour(), date.GetMinute(), date.GetSecond());
  return text;
}

template <class Value>
Value Get(const XpIniElement& element, XpResult (XpIniElement::*get)(Value&) const) {
  Value value{};
  (element.*get)(value);
  return value;
}

Json ValueJson(const XpIniElement& element);

Json DictJson(const XpIniElement& dict) {
  Json object = Json::object();
  XpString key;
  for (std::uint32_t i = 0; i < dict.GetCount(); ++i) {
    if (dict.GetKeyAt(i, key) != XpOk) continue;
    if (const XpIniElement* value = dict.Get(key)) object[Utf8(key)] = ValueJson(*value);
  }
  return object;
}

/// The depth is that of the document, which its reader limits.
Json ValueJson(const XpIniElement& element) {
  switch (element.GetType()) {
    case XpIniType::Bool:
      return Get(element, &XpIniElement::GetBool);
    case XpIniType::Int:
      return Get(element, &XpIniElement::GetInt64);
    case XpIniType::Real:
      return Get(element, &XpIniElement::GetReal);
    case XpIniType::String:
      return Utf8(Get(element, &XpIniElement::GetString));
    case XpIniType::MemChunk:
      return HexText(element);
    case XpIniType::Date:
      return DateJson(element);
    case XpIniType::Dict:
      return DictJson(element);
    case XpIniType::Array:
      break;
  }
  Json array = Json::array();
  for (std::uint32_t i = 0; i < element.GetCount(); ++i) array.push_back(ValueJson(*element.GetAt(i)));
  return array;
}

std::string InOneLine(const Json& value) {
  return Masked(value.dump(-1, ' ', false, Json::error_handler_t::replace));
}

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
  const XpString path = platform::AbsolutePath(platform::PathFromNative(options.file));
  const bool isSidecar = XpFormatChecker::GetFormatFromName(path) == formats::kModd;
  SfModdXML modd(path);
  if (const XpResult result = isSidecar ? modd.OpenSidecar(path) : modd.Open(SfModdRead)) {
    const bool isFound = isSidecar || modd.FileExists();
    Say("error: " + (isFound ? Utf8(modd.GetModdPath()) + ": " + CauseOf(result)
                             : options.file + ": it has no sidecar of metadata (" + CodeText(result) + ")"));
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
  modd.require_subcommand(1);
  CLI::App* show = modd.add_subcommand("show", "Print the metadata and where it was found");
  show->add_option("FILE", options->file, "The media file, or its .modd or .rodd file")->required();
  show->add_flag("--json", options->json, "Print one JSON document");
  modd.footer("Exit status: 0 done, 1 there is none or it cannot be read, 2 wrong use.");
  return [options] { return RunModd(*options); };
}

}  // namespace vrx::host
