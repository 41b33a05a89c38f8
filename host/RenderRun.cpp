#include "host/RenderRun.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "foundation/text/XpFormat.h"
#include "host/Console.h"
#include "host/EncodingArguments.h"
#include "host/EngineModule.h"
#include "host/Inspection.h"
#include "host/InterruptibleWork.h"
#include "host/ProblemText.h"
#include "host/RenderEvents.h"
#include "host/pieces/PiecePlan.h"
#include "src/baseband/PictureProblems.h"
#include "src/check/BasebandCheck.h"
#include "src/project/ProjectKeys.h"

namespace vrx::host {
namespace {

using check::Problem;
using check::ProjectReport;
using check::Severity;
using platform::InterruptWaiter;

constexpr std::int32_t kForever = -1;

Problem Failure(const XpString& file, const XpString& message) {
  return {.severity = Severity::Error, .file = file, .message = message};
}

/// One `vrx render`, from the inspection of the project to the closing line.
class RenderRun {
 public:
  RenderRun(const RenderOptions& options, const ProjectSource& project)
      : m_options(options),
        m_progress(RenderProgress::Make(options.progress, options.quiet)),
        m_project(project),
        m_events(m_waiter) {}
  RenderRun(const RenderRun&) = delete;
  RenderRun& operator=(const RenderRun&) = delete;
  ~RenderRun() {
    baseband::SetPictureListener({});
    m_engine.DropOverrides();
  }

  int Run() {
    std::string cause;
    if (!m_engine.Load(cause) || VRXWrapper::CreateVRXWrapper(true, &m_wrapper) != 0) {
      if (cause.empty()) cause = "the conversion engine cannot be started";
      return Fail(XpErrNoObject, Failure({}, XpNarrowString(cause).ToWide()));
    }
    Prepare();
    if (!ChooseFrames(cause)) return GiveUp(kWrongUse, cause);
    if (!IsAsPlanned(cause)) return GiveUp(kFailed, cause);
    if (!SetOverrides(cause)) return GiveUp(kFailed, cause);
    const auto* input = FindOutputAmongInputs(m_report.outputPath, m_report.inputs);
    if (input != nullptr) {
      m_wrapper->Release();
      return Fail(XpErrNoObject, OverwriteOf(*input));
    }
    // What is only worth knowing is for `check`; of the clips it is said again as they are read.
    for (const Problem& problem : m_report.problems) {
      if (problem.severity != Severity::Note) Show(problem);
    }
    if (m_options.strict && m_report.HasWarnings()) {
      m_wrapper->Release();
      return Refuse();
    }
    ListenToEngine();
    m_wrapper->SetCallback(&m_events);
    m_progress->OnStart({Utf8(m_report.outputPath), m_frames, m_seconds});
    m_wrapper->StartRender();
    Follow();
    m_wrapper->Release();
    TakeEvents();
    return Finish();
  }

 private:
  /// Inspects and reads the project. On a thread of its own, since a source on a slow disk can take long, and
  /// an interrupt must end that wait too: nothing is written yet, so the program ends at once.
  void Prepare() {
    // Reading the project starts the decoder of still pictures.
    baseband::SetPictureListener(
        [this](const baseband::PictureProblem& problem) { m_events.Add(check::PictureProblemOf(problem)); });
    const auto prepare = [this] {
      m_engine.Listen({});  // what it says of a source now it says again when the render opens it
      m_engine.KeepSpans();
      // What a strict render refuses has to be found before it begins.
      m_report = m_options.strict ? InspectWhole(m_project, m_engine) : InspectQuickly(m_project, m_engine);
      if (m_options.allowMissing) m_report.AllowMissingPictures();
      m_wrapper->SetProjectFile(m_project.GetPath());
      m_engine.TakeLines();
      m_engine.TakeSpans();
    };
    DoUnlessInterrupted(m_waiter, prepare, [this] { EndNow(); });
  }

  int GiveUp(int status, const std::string& cause) {
    m_wrapper->Release();
    Fail(XpErrNoObject, Failure({}, XpNarrowString(cause).ToWide()));
    return status;
  }

  /// The frames that are written, of those of the whole movie.
  bool ChooseFrames(std::string& cause) {
    m_frames = m_report.totalFrames;
    m_seconds = m_report.totalSeconds;
    if (m_options.range.IsWhole() || m_report.FindError(false) != nullptr || !m_report.videoSettings)
      return true;
    const FrameRange range =
        FramesOf(m_options.range, m_report.videoSettings->frameDuration, m_report.totalFrames, cause);
    if (!cause.empty()) {
      cause = Utf8(m_project.GetName()) + " " + cause;
      return false;
    }
    m_frames = range.end - range.first;
    m_seconds =
        m_report.totalSeconds * static_cast<double>(m_frames) / static_cast<double>(m_report.totalFrames);
    m_firstFrame = range.first;
    return true;
  }

  /// False for a piece of a plan that was made of something else. What is wrong with a project that cannot be
  /// rendered is said instead.
  bool IsAsPlanned(std::string& cause) const {
    if (!m_options.piece || m_report.FindError(false) != nullptr) return true;
    const PieceName& piece = *m_options.piece;
    if (IsPieceOf(piece.plan, m_report, m_options.pieceOptions, piece.count)) return true;
    cause = "the project or its files have changed since the plan was made";
    return false;
  }

  /// Overrides hold for the process, so those of a project before are taken back.
  bool SetOverrides(std::string& cause) {
    VRXRenderOverrides overrides = m_options.overrides;
    if (m_frames != m_report.totalFrames) {
      overrides.firstFrame = static_cast<std::uint64_t>(m_firstFrame);
      // The number of all frames may be an estimate.
      if (m_options.range.to) overrides.frameCount = static_cast<std::uint64_t>(m_frames);
    }
    if (m_options.piece) SetPiece(*m_options.piece, overrides);
    // The endings of pictures and of movies with transparency are those of no project.
    if (overrides.overlays == VRXOverlayAlone) {
      std::erase_if(m_report.problems, [](const Problem& problem) {
        return problem.severity == Severity::Warning && problem.key == project::kOutputFilePath.name;
      });
    }
    return !AsksForAnything(overrides) || m_engine.SetOverrides(overrides, cause);
  }

  /// The name has to live as long as the overrides.
  void SetPiece(const PieceName& piece, VRXRenderOverrides& overrides) {
    overrides.tracks = piece.piece == 0 ? VRXSoundAlone : VRXPictureAlone;
    overrides.pieceOf = piece.plan.c_str();
    overrides.piece = piece.piece;
    overrides.pieceCount = piece.count;
    if (piece.piece == 0) m_frames = 0;
  }

  void ListenToEngine() {
    m_engine.Listen([this](const EngineLine& line) {
      // An error is the cause of the end, which follows.
      if (line.severity != VRXLogError) m_events.Add(ProblemOf(m_project, m_report, line));
    });
  }

  /// Waits for the end of the render, showing progress and passing on an interrupt.
  void Follow() {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kPatience{900};
    Clock::time_point deadline;
    while (!m_state.ended && !m_state.error) {
      // Before its first frame the engine opens sources, which cannot be interrupted, and writes nothing.
      const bool isOpening = m_isCancelled && !m_hasStarted;
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
      const auto wait =
          isOpening ? static_cast<std::int32_t>(std::max<std::int64_t>(left.count(), 0)) : kForever;
      const InterruptWaiter::Event event = m_waiter.Wait(wait);
      if (isOpening && event == InterruptWaiter::Event::Timeout && Clock::now() >= deadline) EndNow();
      if (event == InterruptWaiter::Event::Interrupt) {
        // The second interrupt ends the program at once, even if a temporary file is left.
        if (m_isCancelled) Exit();
        m_isCancelled = true;
        deadline = Clock::now() + kPatience;
        m_wrapper->Cancel();
      }
      TakeEvents();
      if (m_hasOutput && !FlushOutput()) {
        m_hasOutput = false;  // the reader of the progress has gone
        m_wrapper->Cancel();
      }
    }
  }

  void TakeEvents() {
    m_state = m_events.Take();
    for (const Problem& problem : m_state.problems) {
      if (!AddFound(problem)) continue;
      Show(m_found.back());
      if (!m_options.strict || m_found.back().severity != Severity::Warning || m_isRefused) continue;
      m_isRefused = true;
      m_wrapper->Cancel();
    }
    if (!m_state.percent) return;
    // All spans come before the first progress.
    const EngineSpans spans = m_hasStarted ? EngineSpans() : m_engine.TakeSpans();
    if (!spans.IsEmpty()) m_progress->OnSpans(spans);
    m_hasStarted = true;
    if (!m_state.ended && !m_state.error) m_progress->OnPercent(*m_state.percent);
  }

  /// False when the inspection has reported it already.
  bool AddFound(Problem problem) {
    m_project.NameFile(problem);
    const auto isKnown = [&](const Problem& known) { return IsSameProblem(known, problem); };
    if (std::ranges::any_of(m_report.problems, isKnown)) return false;
    if (m_options.allowMissing && problem.isMissingPicture) problem.severity = Severity::Warning;
    m_found.push_back(problem);
    return true;
  }

  /// Errors that stop the render come as its cause.
  void Show(const Problem& problem) {
    const bool isError = problem.severity == Severity::Error;
    if (isError && !problem.isMissingPicture) return;
    if (isError || !m_options.quiet) m_progress->OnMessage(ProblemLine(problem));
  }

  int Finish() {
    if (m_state.error) return Fail(*m_state.error, CauseOf(*m_state.error));
    if (m_isRefused) return Refuse();
    if (!m_events.IsComplete()) {
      if (!m_hasOutput) return kFailed;
      m_progress->OnCancelled();
      return kCancelled;
    }
    RenderResult result{.frames = m_frames, .seconds = m_seconds};
    for (const Problem& problem : m_report.problems) AddToResult(problem, result);
    for (const Problem& problem : m_found) AddToResult(problem, result);
    const auto missing = std::ranges::count(result.problems, Severity::Error, &Problem::severity);
    const bool isWhole = AddWritten(result);
    m_progress->OnEnd(result);
    if (!isWhole) m_progress->OnMessage(ProblemLine(result.problems.back()));
    if (missing != 0) {
      m_progress->OnMessage("error: still pictures missing in the movie: " + std::to_string(missing) +
                            " (--allow-missing accepts that)");
    }
    return isWhole && missing == 0 ? kDone : kFailed;
  }

  int Refuse() {
    if (const Problem* error = m_report.FindError(false)) return Fail(XpErrFailed, *error);
    return Fail(XpErrFailed, Failure(m_project.GetName(), u"has warnings, which --strict refuses"));
  }

  static void AddToResult(const Problem& problem, RenderResult& result) {
    if (problem.severity == Severity::Warning || problem.isMissingPicture) result.problems.push_back(problem);
  }

  /// What the engine wrote. False, with a last problem that says so, when that is not what the project asks
  /// for.
  bool AddWritten(RenderResult& result) const {
    VRXRenderSummary written;
    if (!m_engine.GetSummary(written)) return true;
    result.frames = static_cast<std::int64_t>(written.frames);
    result.bytes = written.bytes;
    result.copiedFrames = static_cast<std::int64_t>(written.copiedFrames);
    if (m_frames > 0)
      result.seconds = m_seconds * static_cast<double>(result.frames) / static_cast<double>(m_frames);
    // The length of a clip that is used whole is an estimate, right to a frame.
    const auto isEstimate = [](const check::ClipRow& clip) {
      return clip.wholeSource && clip.track == u"VideoTrack";
    };
    const std::int64_t difference = std::abs(result.frames - m_frames);
    if (difference <= std::ranges::count_if(m_report.clips, isEstimate)) return true;
    XpString message;
    XpFormat(message, u"the movie has %I64d frames, but the project asks for %I64d", result.frames, m_frames);
    result.problems.push_back(Failure(m_project.GetName(), message));
    return false;
  }

  /// Why the render failed: what the documents show, or else what the engine says.
  Problem CauseOf(std::uint32_t code) {
    const Problem* shown = m_report.FindError(false);
    if (shown != nullptr && code != XpErrDiskFull) return *shown;
    Problem cause = Failure(m_project.GetName(), u"the conversion engine gives no cause");
    for (const EngineLine& line : m_engine.TakeLines()) {
      if (line.severity != VRXLogError || (line.clip == 0 && cause.clip != 0)) continue;
      cause = ProblemOf(m_project, m_report, line);
    }
    return cause;
  }

  /// The inspection knows the painter document of a changed project by another path, and found nothing.
  Problem OverwriteOf(const project::InputFile& input) const {
    Problem problem = Failure(m_project.GetName(),
                              m_report.outputPath + u" is " + input.Role() + u" and would be overwritten");
    problem.key = project::kOutputFilePath.name;
    const Problem* shown = m_report.FindError(false);
    return shown == nullptr ? problem : *shown;
  }

  int Fail(std::uint32_t code, const Problem& cause) {
    m_progress->OnError(code, cause);
    return kFailed;
  }

  [[noreturn]] void EndNow() {
    m_progress->OnCancelled();
    FlushOutput();
    Exit();
  }

  [[noreturn]] void Exit() const {
    if (m_options.beforeExit) m_options.beforeExit();
    platform::ExitNow(kCancelled);
  }

  const RenderOptions& m_options;
  InterruptWaiter m_waiter;
  std::unique_ptr<RenderProgress> m_progress;
  const ProjectSource& m_project;
  EngineModule m_engine;
  IVRXWrapper* m_wrapper = nullptr;
  ProjectReport m_report;
  std::int64_t m_firstFrame = 0;  // of the movie, that is written
  std::int64_t m_frames = 0;      // that are written
  double m_seconds = 0.0;         // that they last
  RenderEvents m_events;
  RenderEvents::State m_state;
  std::vector<Problem> m_found;  // during the render
  bool m_hasStarted = false;
  bool m_isCancelled = false;
  bool m_isRefused = false;  // because of a warning during the render
  bool m_hasOutput = true;   // stdout can still be written to
};

}  // namespace

int RenderProject(const RenderOptions& options, const ProjectSource& project) {
  return RenderRun(options, project).Run();
}

}  // namespace vrx::host
