#include "host/pieces/JoinRun.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>

#include "src/manager/RenderLoop.h"
#include "vrx/XpResult.h"

namespace vrx::host {
namespace {

using platform::InterruptWaiter;

constexpr std::uint32_t kWholePercent = 100;
constexpr std::int32_t kForever = -1;
constexpr std::int32_t kPatienceMs = 900;

/// One join: the engine works on a thread of its own, and this one waits.
class Join {
 public:
  Join(EngineModule& engine, InterruptWaiter& waiter, const JoinRequest& request)
      : m_engine(engine), m_waiter(waiter), m_request(request) {}

  JoinOutcome Run() {
    m_engine.Listen({});
    m_engine.TakeLines();
    auto result = std::async(std::launch::async, [this] { return Work(); });
    Wait();
    return OutcomeOf(result.get());
  }

 private:
  std::int32_t Work() {
    struct AtEnd {
      Join& join;
      ~AtEnd() {
        join.m_isDone = true;
        join.m_waiter.Wake();
      }
    };
    const AtEnd atEnd{*this};
    std::vector<const char16_t*> paths;
    for (const XpString& piece : m_request.pieces) paths.push_back(piece.c_str());
    VRXPieces pieces;
    pieces.paths = paths.data();
    pieces.count = static_cast<std::uint32_t>(paths.size());
    pieces.output = m_request.output.c_str();
    return m_engine.Join(pieces, m_endFlag, [this](std::uint32_t percent) {
      m_percent = percent;
      m_waiter.Wake();
    });
  }

  void Wait() {
    std::uint32_t told = 0;
    while (!m_isDone) {
      // Before its first progress the engine opens the pieces, which cannot be interrupted, and writes
      // nothing.
      const bool isOpening = m_isCancelled && m_percent == kNone;
      const InterruptWaiter::Event event = m_waiter.Wait(isOpening ? kPatienceMs : kForever);
      if (isOpening && event == InterruptWaiter::Event::Timeout) m_request.endNow();
      if (event == InterruptWaiter::Event::Interrupt) {
        if (m_isCancelled) m_request.endNow();
        Cancel();
      }
      const std::uint32_t percent = m_percent;
      if (percent == kNone || percent == told || m_isCancelled) continue;
      told = percent;
      if (!m_request.onPercent(percent)) Cancel();
    }
  }

  void Cancel() {
    m_isCancelled = true;
    std::atomic_ref<bool>(m_endFlag).store(true, std::memory_order_release);
  }

  JoinOutcome OutcomeOf(std::int32_t result) {
    if (result == VRXEngineOk && m_percent == kWholePercent) return {.end = JoinOutcome::End::Done};
    if (m_isCancelled) return {.end = JoinOutcome::End::Cancelled};
    JoinOutcome outcome{.code = render::HostCode(result), .cause = "the conversion engine gives no cause"};
    for (const EngineLine& line : m_engine.TakeLines()) {
      if (line.severity == VRXLogError) outcome.cause = line.text;
    }
    return outcome;
  }

  static constexpr std::uint32_t kNone = ~0u;

  EngineModule& m_engine;
  InterruptWaiter& m_waiter;
  const JoinRequest& m_request;
  std::atomic<std::uint32_t> m_percent = kNone;
  std::atomic<bool> m_isDone = false;
  alignas(std::atomic_ref<bool>::required_alignment) bool m_endFlag = false;
  bool m_isCancelled = false;
};

}  // namespace

JoinOutcome JoinPieces(EngineModule& engine, InterruptWaiter& waiter, const JoinRequest& request) {
  if (std::string cause; !engine.CanJoin(cause)) return {.code = XpErrNoObject, .cause = cause};
  return Join(engine, waiter, request).Run();
}

}  // namespace vrx::host
