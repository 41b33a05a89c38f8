// What a user sees of a running render: a bar on a terminal, or one JSON object a line.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/EngineSpans.h"
#include "src/check/ProjectReport.h"

namespace vrx::host {

enum class ProgressStyle { Auto, Bar, JsonLines, None };

/// What the project asks for.
struct RenderPlan {
  std::string outputPath;
  std::int64_t frames = 0;
  double seconds = 0.0;  // of movie
  std::size_t pieces =
      0;  // that are joined, of which frames and seconds are not known before; 0 for a render
};

/// What was written.
struct RenderResult {
  std::int64_t frames = 0;
  double seconds = 0.0;     // of movie
  std::uint64_t bytes = 0;  // 0 when unknown
  std::int64_t copiedFrames = 0;
  /// Warnings, and the errors because of which the movie is not what it should be.
  std::vector<check::Problem> problems;
};

/// All calls come on one thread.
class RenderProgress {
 public:
  virtual ~RenderProgress() = default;
  virtual void OnStart(const RenderPlan& plan) = 0;
  /// At most once, before the first percentage.
  virtual void OnSpans(const EngineSpans& spans) = 0;
  virtual void OnPercent(std::uint32_t percent) = 0;
  /// A line for people; it goes to stderr.
  virtual void OnMessage(const std::string& line) = 0;
  virtual void OnEnd(const RenderResult& result) = 0;
  virtual void OnCancelled() = 0;
  virtual void OnError(std::uint32_t code, const check::Problem& cause) = 0;

  /// Auto is the bar on a terminal and silence elsewhere. `quiet` drops everything but errors and JSON.
  static std::unique_ptr<RenderProgress> Make(ProgressStyle style, bool quiet);
};

/// Frames per second and seconds left, from the percentage alone.
class RenderPace {
 public:
  using Clock = std::chrono::steady_clock;

  void Start(std::int64_t totalFrames) {
    m_totalFrames = totalFrames;
    m_start = m_last = Clock::now();
  }
  void Update(std::uint32_t percent) {
    m_percent = percent;
    m_last = Clock::now();
  }
  double GetElapsed() const { return std::chrono::duration<double>(Clock::now() - m_start).count(); }
  /// Mean up to the last update; 0 while unknown.
  double GetFramesPerSecond() const {
    const double seconds = std::chrono::duration<double>(m_last - m_start).count();
    return seconds > 0.0 ? static_cast<double>(m_totalFrames) * m_percent / 100.0 / seconds : 0.0;
  }
  /// Below 0 while unknown.
  double GetSecondsLeft() const {
    const double seconds = std::chrono::duration<double>(m_last - m_start).count();
    return m_percent == 0 ? -1.0 : seconds / m_percent * (100.0 - m_percent);
  }

 private:
  std::int64_t m_totalFrames = 0;
  std::uint32_t m_percent = 0;
  Clock::time_point m_start;
  Clock::time_point m_last;
};

}  // namespace vrx::host
