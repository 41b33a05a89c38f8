#include <cstdio>
#include <memory>

#include <CLI/CLI.hpp>

#include "foundation/platform/Paths.h"
#include "foundation/text/XpPath.h"
#include "host/ArgumentChecks.h"
#include "host/Commands.h"
#include "host/Console.h"
#include "host/EncodingArguments.h"
#include "host/make/EditTimeline.h"
#include "host/make/MakeArguments.h"
#include "host/make/NewProject.h"
#include "host/make/PlanProject.h"

namespace vrx::host {
namespace {

struct NewOptions {
  std::string project;
  std::string edit;
  std::string output;
  bool replaces = false;
  MakeArguments make;
  EncodingArguments encoding;
};

int RunNew(const NewOptions& options) {
  const XpString project = platform::AbsolutePath(platform::PathFromNative(options.project));
  std::string cause = CauseAgainstProject(project, options.replaces);
  if (!cause.empty()) return Fail(cause);
  const XpString output = options.output.empty()
                              ? XpPathJoin(XpPathDirectory(project), XpPathStem(project) + u".mp4")
                              : platform::AbsolutePath(platform::PathFromNative(options.output));
  MovieRequest request = options.make.GetRequest();
  std::vector<std::string> leftOut, choices;
  if (!options.edit.empty()) {
    const XpString edit = platform::AbsolutePath(platform::PathFromNative(options.edit));
    if (!ReadEdit(edit, request, leftOut, cause)) return Fail(cause);
  }
  AddEncoding(options.encoding, request);
  cause = CauseAgainstOutput(output, request);
  if (!cause.empty()) return Fail(cause);
  if (!WriteProject(request, project, output, choices, cause)) return Fail(cause);
  PrintChoices(choices);
  for (const std::string& line : leftOut) std::printf("left out: %s\n", Masked(line).c_str());
  std::printf("Project: %s; vrx render makes %s of it\n", Plain(project).c_str(), Plain(output).c_str());
  return kDone;
}

void CheckNew(const NewOptions& options) {
  if (options.make.clips.empty() == options.edit.empty())
    throw CLI::ValidationError("CLIP", options.edit.empty() ? "none is there, and no --from EDIT.otio"
                                                            : "clips and --from exclude each other");
}

}  // namespace

CommandRun AddNew(CLI::App& command) {
  const auto options = std::make_shared<NewOptions>();
  command.add_option("PROJECT", options->project, "The project document to write: .vrx")
      ->required()
      ->check(CheckProjectEnding);
  AddMakeOptions(command, options->make);
  command
      .add_option("--from", options->edit,
                  "The timeline of an editor instead of clips: an OpenTimelineIO document (.otio)")
      ->check(CheckName)
      ->option_text("FILE");
  command
      .add_option("-o,--output", options->output,
                  "The movie that the project makes; as the project without it")
      ->check(CheckMovieEnding)
      ->option_text("FILE");
  AddFormatOptions(command, options->encoding);
  command.add_flag("--force", options->replaces, "Replace a project that is there already");
  command.footer("Exit status: 0 done, 1 the project cannot be made, 2 wrong use.");
  command.callback([options, &command] {
    CheckNew(*options);
    CheckMake(command);
  });
  return [options] { return RunNew(*options); };
}

}  // namespace vrx::host
