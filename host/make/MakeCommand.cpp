#include <cstdio>
#include <memory>

#include <CLI/CLI.hpp>

#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/Paths.h"
#include "foundation/platform/Signals.h"
#include "foundation/text/XpPath.h"
#include "host/Commands.h"
#include "host/Console.h"
#include "host/EncodingArguments.h"
#include "host/InterruptibleWork.h"
#include "host/RenderRun.h"
#include "host/TemporaryFolder.h"
#include "host/make/MakeArguments.h"
#include "host/make/NewProject.h"
#include "host/make/PlanProject.h"

namespace vrx::host {
namespace {

struct MakeOptions {
  MakeArguments make;
  EncodingArguments encoding;
  std::string output;
  std::string project;  // to keep; empty for none
  bool replaces = false;
  RenderOptions run;
};

/// A clip on a slow disk can take long, and an interrupt ends that wait too. The movie is not begun yet, so
/// the program ends at once.
bool WriteUnlessInterrupted(const MovieRequest& request, const XpString& project, const XpString& output,
                            const RenderOptions& run, std::vector<std::string>& choices, std::string& cause) {
  platform::InterruptWaiter waiter;
  bool isWritten = false;
  const auto write = [&] { isWritten = WriteProject(request, project, output, choices, cause); };
  DoUnlessInterrupted(waiter, write, [&] {
    RenderProgress::Make(run.progress, run.quiet)->OnCancelled();
    FlushOutput();
    run.beforeExit();
    platform::ExitNow(kCancelled);
  });
  return isWritten;
}

int RunMake(const MakeOptions& options) {
  const XpString output = platform::AbsolutePath(platform::PathFromNative(options.output));
  MovieRequest request = options.make.GetRequest();
  AddEncoding(options.encoding, request);
  std::string cause = CauseAgainstOutput(output, request);
  if (!cause.empty()) return Fail(cause);
  std::unique_ptr<TemporaryFolder> folder;
  XpString project;
  if (options.project.empty()) {
    folder = std::make_unique<TemporaryFolder>();
    if (folder->GetError()) return Fail("no temporary folder can be made: " + folder->GetError().message());
    project = XpPathJoin(folder->GetPath(), u"movie.vrx");
  } else {
    project = platform::AbsolutePath(platform::PathFromNative(options.project));
    if (cause = CauseAgainstProject(project, options.replaces); !cause.empty()) return Fail(cause);
  }
  RenderOptions run = options.run;
  run.beforeExit = [&folder] {
    if (folder) folder->Remove();
  };
  std::vector<std::string> choices;
  if (!WriteUnlessInterrupted(request, project, output, run, choices, cause)) return Fail(cause);
  const bool isSilent = options.run.quiet || options.run.progress == ProgressStyle::JsonLines;
  if (!isSilent) PrintChoices(choices);
  if (!isSilent && !options.project.empty()) std::printf("Project: %s\n", Masked(options.project).c_str());
  FlushOutput();
  run.overrides = options.encoding.GetOverrides();
  ProjectSource source(Utf8(project));
  if (options.project.empty()) source.HideDocuments(output);
  return RenderProject(run, source);
}

}  // namespace

CommandRun AddMake(CLI::App& command) {
  const auto options = std::make_shared<MakeOptions>();
  AddMakeOptions(command, options->make);
  command.get_option("CLIP")->required();
  command.add_option("-o,--output", options->output, "The movie to write: .mp4, .mov or .ts")
      ->required()
      ->check(CheckMovieEnding)
      ->option_text("FILE");
  AddEncodingOptions(command, options->encoding);
  CLI::Option* save =
      command
          .add_option("--save-project", options->project, "Keep the documents of the movie, to go on by hand")
          ->check(CheckProjectEnding)
          ->option_text("FILE");
  command.add_flag("--force", options->replaces, "Replace a project that is there already")->needs(save);
  AddProgressOptions(command, options->run);
  command.footer(
      "Examples:\n"
      "  vrx make holiday.mp4@0:10-0:40 beach.jpg -o holiday-short.mp4\n"
      "  vrx make ride.mp4 --gps ride.gpx --template sports -o ride-speed.mp4\n"
      "  vrx make photos/*.jpg --music tune.m4a --photo-seconds 4 -o show.mp4\n"
      "Exit status: 0 done, 1 the movie cannot be made, 2 wrong use, 130 cancelled.");
  command.callback([options, &command] {
    CheckEncoding(options->encoding);
    CheckMake(command);
  });
  return [options] { return RunMake(*options); };
}

}  // namespace vrx::host
