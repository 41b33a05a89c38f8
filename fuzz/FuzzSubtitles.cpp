// Reads any bytes as subtitles; what was read must keep what the header promises, and read back when it is
// written as SubRip.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "content/subtitles/Subtitles.h"

namespace {

using namespace vrx::subtitles;

std::string TimeText(std::int64_t ms) {
  char text[64];
  std::snprintf(text, sizeof text, "%lld:%02lld:%02lld,%03lld", static_cast<long long>(ms / 3'600'000),
                static_cast<long long>(ms / 60'000 % 60), static_cast<long long>(ms / 1000 % 60),
                static_cast<long long>(ms % 1000));
  return text;
}

/// Text that markup, counters and times could be made of does not read back as it is.
bool IsPlain(const std::string& text) {
  return text.find_first_of("<{&") == std::string::npos && text.find("->") == std::string::npos &&
         text.find_first_not_of("0123456789\n") != std::string::npos;
}

void Check(const Subtitles& subtitles) {
  std::int64_t last = 0;
  for (const Cue& cue : subtitles.cues) {
    if (cue.startMs < last || cue.endMs <= cue.startMs || cue.line == 0) std::abort();
    last = cue.startMs;
    if (cue.text.empty() || cue.text.front() == '\n' || cue.text.back() == '\n') std::abort();
    if (std::ranges::any_of(cue.text, [](char c) { return c != '\n' && c >= '\0' && c < ' '; })) std::abort();
    if (!IsPlain(cue.text) || cue.endMs >= 3'600'000'000) continue;
    const std::string written =
        "1\n" + TimeText(cue.startMs) + " --> " + TimeText(cue.endMs) + "\n" + cue.text + "\n";
    Subtitles again;
    std::string cause;
    if (ReadSubtitles(written, again, cause) != XpOk || again.cues.size() != 1) std::abort();
    const Cue& same = again.cues.front();
    if (same.startMs != cue.startMs || same.endMs != cue.endMs || same.text != cue.text) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Subtitles subtitles;
  std::string cause;
  const XpResult result = ReadSubtitles({reinterpret_cast<const char*>(data), size}, subtitles, cause);
  if ((result == XpOk) != cause.empty() || (result == XpOk) == subtitles.cues.empty()) std::abort();
  if (subtitles.notes.size() > kMostNotes) std::abort();
  Check(subtitles);
  return 0;
}
