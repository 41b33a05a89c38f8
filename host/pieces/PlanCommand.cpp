#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "foundation/platform/Paths.h"
#include "host/ArgumentChecks.h"
#include "host/Commands.h"
#include "host/Console.h"
#include "host/EncodingArguments.h"
#include "host/EngineModule.h"
#include "host/Inspection.h"
#include "host/ProblemText.h"
#include "host/make/MakeArguments.h"
#include "host/pieces/PieceName.h"
#include "host/pieces/PiecePlan.h"
#include "host/pieces/PlanFormats.h"

namespace vrx::host {
namespace {

struct PlanArguments {
  std::string project;
  std::uint32_t pieces = 0;
  PlanFormat format = PlanFormat::Shell;
  std::string output;
  bool allowMissing = false;
  EncodingArguments encoding;
};

/// Warnings come on stderr; false, with an error there, for a project that cannot be rendered.
bool TellProblems(const check::ProjectReport& report) {
  const check::Problem* error = report.FindError(false);
  for (const check::Problem& problem : report.problems) {
    const bool isTold = problem.severity == check::Severity::Warning && error == nullptr;
    if (isTold || &problem == error) Say(ProblemLine(problem));
  }
  return error == nullptr;
}

int RunPlan(const PlanArguments& arguments) {
  ProjectChanges changes;
  if (!arguments.output.empty())
    changes.output = platform::AbsolutePath(platform::PathFromNative(arguments.output));
  arguments.encoding.AddTo(changes);
  const ProjectSource project(arguments.project, changes);
  EngineModule engine;
  std::string cause;
  if (!engine.Load(cause)) return Fail(cause);
  EngineSpans spans;
  const VRXRenderOverrides overrides = arguments.encoding.GetOverrides();
  if (AsksForAnything(overrides) && !engine.SetOverrides(overrides, cause)) return Fail(cause);
  const check::ProjectReport report = InspectSpans(project, engine, spans);
  engine.DropOverrides();
  if (!TellProblems(report)) return kFailed;
  const PiecePlan plan = MakePiecePlan(
      project, report, spans, PieceOptions(arguments.encoding, arguments.allowMissing), arguments.pieces);
  const std::string text = PlanDocument(plan, arguments.format, cause);
  if (text.empty()) return Fail(cause);
  if (plan.ranges.size() < arguments.pieces) {
    const std::size_t count = plan.ranges.size();
    Say(std::to_string(count) + (count == 1 ? " piece" : " pieces") + " instead of " +
        std::to_string(arguments.pieces) + ": the movie has no more places to cut");
  }
  std::fputs(text.c_str(), stdout);
  return kDone;
}

}  // namespace

CommandRun AddPlan(CLI::App& command) {
  const auto arguments = std::make_shared<PlanArguments>();
  command.add_option("PROJECT", arguments->project, "The project document")
      ->required()
      ->check([](const std::string& text) {
        return text == "-" ? "the pieces read the project from its file, not from standard input"
                           : CheckName(text);
      });
  command.add_option("--pieces", arguments->pieces, "How many pieces of the picture, 1 to 1000")
      ->required()
      ->check(NumberWithin(1, PieceName::kMostPieces))
      ->option_text("N");
  const std::map<std::string, PlanFormat> formats{{"shell", PlanFormat::Shell},
                                                  {"json", PlanFormat::JsonText},
                                                  {"make", PlanFormat::Make},
                                                  {"sbatch", PlanFormat::Sbatch}};
  command
      .add_option("--format", arguments->format,
                  "shell (a command a line), make (a makefile), sbatch (a script for Slurm) or json")
      ->transform(NamedValues(formats))
      ->type_name("FORMAT")
      ->option_text("FORMAT");
  command.add_option("-o,--output", arguments->output, "The movie to write, in place of the document's")
      ->check(CheckName)
      ->check(CheckMovieEnding)
      ->option_text("FILE");
  AddEncodingOptions(command, arguments->encoding);
  AddSoundCodecOption(command, arguments->encoding);
  command.add_flag("--allow-missing", arguments->allowMissing,
                   "For the pieces: succeed although still pictures are missing");
  command.footer(
      "Prints commands that render the pieces, in any order and on any machine, and one that joins them.\n"
      "Example: vrx plan tour.vrx --pieces 8 --format make | make -j4 -f -\n"
      "Exit status: 0 done, 1 the project cannot be rendered, 2 wrong use.");
  command.callback([arguments] { CheckEncoding(arguments->encoding); });
  return [arguments] { return RunPlan(*arguments); };
}

}  // namespace vrx::host
