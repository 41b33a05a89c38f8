#include "host/pieces/PiecePlan.h"

#include <algorithm>

#include "foundation/platform/Module.h"
#include "foundation/platform/Paths.h"
#include "host/pieces/PieceCuts.h"
#include "host/pieces/PieceName.h"
#include "host/pieces/PlanId.h"
#include "src/check/OutputNames.h"

namespace vrx::host {
namespace {

constexpr std::int32_t kPcmSound = 3;  // as documents count codecs

/// Whether the sound's codec is that of transport streams because the movie is one, which its pieces are not.
bool HasSoundOfTransportStreams(const check::ProjectReport& report) {
  return report.audioSettings && report.audioSettings->codecType == 0 &&
         check::IsTransportStreamName(report.outputPath);
}

/// The last piece goes on to the end, which is an estimate for sources that are used whole.
std::string RangeText(const PiecePlan& plan, const FrameRange& range) {
  const bool isLast = range.first == plan.ranges.back().first;
  return std::to_string(range.first) + "f-" + (isLast ? "" : std::to_string(range.end) + "f");
}

std::string Program() { return platform::NativePath(platform::ExecutablePath()); }

PlannedPiece PieceOf(const PiecePlan& plan, std::uint32_t piece, const std::string& stem) {
  const bool isSound = piece == 0;
  PlannedPiece planned{.piece = piece};
  planned.output = stem + ".piece-" + std::to_string(piece) + (isSound && plan.isSoundPcm ? ".mov" : ".mp4");
  planned.command = {Program(), "render", plan.project};
  if (!isSound) {
    planned.range = plan.ranges[piece - 1];
    planned.command.insert(planned.command.end(), {"--range", RangeText(plan, planned.range)});
  }
  const auto count = static_cast<std::uint32_t>(plan.ranges.size());
  planned.command.insert(planned.command.end(), {"--piece", PieceNameText({piece, count, plan.id})});
  planned.command.insert(planned.command.end(), plan.options.begin(), plan.options.end());
  planned.command.insert(planned.command.end(), {"-o", planned.output});
  return planned;
}

}  // namespace

std::vector<EngineSpan> PictureSpans(const check::ProjectReport& report, const EngineSpans& spans) {
  std::vector<EngineSpan> pictures;
  std::ranges::copy_if(spans.GetSpans(), std::back_inserter(pictures),
                       [](const EngineSpan& span) { return span.track == VRXVideoTrack; });
  if (pictures.empty()) pictures.push_back({.frames = report.totalFrames});
  return pictures;
}

std::vector<std::string> PieceOptions(const EncodingArguments& encoding, bool allowMissing) {
  std::vector<std::string> options = encoding.GetWords();
  if (allowMissing) options.emplace_back("--allow-missing");
  return options;
}

bool IsPieceOf(const std::string& plan, const check::ProjectReport& report,
               const std::vector<std::string>& options, std::uint32_t count) {
  return IsPlanOf(plan, {report.inputs, options, count, VRX_VERSION});
}

PiecePlan MakePiecePlan(const ProjectSource& project, const check::ProjectReport& report,
                        const EngineSpans& spans, const std::vector<std::string>& options,
                        std::uint32_t count) {
  PiecePlan plan;
  plan.project = platform::NativePath(project.GetName());
  plan.movie = platform::NativePath(report.outputPath);
  plan.options = options;
  if (HasSoundOfTransportStreams(report)) {
    const std::vector<std::string> words = Ac3Words();
    plan.options.insert(plan.options.begin(), words.begin(), words.end());
  }
  plan.ranges = PieceCuts(PictureSpans(report, spans)).Cut(count);
  if (!spans.IsEmpty()) plan.ranges.back().end = spans.GetCopiedFrames() + spans.GetEncodedFrames();
  plan.hasSound = report.audioSettings != nullptr;
  plan.isSoundPcm = report.audioSettings && report.audioSettings->codecType == kPcmSound;
  const PlanState state{report.inputs, plan.options, static_cast<std::uint32_t>(plan.ranges.size()),
                        VRX_VERSION};
  plan.id = PlanId(state, plan.ranges);
  return plan;
}

std::string StemOf(const std::string& movie) {
  const std::size_t name = movie.rfind('/') + 1;
  const std::size_t dot = movie.rfind('.');
  return dot == movie.npos || dot <= name ? movie : movie.substr(0, dot);
}

std::vector<PlannedPiece> ListPieces(const PiecePlan& plan, const std::string& stem) {
  std::vector<PlannedPiece> pieces;
  if (plan.hasSound) pieces.push_back(PieceOf(plan, 0, stem));
  for (std::uint32_t piece = 1; piece <= plan.ranges.size(); ++piece)
    pieces.push_back(PieceOf(plan, piece, stem));
  return pieces;
}

std::vector<std::string> JoinCommandOf(const PiecePlan& plan, const std::vector<PlannedPiece>& pieces) {
  std::vector<std::string> command{Program(), "join"};
  for (const PlannedPiece& piece : pieces) command.push_back(piece.output);
  command.insert(command.end(), {"-o", plan.movie});
  return command;
}

}  // namespace vrx::host
