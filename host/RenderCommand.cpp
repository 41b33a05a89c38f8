#include "host/RenderCommand.h"

#include <mutex>
#include <optional>

#include "foundation/platform/Paths.h"
#include "foundation/platform/Signals.h"
#include "host/Console.h"
#include "host/EngineModule.h"
#include "src/check/ProjectReport.h"
#include "vrx/VRXWrapper.h"

namespace vrx::host {
namespace {

/// Carries what happens on the render thread over to the main thread.
class RenderEvents final : public IVRXWrapperCallback {
 public:
  struct State {
    std::optional<std::uint32_t> percent;  // new since the last look
    std::optional<std::uint32_t> error;
    bool ended = false;
  };

  explicit RenderEvents(platform::InterruptWaiter& waiter) : m_waiter(waiter) {}

  void OnRenderStart() override {}
  void OnRenderEnd() override {
    Change([](State& state) { state.ended = true; });
  }
  void OnRenderError(std::uint32_t code) override {
    Change([=](State& state) { state.error = code; });
  }
  void OnRenderProgress(std::uint32_t percentage) override {
    m_lastPercent = percentage;
    Change([=](State& state) { state.percent = percentage; });
  }

  State Take() {
    const std::scoped_lock lock(m_mutex);
    State taken = m_state;
    m_state.percent.reset();
    return taken;
  }
  /// All frames are in the movie and it stands under its name. Only to be asked after the end.
  bool IsComplete() const {
    constexpr std::uint32_t kAll = 100;
    return m_lastPercent == kAll;
  }

 private:
  template <class Function>
  void Change(Function change) {
    {
      const std::scoped_lock lock(m_mutex);
      change(m_state);
    }
    m_waiter.Wake();
  }

  platform::InterruptWaiter& m_waiter;
  std::mutex m_mutex;
  State m_state;
  std::uint32_t m_lastPercent = 0;
};

/// Why the render failed: the engine's word, or else what the document shows.
std::string Cause(EngineModule& engine, const check::ProjectReport& report) {
  std::string cause;
  for (const EngineLine& line : engine.TakeLines()) {
    if (line.severity == VRXLogError) cause = line.text;
  }
  if (!cause.empty()) return cause;
  for (const check::Problem& problem : report.problems) {
    if (problem.severity == check::Severity::Error) return ProblemLine(problem);
  }
  return cause;
}

/// Problems that a user should know of before a long render; the errors follow as its cause.
void SayWarnings(const check::ProjectReport& report) {
  for (const check::Problem& problem : report.problems) {
    if (problem.severity == check::Severity::Warning) Say(ProblemLine(problem));
  }
}

/// Sources are looked into only where the movie's length hangs on them: the engine opens them anyway.
check::ProjectReport Inspect(const XpString& project, const EngineModule& engine) {
  check::ProjectReport report = check::CheckProject(project, {});
  for (const check::ClipRow& clip : report.clips) {
    if (!clip.wholeSource) continue;
    return check::CheckProject(project, [&](const XpString& path) { return engine.Probe(path); });
  }
  return report;
}

/// Waits for the end of the render, showing progress and passing on an interrupt. True when it was cancelled.
bool Follow(IVRXWrapper& wrapper, RenderEvents& events, platform::InterruptWaiter& waiter,
            RenderProgress& progress, RenderEvents::State& state) {
  constexpr std::int32_t kForever = -1;
  bool cancelled = false;
  for (;;) {
    if (waiter.Wait(kForever) == platform::InterruptWaiter::Event::Interrupt) {
      if (cancelled) platform::ExitNow(kCancelled);  // asked twice: at once, even at the price of a leftover
      cancelled = true;
      wrapper.Cancel();
    }
    state = events.Take();
    if (state.ended || state.error) return cancelled;
    if (state.percent) progress.OnPercent(*state.percent);
  }
}

}  // namespace

int RunRender(const RenderOptions& options) {
  platform::InterruptWaiter waiter;
  const auto progress = RenderProgress::Make(options.progress, options.quiet);
  const XpString project = platform::AbsolutePath(platform::PathFromNative(options.project));
  EngineModule engine;
  IVRXWrapper* wrapper = nullptr;
  std::string cause;
  if (!engine.Load(cause) || VRXWrapper::CreateVRXWrapper(true, &wrapper) != 0) {
    progress->OnError(XpErrNoObject, cause.empty() ? "the conversion engine cannot be started" : cause);
    return kFailed;
  }
  engine.Listen({});  // what it says while the sources are looked into comes again when they are opened
  const check::ProjectReport report = Inspect(project, engine);
  if (!options.quiet) SayWarnings(report);
  engine.TakeLines();
  engine.Listen([&](const EngineLine& line) {
    if (line.severity == VRXLogWarning && !options.quiet) Say("warning: " + line.text);
  });
  RenderEvents events(waiter);
  wrapper->SetCallback(&events);
  wrapper->SetProjectFile(project);
  progress->OnStart({Utf8(report.outputPath), report.totalFrames, report.totalSeconds});
  wrapper->StartRender();
  RenderEvents::State state;
  const bool cancelled = Follow(*wrapper, events, waiter, *progress, state);
  wrapper->Release();

  if (state.error) {
    progress->OnError(*state.error, Cause(engine, report));
    return kFailed;
  }
  if (cancelled && !events.IsComplete()) {
    progress->OnCancelled();
    return kCancelled;
  }
  progress->OnEnd();
  return kDone;
}

}  // namespace vrx::host
