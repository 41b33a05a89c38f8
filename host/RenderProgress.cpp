#include "host/RenderProgress.h"

#include <algorithm>
#include <cstdio>

#include <nlohmann/json.hpp>

#include "foundation/platform/Terminal.h"
#include "host/Console.h"

namespace vrx::host {
namespace {

void SayFailure(std::uint32_t code, const std::string& cause) {
  char line[32];
  std::snprintf(line, sizeof(line), "render failed (%04x)", code);
  Say(cause.empty() ? std::string(line) : std::string(line) + ": " + cause);
}

/// The last line of a render for people, on stdout.
void PrintDone(const RenderSummary& summary, double elapsed) {
  const double rate = elapsed > 0.0 ? static_cast<double>(summary.frames) / elapsed : 0.0;
  std::printf("%s: %lld frames, %.3f s of movie, rendered in %.1f s (%.1f fps)\n", summary.outputPath.c_str(),
              static_cast<long long>(summary.frames), summary.movieSeconds, elapsed, rate);
}

class SilentProgress : public RenderProgress {
 public:
  explicit SilentProgress(bool quiet) : m_quiet(quiet) {}
  void OnStart(const RenderSummary& summary) override {
    m_summary = summary;
    m_pace.Start(summary.frames);
  }
  void OnPercent(std::uint32_t) override {}
  void OnEnd() override {
    if (!m_quiet) PrintDone(m_summary, m_pace.GetElapsed());
  }
  void OnCancelled() override {
    if (!m_quiet) Say("cancelled; " + m_summary.outputPath + " was not written");
  }
  void OnError(std::uint32_t code, const std::string& cause) override { SayFailure(code, cause); }

 protected:
  bool m_quiet;
  RenderSummary m_summary;
  RenderPace m_pace;
};

class BarProgress : public SilentProgress {
 public:
  BarProgress() : SilentProgress(false) {}
  void OnStart(const RenderSummary& summary) override {
    SilentProgress::OnStart(summary);
    Draw(0);
  }
  void OnPercent(std::uint32_t percent) override {
    m_pace.Update(percent);
    Draw(percent);
  }
  void OnEnd() override {
    Clear();
    SilentProgress::OnEnd();
  }
  void OnCancelled() override {
    Clear();
    SilentProgress::OnCancelled();
  }
  void OnError(std::uint32_t code, const std::string& cause) override {
    Clear();
    SilentProgress::OnError(code, cause);
  }

 private:
  void Draw(std::uint32_t percent) {
    char numbers[64];
    const double left = m_pace.GetSecondsLeft();
    std::snprintf(numbers, sizeof(numbers), " %3u %%  %6.1f fps  %s left", percent,
                  m_pace.GetFramesPerSecond(), left < 0.0 ? "--:--" : ClockText(left).c_str());
    const int room = platform::TerminalWidth(platform::Stream::Error) - static_cast<int>(sizeof("[]")) - 36;
    const int width = std::clamp(room, 0, 60);
    const int filled = static_cast<int>(percent) * width / 100;
    const std::string bar = width < 4 ? ""
                                      : "[" + std::string(static_cast<std::size_t>(filled), '#') +
                                            std::string(static_cast<std::size_t>(width - filled), '.') + "]";
    std::fprintf(stderr, "\r%s%s\033[K", bar.c_str(), numbers);
    std::fflush(stderr);
  }
  static void Clear() {
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
  }
};

class JsonProgress : public RenderProgress {
 public:
  void OnStart(const RenderSummary& summary) override {
    m_pace.Start(summary.frames);
    m_output = summary.outputPath;
    Print({{"event", "start"},
           {"output", summary.outputPath},
           {"frames", summary.frames},
           {"seconds", summary.movieSeconds}});
  }
  void OnPercent(std::uint32_t percent) override {
    m_pace.Update(percent);
    nlohmann::ordered_json line{
        {"event", "progress"}, {"percent", percent}, {"fps", m_pace.GetFramesPerSecond()}};
    if (const double left = m_pace.GetSecondsLeft(); left >= 0.0) line["secondsLeft"] = left;
    Print(line);
  }
  void OnEnd() override { Print({{"event", "end"}, {"output", m_output}, {"elapsed", m_pace.GetElapsed()}}); }
  void OnCancelled() override { Print({{"event", "cancelled"}, {"output", m_output}}); }
  void OnError(std::uint32_t code, const std::string& cause) override {
    Print({{"event", "error"}, {"code", code}, {"cause", cause}});
  }

 private:
  static void Print(const nlohmann::ordered_json& line) {
    // File names may hold bytes that are no text; JSON may not.
    const auto replace = nlohmann::ordered_json::error_handler_t::replace;
    std::puts(line.dump(-1, ' ', false, replace).c_str());
    std::fflush(stdout);
  }

  RenderPace m_pace;
  std::string m_output;
};

}  // namespace

std::unique_ptr<RenderProgress> RenderProgress::Make(ProgressStyle style, bool quiet) {
  if (style == ProgressStyle::Auto) {
    const bool terminal = platform::IsTerminal(platform::Stream::Error);
    style = terminal ? ProgressStyle::Bar : ProgressStyle::None;
  }
  if (style == ProgressStyle::Json) return std::make_unique<JsonProgress>();
  if (style == ProgressStyle::Bar && !quiet) return std::make_unique<BarProgress>();
  return std::make_unique<SilentProgress>(quiet);
}

}  // namespace vrx::host
