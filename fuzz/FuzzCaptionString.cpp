// Reads any bytes as captions, checks them and paints the first of them at several moments.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "drawing/BoxTextRenderer.h"
#include "overlay/caption/KVSCaptionPainterPlugIn.h"
#include "src/check/CaptionTextCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  PainterInfo info;
  info.captionInfo.captionString =
      XpNarrowString(std::string_view(reinterpret_cast<const char*>(data), size)).ToWide();
  std::vector<vrx::check::Problem> problems;
  vrx::check::CheckCaptionText({.text = info.captionInfo.captionString, .line = 1}, problems);
  static vrx::drawing::BoxTextRenderer boxes;
  static KVSCaptionPainterPlugIn painter(boxes);
  painter.SetPainterInfo(&info, &info.captionInfo);
  PixmapHolder holder(new XpPixmap32);
  if (holder->Allocate(64, 48) != XpOk) return 0;
  for (const std::int64_t ms : {0, 1000}) painter.DrawForVideo(0, 0, 0, ms, holder);
  return 0;
}
