// Reads any bytes as speed segments, checks them and runs the clocks and a caption along them.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "overlay/callback/TimeGenerators.h"
#include "src/check/PainterTextCheck.h"
#include "src/overlayplan/CaptionTimes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<SlowInfoRecord> records;
  const XpString text = XpNarrowString(std::string_view(reinterpret_cast<const char*>(data), size)).ToWide();
  ParseSlowInfoData(text, records);
  std::vector<vrx::check::Problem> problems;
  vrx::check::CheckSlowInfoText({.text = text, .line = 1}, problems);
  VRXGPSTimeGenerate gps;
  VRXTennisMetaTimeGenerate tennis;
  gps.Reset(records);
  tennis.Reset(records);
  std::int32_t videoId = 0;
  for (std::uint64_t frame = 0; frame < 100; frame += 7) {
    gps.Generate(frame, videoId, {1, 10}, {0.5, 8});
    tennis.Generate(frame, {1, 10}, {0.5, 8});
  }
  CaptionItem caption;
  caption.startMs = 1000;
  caption.endMs = 5000;
  vrx::overlayplan::ApplySpeedSections(records, caption);
  return 0;
}
