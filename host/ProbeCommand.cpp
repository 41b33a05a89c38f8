#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "content/formats/FormatNames.h"
#include "content/formats/XpFormatChecker.h"
#include "content/probe/ContentKind.h"
#include "content/probe/DeepCheck.h"
#include "foundation/platform/Paths.h"
#include "host/Commands.h"
#include "host/Console.h"
#include "host/FileCauses.h"
#include "host/PictureFile.h"

namespace vrx::host {
namespace {

struct ProbeOptions {
  std::vector<std::string> files;
  bool json = false;
};

struct ProbeLine {
  std::string file;
  formats::FormatCode code = formats::kUnknown;
  formats::ContentKind kind;
  std::string note;  // what is odd about the name; mostly empty
};

std::string NoteOf(const XpString& path, const formats::ContentKind& kind) {
  const formats::FormatCode byName = XpFormatChecker::GetFormatFromName(path);
  // A folder may be called anything.
  if (kind.Fits(formats::kDirectory) || kind.Fits(byName)) return {};
  return "the ending says " + std::string(formats::FormatName(byName));
}

/// The cause of a failure, or nothing.
std::string Probe(const std::string& file, ProbeLine& line) {
  const XpString path = platform::AbsolutePath(platform::PathFromNative(file));
  if (const XpResult result = formats::FindContentKind(path, line.kind)) return ReadCause(result);
  line.file = file;
  line.code = formats::CheckFormat(path);
  line.note = NoteOf(path, line.kind);
  return {};
}

/// All eight digits, since each byte of a format code has its meaning.
std::string FormatText(formats::FormatCode code) {
  char text[16];
  std::snprintf(text, sizeof(text), "0x%08x", code);
  return text;
}

Json LineJson(const ProbeLine& line) {
  return {{"file", line.file},
          {"code", FormatText(line.code)},
          {"name", formats::FormatName(line.code)},
          {"kind", line.kind.name},
          {"why", line.kind.why}};
}

/// On a terminal, of UTF-8 text without wide characters.
std::size_t ColumnsOf(std::string_view text) {
  return static_cast<std::size_t>(
      std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string Padded(std::string_view text, std::size_t columns) {
  const std::size_t own = ColumnsOf(text);
  return std::string(text) + std::string(own < columns ? columns - own : 0, ' ');
}

void PrintText(const std::vector<ProbeLine>& lines) {
  // A long path must not push the others out of sight.
  constexpr std::size_t kMostFileColumns = 40;
  std::size_t fileColumns = 0, nameColumns = 0, kindColumns = 0;
  for (const ProbeLine& line : lines) {
    fileColumns = std::max(fileColumns, std::min(ColumnsOf(Masked(line.file)), kMostFileColumns));
    nameColumns = std::max(nameColumns, formats::FormatName(line.code).size());
    kindColumns = std::max(kindColumns, line.kind.name.size());
  }
  for (const ProbeLine& line : lines) {
    std::printf("%s  %s  %s  %s  %s%s%s\n", Padded(Masked(line.file), fileColumns).c_str(),
                FormatText(line.code).c_str(), Padded(formats::FormatName(line.code), nameColumns).c_str(),
                Padded(line.kind.name, kindColumns).c_str(), line.kind.why.c_str(),
                line.note.empty() ? "" : "; ", line.note.c_str());
  }
}

int RunProbe(const ProbeOptions& options) {
  std::vector<ProbeLine> lines;
  const int status = ForEachPicture(options.files, [&](const std::string& file) {
    ProbeLine line;
    std::string cause = Probe(file, line);
    if (cause.empty()) lines.push_back(std::move(line));
    return cause;
  });
  if (options.json) {
    Json documents = Json::array();
    for (const ProbeLine& line : lines) documents.push_back(LineJson(line));
    PrintJson(documents, 2);
  } else {
    PrintText(lines);
  }
  return status;
}

}  // namespace

CommandRun AddProbe(CLI::App& command) {
  const auto options = std::make_shared<ProbeOptions>();
  command.add_option("FILE", options->files, "Files of any kind, or folders")->required();
  command.add_flag("--json", options->json, "Print one JSON document");
  command.footer("Exit status: 0 done, 1 a file cannot be read, 2 wrong use.");
  return [options] { return RunProbe(*options); };
}

}  // namespace vrx::host
