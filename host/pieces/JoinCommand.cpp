#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "foundation/platform/FileSystem.h"
#include "foundation/platform/Paths.h"
#include "host/ArgumentChecks.h"
#include "host/Commands.h"
#include "host/Console.h"
#include "host/EngineModule.h"
#include "host/RenderProgress.h"
#include "host/RenderRun.h"
#include "host/make/MakeArguments.h"
#include "host/pieces/JoinRun.h"

namespace vrx::host {
namespace {

struct JoinArguments {
  std::vector<std::string> pieces;
  std::string output;
  ProgressStyle progress = ProgressStyle::Auto;
  bool quiet = false;
};

int RunJoin(const JoinArguments& arguments) {
  platform::InterruptWaiter waiter;
  EngineModule engine;
  std::string cause;
  if (!engine.Load(cause)) return Fail(cause);
  JoinRequest request{.output = platform::AbsolutePath(platform::PathFromNative(arguments.output))};
  for (const std::string& piece : arguments.pieces) {
    request.pieces.push_back(platform::AbsolutePath(platform::PathFromNative(piece)));
    if (platform::IsSameFile(request.pieces.back(), request.output))
      return Fail(arguments.output + " is one of the pieces and would be overwritten");
  }
  const auto progress = RenderProgress::Make(arguments.progress, arguments.quiet);
  bool hasOutput = true;  // stdout can still be written to
  request.onPercent = [&](std::uint32_t percent) {
    progress->OnPercent(percent);
    return hasOutput = FlushOutput();
  };
  request.endNow = [&] {
    progress->OnCancelled();
    FlushOutput();
    platform::ExitNow(kCancelled);
  };
  progress->OnStart({.outputPath = Utf8(request.output), .pieces = arguments.pieces.size()});
  const JoinOutcome outcome = JoinPieces(engine, waiter, request);
  if (outcome.end == JoinOutcome::End::Failed) {
    progress->OnError(outcome.code, {.severity = check::Severity::Error,
                                     .message = XpNarrowString(outcome.cause).ToWide()});
    return kFailed;
  }
  if (outcome.end == JoinOutcome::End::Cancelled) {
    if (!hasOutput) return kFailed;
    progress->OnCancelled();
    return kCancelled;
  }
  RenderResult result;
  VRXRenderSummary written;
  if (engine.GetSummary(written)) {
    result.frames = static_cast<std::int64_t>(written.frames);
    result.bytes = written.bytes;
    result.copiedFrames = result.frames;
  }
  progress->OnEnd(result);
  return kDone;
}

}  // namespace

CommandRun AddJoin(CLI::App& command) {
  const auto arguments = std::make_shared<JoinArguments>();
  command.add_option("PIECE", arguments->pieces, "The rendered pieces of one plan, in any order")
      ->required()
      ->check(CheckName);
  command.add_option("-o,--output", arguments->output, "The movie to write: .mp4, .mov or .ts")
      ->required()
      ->check(CheckMovieEnding)
      ->option_text("FILE");
  AddProgressStyle(command, arguments->progress);
  command.add_flag("--quiet", arguments->quiet, "Print errors only");
  command.footer(
      "Copies the pieces together as they are. All pieces of the plan are needed, and none of another.\n"
      "Exit status: 0 done, 1 the pieces cannot be joined, 2 wrong use, 130 cancelled.");
  return [arguments] { return RunJoin(*arguments); };
}

}  // namespace vrx::host
