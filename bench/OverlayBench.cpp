// What an overlay costs a full-HD frame: handed through the callback while its caption stays, when the
// caption changes, and the blend alone.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <vector>

#include "drawing/pango/PangoTextRenderer.h"
#include "foundation/text/XpFormat.h"
#include "overlay/callback/BlendOverlay.h"
#include "overlay/callback/VRXIntermediateRawOutputCallback.h"
#include "overlay/caption/KVSCaptionPainterPlugIn.h"
#include "overlay/painter/IKVSDynamicInfoPainter.h"
#include "src/overlayplan/PainterTable.h"

namespace {

constexpr std::int32_t kWidth = 1920;
constexpr std::int32_t kHeight = 1080;
constexpr std::int32_t kCaptions = 1000;
constexpr std::int32_t kFrameMs = 40;

struct Release {
  void operator()(IKVSDynamicInfoPainter* painters) const { painters->Release(); }
};

/// A movie of captions that each last `framesEach` frames.
class CaptionedMovie {
 public:
  explicit CaptionedMovie(std::int32_t framesEach) {
    std::vector<CaptionItem> captions;
    for (std::int32_t i = 0; i < kCaptions; ++i) {
      XpString text;
      XpFormat(text, u"Third day: from the pass down\nto the lake, 1,240 m of descent\nin hour %d", i);
      const std::int32_t start = i * framesEach * kFrameMs;
      constexpr std::int32_t kBottomCentre = 8, kWhite = 0xFFFFFF;
      captions.push_back(
          {text, u"DejaVu Sans", 64.0, kWhite, kBottomCentre, start, start + framesEach * kFrameMs - 1, 0});
    }
    m_info.saveMovieMode = true;
    m_info.captionInfo.valid = true;
    m_info.templateInfo.width = kWidth;
    m_info.templateInfo.height = kHeight;
    IKVSDynamicInfoPainter* painters = nullptr;
    if (!CreateDynamicInfoPainter(&painters, vrx::overlayplan::GetPainterKinds(), {&m_text})) return;
    m_painters.reset(painters);
    painters->SetPainterInfo(&m_info);
    auto* painter = dynamic_cast<KVSCaptionPainterPlugIn*>(painters->FindPainterByType(KVSPainterCaption));
    if (painter != nullptr) painter->SetCaptionItems(captions);
    m_callback = std::make_unique<VRXIntermediateRawOutputCallback>(
        OverlayContext{.width = kWidth,
                       .height = kHeight,
                       .frameLength = {1, 25},
                       .info = &m_info,
                       .painters = painters,
                       .kinds = vrx::overlayplan::GetPainterKinds()});
  }
  bool Process(std::uint64_t frame) {
    return m_callback->ProcessFrame(frame, m_buffer.data(), static_cast<std::uint32_t>(m_buffer.size()),
                                    VRXIntermediateRawOutputCallback::kStage,
                                    VRXIntermediateRawOutputCallback::kFormat);
  }

 private:
  vrx::drawing::PangoTextRenderer m_text;
  PainterInfo m_info;
  std::unique_ptr<IKVSDynamicInfoPainter, Release> m_painters;
  std::unique_ptr<VRXIntermediateRawOutputCallback> m_callback;
  std::vector<unsigned char> m_buffer = std::vector<unsigned char>(std::size_t{kWidth} * kHeight * 4, 90);
};

void ProcessFrames(benchmark::State& state) {
  const auto framesEach = static_cast<std::int32_t>(state.range(0));
  CaptionedMovie movie(framesEach);
  const std::uint64_t frames = std::uint64_t{kCaptions} * static_cast<std::uint64_t>(framesEach);
  std::uint64_t frame = 0;
  for (auto _ : state) {
    if (!movie.Process(frame)) state.SkipWithError("the frame was refused");
    frame = (frame + 1) % frames;
  }
}
// A new caption on every frame, and one that stays for four seconds.
BENCHMARK(ProcessFrames)->Arg(1)->Arg(100)->Unit(benchmark::kMicrosecond);

void Blend(benchmark::State& state) {
  const auto drawnRows = static_cast<std::int32_t>(state.range(0));
  constexpr unsigned char kHalf = 128;
  XpPixmap32 overlay;
  if (overlay.Allocate(kWidth, kHeight) != XpOk) return;
  std::memset(overlay.data, kHalf, std::size_t{kWidth} * 4 * static_cast<std::size_t>(drawnRows));
  vrx::overlay::DrawnArea area;
  area.Find(overlay);
  std::vector<unsigned char> buffer(overlay.size, 90);
  for (auto _ : state) {
    vrx::overlay::BlendOverlay(overlay, area, buffer.data(), static_cast<std::uint32_t>(buffer.size()));
  }
}
// Nothing drawn, a band of 240 rows half transparent, and the whole picture.
BENCHMARK(Blend)->Arg(0)->Arg(240)->Arg(kHeight)->Unit(benchmark::kMicrosecond);

}  // namespace
