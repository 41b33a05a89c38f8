#include "host/RenderProgress.h"

#include <algorithm>
#include <cstdio>

#include "foundation/platform/Terminal.h"
#include "host/Console.h"
#include "host/ProblemText.h"
#include "host/SpanReport.h"

namespace vrx::host {
namespace {

/// The last line of a render for people, on stdout.
void PrintDone(const RenderPlan& plan, const RenderResult& result, double elapsed) {
  const std::string path = Masked(plan.outputPath);
  if (plan.pieces > 0) {
    std::printf("%s: %lld frames of %zu pieces, joined in %.1f s\n", path.c_str(),
                static_cast<long long>(result.frames), plan.pieces, elapsed);
    return;
  }
  if (result.frames == 0) {
    std::printf("%s: %.3f s of sound, rendered in %.1f s\n", path.c_str(), result.seconds, elapsed);
    return;
  }
  const double rate = elapsed > 0.0 ? static_cast<double>(result.frames) / elapsed : 0.0;
  const std::string copied = result.copiedFrames == 0
                                 ? std::string()
                                 : ", " + std::to_string(result.copiedFrames) + " copied (" +
                                       ShareText(result.copiedFrames, result.frames) + ")";
  std::printf("%s: %lld frames, %.3f s of movie%s, rendered in %.1f s (%.1f fps)\n", path.c_str(),
              static_cast<long long>(result.frames), result.seconds, copied.c_str(), elapsed, rate);
}

class SilentProgress : public RenderProgress {
 public:
  explicit SilentProgress(bool quiet) : m_quiet(quiet) {}
  void OnStart(const RenderPlan& plan) override {
    m_plan = plan;
    m_pace.Start(plan.frames);
  }
  void OnSpans(const EngineSpans&) override {}
  void OnPercent(std::uint32_t) override {}
  void OnMessage(const std::string& line) override { Say(line); }
  void OnEnd(const RenderResult& result) override {
    if (!m_quiet) PrintDone(m_plan, result, m_pace.GetElapsed());
  }
  void OnCancelled() override {
    if (m_quiet) return;
    Say(m_plan.outputPath.empty() ? "cancelled" : "cancelled; " + m_plan.outputPath + " was not written");
  }
  void OnError(std::uint32_t code, const check::Problem& cause) override {
    Say(std::string(m_plan.pieces > 0 ? "join" : "render") + " failed (" + CodeText(code) +
        "): " + ProblemText(cause));
  }

 protected:
  bool m_quiet;
  RenderPlan m_plan;
  RenderPace m_pace;
};

class BarProgress : public SilentProgress {
 public:
  BarProgress() : SilentProgress(false) {}
  void OnStart(const RenderPlan& plan) override {
    SilentProgress::OnStart(plan);
    Draw(0);
  }
  void OnPercent(std::uint32_t percent) override {
    m_pace.Update(percent);
    Draw(percent);
  }
  void OnMessage(const std::string& line) override {
    Clear();
    SilentProgress::OnMessage(line);
  }
  void OnEnd(const RenderResult& result) override {
    Clear();
    SilentProgress::OnEnd(result);
  }
  void OnCancelled() override {
    Clear();
    SilentProgress::OnCancelled();
  }
  void OnError(std::uint32_t code, const check::Problem& cause) override {
    Clear();
    SilentProgress::OnError(code, cause);
  }

 private:
  void Draw(std::uint32_t percent) {
    char numbers[64], rate[32] = "";
    const double left = m_pace.GetSecondsLeft();
    if (m_plan.frames > 0) std::snprintf(rate, sizeof(rate), "  %6.1f fps", m_pace.GetFramesPerSecond());
    std::snprintf(numbers, sizeof(numbers), " %3u %%%s  %s left", percent, rate,
                  left < 0.0 ? "--:--" : ClockText(left).c_str());
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
  void OnStart(const RenderPlan& plan) override {
    m_pace.Start(plan.frames);
    m_output = plan.outputPath;
    m_isJoin = plan.pieces > 0;
    Json line{{"event", "start"}, {"output", m_output}};
    if (m_isJoin) {
      line["pieces"] = plan.pieces;
    } else {
      line["frames"] = plan.frames;
      line["seconds"] = plan.seconds;
    }
    Print(line);
  }
  void OnSpans(const EngineSpans& spans) override {
    Json line{{"event", "spans"}};
    AddSpans(spans, line);
    Print(line);
  }
  void OnPercent(std::uint32_t percent) override {
    m_pace.Update(percent);
    Json line{{"event", "progress"}, {"percent", percent}};
    if (!m_isJoin) line["fps"] = m_pace.GetFramesPerSecond();
    if (const double left = m_pace.GetSecondsLeft(); left >= 0.0) line["secondsLeft"] = left;
    Print(line);
  }
  void OnMessage(const std::string& line) override { Say(line); }
  void OnEnd(const RenderResult& result) override {
    Json line{{"event", "end"}, {"output", m_output}, {"frames", result.frames}};
    if (!m_isJoin) line["seconds"] = result.seconds;
    line["bytes"] = result.bytes == 0 ? Json() : Json(result.bytes);
    line["copiedFrames"] = result.copiedFrames;
    line["elapsed"] = m_pace.GetElapsed();
    line["problems"] = Json::array();
    for (const check::Problem& problem : result.problems) line["problems"].push_back(ProblemJson(problem));
    Print(line);
  }
  void OnCancelled() override { Print({{"event", "cancelled"}, {"output", m_output}}); }
  void OnError(std::uint32_t code, const check::Problem& cause) override {
    Json line{{"event", "error"}, {"code", CodeText(code)}, {"cause", Utf8(cause.message)}};
    const Json problem = ProblemJson(cause);
    for (const auto& [name, value] : problem.items()) {
      if (name != "severity" && name != "message") line[name] = value;
    }
    Print(line);
  }

 private:
  static void Print(const Json& line) {
    PrintJson(line, -1);
    std::fflush(stdout);
  }

  RenderPace m_pace;
  std::string m_output;
  bool m_isJoin = false;
};

}  // namespace

std::unique_ptr<RenderProgress> RenderProgress::Make(ProgressStyle style, bool quiet) {
  if (style == ProgressStyle::Auto) {
    const bool terminal = platform::IsTerminal(platform::Stream::Error);
    style = terminal ? ProgressStyle::Bar : ProgressStyle::None;
  }
  if (style == ProgressStyle::JsonLines) return std::make_unique<JsonProgress>();
  if (style == ProgressStyle::Bar && !quiet) return std::make_unique<BarProgress>();
  return std::make_unique<SilentProgress>(quiet);
}

}  // namespace vrx::host
