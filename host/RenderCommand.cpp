#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

#include "foundation/platform/Paths.h"
#include "foundation/text/XpPath.h"
#include "host/ArgumentChecks.h"
#include "host/Commands.h"
#include "host/Console.h"
#include "host/EncodingArguments.h"
#include "host/RenderRun.h"
#include "host/pieces/JobRun.h"
#include "host/pieces/PiecePlan.h"

namespace vrx::host {
namespace {

constexpr std::uint32_t kMostJobs = 64;

struct RenderArguments {
  std::vector<std::string> projects;
  std::string output;
  std::string range;
  std::string piece;
  bool overlayOnly = false;
  std::uint32_t jobs = 0;  // 0: in one go
  EncodingArguments encoding;
  RenderOptions run;
};

/// Which of several projects comes now.
void PrintHeader(const RenderArguments& arguments, const ProjectSource& project) {
  if (arguments.projects.size() == 1) return;
  if (arguments.run.progress == ProgressStyle::JsonLines) {
    PrintJson({{"event", "project"}, {"project", Utf8(project.GetName())}}, -1);
  } else if (!arguments.run.quiet) {
    std::printf("Project %s\n", Plain(project.GetName()).c_str());
  }
  std::fflush(stdout);
}

/// The worst exit status of the projects, which follow each other until one is cancelled.
int RunRender(RenderArguments& arguments) {
  ProjectChanges changes;
  if (!arguments.output.empty())
    changes.output = platform::AbsolutePath(platform::PathFromNative(arguments.output));
  arguments.encoding.AddTo(changes);
  RenderOptions& options = arguments.run;
  options.overrides = arguments.encoding.GetOverrides();
  if (arguments.overlayOnly) options.overrides.overlays = VRXOverlayAlone;
  if (!arguments.piece.empty()) options.piece = ParsePieceName(arguments.piece);
  options.pieceOptions = PieceOptions(arguments.encoding, options.allowMissing);
  if (!arguments.range.empty()) options.range = *ParseTimeRange(arguments.range);
  int status = kDone;
  for (const std::string& argument : arguments.projects) {
    const ProjectSource project(argument, changes);
    PrintHeader(arguments, project);
    const int rendered = arguments.jobs == 0 ? RenderProject(options, project)
                                             : RenderInPieces(options, arguments.jobs, project);
    status = std::max(status, rendered);
    if (status == kCancelled) break;
  }
  return status;
}

/// One % in the file's name, as %d or %05d.
bool HasOneNumber(std::string_view path) {
  const std::string_view name = path.substr(path.rfind('/') + 1);
  const std::size_t percent = name.find('%');
  if (percent == name.npos || name.find('%', percent + 1) != name.npos) return false;
  const std::string_view rest = name.substr(percent + 1);
  return rest.starts_with('d') ||
         (rest.size() > 2 && rest[0] == '0' && rest[1] >= '1' && rest[1] <= '9' && rest[2] == 'd');
}

/// Throws CLI::ValidationError for what no plan prints.
void CheckPiece(const RenderArguments& arguments) {
  const auto refuse = [](const char* cause) { throw CLI::ValidationError("--piece", cause); };
  if (arguments.projects.size() > 1) refuse("is part of one movie, but there are several projects");
  if (arguments.projects.front() == "-") refuse("needs a project in a file");
  if (arguments.output.empty()) refuse("needs -o FILE, so that the piece does not take the movie's name");
  const bool isSound = ParsePieceName(arguments.piece)->piece == 0;
  if (isSound && !arguments.range.empty()) refuse("0 is the sound, which has no range");
  if (!isSound && arguments.range.empty()) refuse("of the picture needs its --range");
}

/// Throws CLI::ValidationError for options that do not go together.
void CheckRender(const RenderArguments& arguments) {
  CheckEncoding(arguments.encoding);
  if (!arguments.output.empty() && arguments.projects.size() > 1)
    throw CLI::ValidationError("--output", "names one movie, but there are several projects");
  if (!arguments.piece.empty()) CheckPiece(arguments);
  if (!arguments.overlayOnly) return;
  const XpString ending = XpPathExtension(platform::PathFromNative(arguments.output));
  const bool isPicture = XpCompareNoCase(ending, u".png") == 0;
  if (!isPicture && XpCompareNoCase(ending, u".mov") != 0)
    throw CLI::ValidationError("--overlay-only", "needs -o FILE.mov (ProRes 4444) or -o NAME-%05d.png");
  if (isPicture && !HasOneNumber(arguments.output))
    throw CLI::ValidationError("--overlay-only",
                               "needs one place of the frame's number in the name: -o NAME-%05d.png");
}

}  // namespace

CommandRun AddRender(CLI::App& command) {
  const auto options = std::make_shared<RenderArguments>();
  command.add_option("PROJECT", options->projects, "The project document, or several; - for standard input")
      ->required()
      ->check(CheckName);
  command.add_option("-o,--output", options->output, "The movie to write, in place of the document's")
      ->check(CheckName)
      ->option_text("FILE");
  command
      .add_option(
          "--range", options->range,
          "Only a part, as 0:10-0:20.5 or 300f-600f: from the first time or frame to before the second")
      ->check(CheckTimeRange)
      ->option_text("FROM-TO");
  command
      .add_option("--piece", options->piece,
                  "One piece of a movie, as vrx plan prints it: K of N of a plan, 0 for the sound")
      ->check(CheckPieceName)
      ->option_text("K/N:PLAN");
  command
      .add_option(
          "--jobs", options->jobs,
          "Render up to so many pieces at the same time and join them; long movies on many cores gain")
      ->check(NumberWithin(1, kMostJobs))
      ->option_text("N")
      ->excludes(command.get_option("--piece"));
  AddEncodingOptions(command, options->encoding);
  AddSoundCodecOption(command, options->encoding);
  CLI::Option* alone =
      command.add_flag("--overlay-only", options->overlayOnly,
                       "The overlays alone with transparency, for another editor: -o FILE.mov (ProRes 4444) "
                       "or -o NAME-%05d.png");
  for (const char* option :
       {"--bitrate", "--crf", "--preset", "--codec", "--hardware", "--sound-codec", "--smart", "--piece"})
    alone->excludes(command.get_option(option));
  AddProgressOptions(command, options->run);
  command.footer(
      "Exit status: 0 done, 1 a render failed, a still picture is missing, or there are warnings with "
      "--strict, "
      "2 wrong use, 130 cancelled.");
  command.callback([options] { CheckRender(*options); });
  return [options] { return RunRender(*options); };
}

}  // namespace vrx::host
