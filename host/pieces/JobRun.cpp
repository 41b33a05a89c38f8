#include "host/pieces/JobRun.h"

#include <algorithm>
#include <memory>
#include <numeric>
#include <vector>

#include "foundation/platform/Paths.h"
#include "foundation/text/XpPath.h"
#include "host/EncodingArguments.h"
#include "host/Inspection.h"
#include "host/InterruptibleWork.h"
#include "host/ProblemText.h"
#include "host/TemporaryFolder.h"
#include "host/pieces/JoinRun.h"
#include "host/pieces/PieceCuts.h"
#include "host/pieces/PiecePlan.h"
#include "host/pieces/PieceProcess.h"

namespace vrx::host {
namespace {

using check::Problem;
using check::Severity;
using platform::InterruptWaiter;

/// Hundredths of the whole for the pieces; the rest is for joining them.
constexpr std::uint32_t kAll = 100;
constexpr std::uint32_t kPiecesShare = 98;

/// What the command line asks for that pieces cannot do; null when there is nothing.
const char* WhyOneGo(const RenderOptions& options, const ProjectSource& project) {
  if (options.overrides.overlays == VRXOverlayAlone) return "overlays alone are not joined";
  if (!options.range.IsWhole()) return "only a range is wanted";
  if (project.IsStandardInput()) return "the project comes from standard input";
  return nullptr;
}

/// One render in pieces: the plan, the processes, the join.
class JobRun {
 public:
  JobRun(const RenderOptions& options, std::uint32_t jobs, const ProjectSource& project)
      : m_options(options),
        m_jobs(jobs),
        m_project(project),
        m_progress(RenderProgress::Make(options.progress, options.quiet)) {}

  /// False when the project is rendered in one go: with the reason, or without for a project that cannot be
  /// rendered, of which that render says why.
  bool Plan(std::string& reason) {
    bool isPlanned = false;
    const auto plan = [&] { isPlanned = MakePlan(reason); };
    DoUnlessInterrupted(m_waiter, plan, [this] { EndNow(); });
    return isPlanned;
  }

  int Run() {
    for (const Problem& problem : m_report.problems) {
      if (problem.severity != Severity::Note) Show(problem);
    }
    m_progress->OnStart({Utf8(m_report.outputPath), m_report.totalFrames, m_report.totalSeconds});
    if (!m_spans.IsEmpty()) m_progress->OnSpans(m_spans);
    if (StartPieces()) Follow();
    m_state = GetStates();
    if (m_failure) {
      m_progress->OnError(m_failure->code, m_failure->cause);
      return kFailed;
    }
    return m_isCancelled ? Cancelled() : JoinAll();
  }

 private:
  bool MakePlan(std::string& reason) {
    if (std::string cause; !m_engine.Load(cause)) return false;
    if (!m_engine.CanJoin(reason)) return false;
    if (!Inspect() || m_report.outputPath.IsEmpty()) return false;
    if (m_options.strict && m_report.HasWarnings()) return false;
    if (project::FindOutputAmongInputs(m_report.outputPath, m_report.inputs) != nullptr) return false;
    const std::vector<EngineSpan> pictures = PictureSpans(m_report, m_spans);
    const std::int64_t encoded = m_spans.IsEmpty() ? m_report.totalFrames : m_spans.GetEncodedFrames();
    const std::uint32_t count = UsefulPieces(m_jobs, encoded, m_report.videoSettings->frameDuration);
    if (count > 1) m_plan = MakePiecePlan(m_project, m_report, m_spans, m_options.pieceOptions, count);
    if (m_plan.ranges.size() < 2) {
      reason = "pieces would bring nothing";
      return false;
    }
    m_folder = std::make_unique<TemporaryFolder>(XpPathParent(m_report.outputPath));
    if (m_folder->GetError()) return false;
    m_pieces = ListPieces(m_plan, platform::NativePath(XpPathJoin(m_folder->GetPath(), u"movie")));
    const PieceCuts cuts(pictures);
    for (const PlannedPiece& piece : m_pieces)
      m_work.push_back(std::max<std::int64_t>(cuts.GetWork(piece.range), 1));
    return true;
  }

  bool Inspect() {
    std::string cause;
    if (AsksForAnything(m_options.overrides) && !m_engine.SetOverrides(m_options.overrides, cause))
      return false;
    if (m_options.strict) {
      m_engine.KeepSpans();
      m_report = InspectWhole(m_project, m_engine);
      m_spans = m_engine.TakeSpans();
    } else {
      m_report = InspectSpans(m_project, m_engine, m_spans);
    }
    m_engine.DropOverrides();
    if (m_options.allowMissing) m_report.AllowMissingPictures();
    return m_report.FindError(false) == nullptr;
  }

  bool StartPieces() {
    for (PlannedPiece& piece : m_pieces) {
      piece.command.insert(piece.command.end(), {"--progress", "json", "--quiet"});
      if (m_options.strict) piece.command.emplace_back("--strict");
      auto process = std::make_unique<PieceProcess>(m_waiter);
      if (const auto error = process->Start(piece.command)) {
        Fail({XpErrFailed,
              {.severity = Severity::Error, .message = XpNarrowString(error.message()).ToWide()}});
        break;
      }
      m_processes.push_back(std::move(process));
    }
    return !m_processes.empty();
  }

  /// Until all processes have ended.
  void Follow() {
    constexpr std::int32_t kForever = -1;
    do {
      if (m_waiter.Wait(kForever) == InterruptWaiter::Event::Interrupt) {
        if (m_isCancelled) EndNow();
        Cancel();
      }
      m_state = GetStates();
      for (const PieceProcess::State& state : m_state) {
        if (state.failure && !m_isCancelled) Fail(*state.failure);
      }
      if (!m_isCancelled) Tell(PercentOfPieces());
    } while (!std::ranges::all_of(m_state, &PieceProcess::State::hasEnded));
  }

  std::vector<PieceProcess::State> GetStates() const {
    std::vector<PieceProcess::State> states;
    for (const auto& process : m_processes) states.push_back(process->GetState());
    return states;
  }

  std::uint32_t PercentOfPieces() const {
    std::int64_t done = 0;
    for (std::size_t i = 0; i < m_state.size(); ++i) done += m_work[i] * m_state[i].percent;
    const std::int64_t all = std::accumulate(m_work.begin(), m_work.end(), std::int64_t{0});
    return static_cast<std::uint32_t>(done / all) * kPiecesShare / kAll;
  }

  /// False when the reader of the progress has gone.
  bool Tell(std::uint32_t percent) {
    if (percent == m_told) return true;
    m_told = percent;
    m_progress->OnPercent(percent);
    if (FlushOutput()) return true;
    m_hasOutput = false;
    Cancel();
    return false;
  }

  void Cancel() {
    m_isCancelled = true;
    for (const auto& process : m_processes) process->Interrupt();
  }

  /// The first failure is the cause; those that follow from it are not.
  void Fail(const PieceProcess::Failure& failure) {
    m_failure = failure;
    Cancel();
  }

  int Cancelled() {
    if (!m_hasOutput) return kFailed;
    m_progress->OnCancelled();
    return kCancelled;
  }

  int JoinAll() {
    JoinRequest request{.output = m_report.outputPath};
    for (const PlannedPiece& piece : m_pieces)
      request.pieces.push_back(platform::PathFromNative(piece.output));
    request.onPercent = [this](std::uint32_t percent) {
      return Tell(kPiecesShare + percent * (kAll - kPiecesShare) / kAll);
    };
    request.endNow = [this] { EndNow(); };
    const JoinOutcome outcome = JoinPieces(m_engine, m_waiter, request);
    if (outcome.end == JoinOutcome::End::Cancelled) return Cancelled();
    if (outcome.end == JoinOutcome::End::Done) return Finish();
    m_progress->OnError(outcome.code,
                        {.severity = Severity::Error, .message = XpNarrowString(outcome.cause).ToWide()});
    return kFailed;
  }

  int Finish() {
    RenderResult result{.frames = m_report.totalFrames, .seconds = m_report.totalSeconds};
    if (VRXRenderSummary written; m_engine.GetSummary(written)) {
      result.frames = static_cast<std::int64_t>(written.frames);
      result.bytes = written.bytes;
      result.seconds *= static_cast<double>(result.frames) /
                        static_cast<double>(std::max<std::int64_t>(m_report.totalFrames, 1));
    }
    for (const Problem& problem : m_report.problems) AddProblem(problem, false, result);
    for (const PieceProcess::State& state : m_state) {
      result.copiedFrames += state.copiedFrames;
      for (const Problem& problem : state.problems) AddProblem(problem, true, result);
    }
    m_progress->OnEnd(result);
    const auto errors = std::ranges::count(result.problems, Severity::Error, &Problem::severity);
    if (errors == 0) return kDone;
    m_progress->OnMessage("error: the movie is not as the project asks for: " + std::to_string(errors) +
                          (errors == 1 ? " error" : " errors") +
                          " in it (--allow-missing accepts missing pictures)");
    return kFailed;
  }

  void AddProblem(const Problem& problem, bool isNew, RenderResult& result) {
    if (problem.severity == Severity::Note) return;
    const auto isKnown = [&](const Problem& known) { return IsSameProblem(known, problem); };
    if (std::ranges::any_of(result.problems, isKnown)) return;
    result.problems.push_back(problem);
    if (isNew) Show(problem);
  }

  void Show(const Problem& problem) {
    if (problem.severity == Severity::Error || !m_options.quiet) m_progress->OnMessage(ProblemLine(problem));
  }

  [[noreturn]] void EndNow() {
    for (const auto& process : m_processes) process->Kill();
    m_processes.clear();
    if (m_folder) m_folder->Remove();
    m_progress->OnCancelled();
    FlushOutput();
    platform::ExitNow(kCancelled);
  }

  const RenderOptions& m_options;
  std::uint32_t m_jobs;
  const ProjectSource& m_project;
  InterruptWaiter m_waiter;
  std::unique_ptr<RenderProgress> m_progress;
  EngineModule m_engine;
  check::ProjectReport m_report;
  EngineSpans m_spans;
  PiecePlan m_plan;
  std::unique_ptr<TemporaryFolder> m_folder;  // outlives the processes, which write into it
  std::vector<PlannedPiece> m_pieces;
  std::vector<std::int64_t> m_work;  // of each piece
  std::vector<std::unique_ptr<PieceProcess>> m_processes;
  std::vector<PieceProcess::State> m_state;  // of each process
  std::optional<PieceProcess::Failure> m_failure;
  std::uint32_t m_told = 0;  // hundredths
  bool m_isCancelled = false;
  bool m_hasOutput = true;  // stdout can still be written to
};

}  // namespace

std::uint32_t UsefulPieces(std::uint32_t jobs, std::int64_t encodedFrames, const VRXTimeInfo& frameDuration) {
  constexpr double kLeastSeconds = 10.0;
  if (frameDuration.scale == 0) return 1;
  const double seconds = static_cast<double>(encodedFrames) * static_cast<double>(frameDuration.value) /
                         static_cast<double>(frameDuration.scale);
  const double pieces = std::min(static_cast<double>(jobs), seconds / kLeastSeconds);
  return std::max(static_cast<std::uint32_t>(pieces), 1u);
}

int RenderInPieces(const RenderOptions& options, std::uint32_t jobs, const ProjectSource& project) {
  const char* why = jobs < 2 ? "--jobs is 1" : WhyOneGo(options, project);
  std::string reason = why == nullptr ? "" : why;
  if (reason.empty()) {
    JobRun run(options, jobs, project);
    if (run.Plan(reason)) return run.Run();
  }
  if (!reason.empty() && !options.quiet) Say("rendering in one go: " + reason);
  return RenderProject(options, project);
}

}  // namespace vrx::host
