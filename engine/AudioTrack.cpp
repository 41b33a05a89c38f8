#include "engine/AudioTrack.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>

#include "engine/AudioClipReader.h"
#include "engine/AudioSource.h"
#include "engine/EngineLog.h"
#include "engine/ExactTime.h"

extern "C" {
#include <libavutil/mathematics.h>
}

namespace vrx::engine {
namespace {

constexpr int kPassedBlock = 1024;  // samples
constexpr std::int64_t kMicroseconds = 1'000'000;

bool IsWhole(const AudioClip& clip) { return clip.end <= clip.start; }

/// Adds up lengths in any units without losing the fractions of samples between the clips.
class SampleSum {
 public:
  SampleSum(int rate, std::int64_t limit) : m_rate(rate), m_limit(limit) {}

  void Add(std::int64_t ticks, std::uint64_t scale) {
    if (scale > INT64_MAX) {
      scale /= 2;
      ticks /= 2;
    }
    const auto signedScale = static_cast<std::int64_t>(scale);
    const std::int64_t whole = av_rescale_rnd(ticks, m_rate, signedScale, AV_ROUND_DOWN);
    if (whole < 0 || whole > m_limit - m_whole) {  // negative when it does not fit
      m_whole = m_limit;
      return;
    }
    m_whole += whole;
    // The products may overflow, but their difference is below `scale` and so comes out right.
    const std::uint64_t rest = static_cast<std::uint64_t>(ticks) * static_cast<std::uint64_t>(m_rate) -
                               static_cast<std::uint64_t>(whole) * scale;
    m_part += static_cast<long double>(rest) / static_cast<long double>(scale);
    if (m_part >= 1) {
      m_part -= 1;
      m_whole = std::min(m_whole + 1, m_limit);
    }
  }

  std::int64_t Rounded() const {
    constexpr long double kHalf = 0.5L - 1e-9L;  // sums of thirds and sixths may be a little below a half
    return m_part >= kHalf ? std::min(m_whole + 1, m_limit) : m_whole;
  }

 private:
  const std::int64_t m_rate;
  const std::int64_t m_limit;
  std::int64_t m_whole = 0;
  long double m_part = 0;  // below 1
};

/// What Open learns about a file.
struct SoundLength {
  bool measured = false;
  std::int64_t length = 0;  // of the whole source, in units of 1 / scale seconds
  std::uint64_t scale = 1;
};

class ClipSequence : public AudioTrack {
 public:
  ClipSequence(std::vector<AudioClip> clips, AudioFormat format, std::int64_t first, std::int64_t end,
               const StopSignal& stop)
      : m_clips(std::move(clips)), m_format(format), m_first(first), m_end(end), m_stop(stop) {}

  Result Prepare();
  Result Read(float* const* planes, int count, int& got) override;
  std::optional<SoundRun> FindSingleRun(std::string& reason) const override;

 private:
  Result CheckArguments() const;
  Result CheckSource(const AudioClip& clip, SoundLength& known, bool first) const;
  bool Continues(std::size_t index) const;
  void Jump();
  Result Pass();
  Result Fill(float* const* planes, int count);
  Result Play(float* const* planes, int count, int& played);

  std::vector<AudioClip> m_clips;
  const AudioFormat m_format;
  const std::int64_t m_first;
  const std::int64_t m_end;
  const StopSignal& m_stop;
  std::vector<std::int64_t> m_ends;  // of the clips, in samples of the movie
  std::size_t m_current = 0;
  bool m_started = false;  // m_reader is in the current clip
  std::int64_t m_position = 0;
  std::optional<AudioClipReader> m_reader;  // set by Prepare
};

Result ClipSequence::CheckArguments() const {
  const bool channels = m_format.channels == 1 || m_format.channels == 2 || m_format.channels == 6;
  if (!channels || m_format.sampleRate <= 0 || m_format.sampleRate > AudioDecoder::kMaxRate) {
    Log(VRXLogError, "no sound with " + std::to_string(m_format.channels) + " channels at " +
                         std::to_string(m_format.sampleRate) + " Hz");
    return kUnusableSettings;
  }
  if (m_first < 0 || m_end < m_first) return kInvalidArgument;
  for (std::size_t i = 0; i < m_clips.size(); ++i) {
    if (m_clips[i].scale != 0) continue;
    const ClipLogScope scope(VRXAudioTrack, i);
    Log(VRXLogError, "the times of the clip of \"" + m_clips[i].path + "\" have a scale of 0");
    return kInvalidArgument;
  }
  return kOk;
}

Result ClipSequence::Prepare() {
  VRX_TRY(CheckArguments());
  std::map<std::string, SoundLength> lengths;
  SampleSum sum(m_format.sampleRate, m_end);
  m_ends.reserve(m_clips.size());
  for (std::size_t i = 0; i < m_clips.size(); ++i) {
    const ClipLogScope scope(VRXAudioTrack, i);
    AudioClip& clip = m_clips[i];
    clip.start = std::max<std::int64_t>(clip.start, 0);
    const auto [source, first] = lengths.try_emplace(clip.path);
    SoundLength& known = source->second;
    VRX_TRY(CheckSource(clip, known, first));
    if (IsWhole(clip)) {
      clip.start = 0;
      sum.Add(known.length, known.scale);
    } else {
      sum.Add(clip.end - clip.start, clip.scale);
    }
    m_ends.push_back(sum.Rounded());
  }
  m_reader.emplace(m_format, m_stop);
  Jump();
  return kOk;
}

// A file is opened for its first clip, and again when a later clip needs its length.
Result ClipSequence::CheckSource(const AudioClip& clip, SoundLength& known, bool first) const {
  const bool measure = IsWhole(clip) && !known.measured;
  if (!first && !measure) return kOk;
  std::unique_ptr<AudioSource> source;
  VRX_TRY(AudioSource::Open(clip.path, m_format.channels, m_stop, source));
  if (!source->HasSound()) {
    if (first)
      Log(VRXLogWarning, "\"" + clip.path + "\" has no sound; its place on the audio track is silent");
    known = {true, source->GetFileMicroseconds(), kMicroseconds};
  } else if (measure) {
    known = {true, source->MeasureEnd(), static_cast<std::uint64_t>(source->GetRate())};
  }
  return kOk;
}

// Whether a clip begins where the one before it ends; then the reader goes on without a seek.
bool ClipSequence::Continues(std::size_t index) const {
  if (index == 0) return false;
  const AudioClip& before = m_clips[index - 1];
  const AudioClip& clip = m_clips[index];
  return !IsWhole(before) && !IsWhole(clip) && before.path == clip.path &&
         Int128{before.end} * clip.scale == Int128{clip.start} * before.scale;
}

/// Goes to the beginning of the clip that has the first sample, or of the first of those that the reader
/// plays in one go with it: from there it makes the same samples as after all the clips before.
void ClipSequence::Jump() {
  while (m_current < m_clips.size() && m_ends[m_current] <= m_first) ++m_current;
  if (m_current == m_clips.size()) {
    m_position = m_first;
    return;
  }
  while (Continues(m_current)) --m_current;
  if (m_current != 0) m_position = m_ends[m_current - 1];
}

std::optional<SoundRun> ClipSequence::FindSingleRun(std::string& reason) const {
  if (m_current == m_clips.size() || m_ends.back() < m_end - LargestShortfall(m_format.sampleRate)) {
    reason = m_clips.empty() ? "there is no sound" : "the sound ends before the picture";
    return std::nullopt;
  }
  for (std::size_t last = m_current; m_ends[last] < m_end && last + 1 < m_clips.size(); ++last) {
    if (Continues(last + 1)) continue;
    reason = "the sound has cuts";
    return std::nullopt;
  }
  const AudioClip& clip = m_clips[m_current];
  return SoundRun{.path = clip.path,
                  .start = clip.start,
                  .scale = clip.scale,
                  .skipped = m_first - m_position,
                  .clip = m_current};
}

/// Plays what lies before the first sample, without keeping it.
Result ClipSequence::Pass() {
  if (m_position >= m_first) return kOk;
  std::array<std::array<float, kPassedBlock>, kMaxChannels> unheard;
  std::array<float*, kMaxChannels> planes{};
  std::transform(unheard.begin(), unheard.end(), planes.begin(), [](auto& plane) { return plane.data(); });
  while (m_position < m_first && !m_stop.IsSet()) {
    VRX_TRY(
        Fill(planes.data(), static_cast<int>(std::min<std::int64_t>(m_first - m_position, kPassedBlock))));
  }
  m_position = std::max(m_position, m_first);
  return kOk;
}

Result ClipSequence::Play(float* const* planes, int count, int& played) {
  while (m_current < m_clips.size() && m_position >= m_ends[m_current]) {
    ++m_current;
    m_started = m_started && m_current < m_clips.size() && Continues(m_current);
  }
  if (m_current == m_clips.size()) {
    for (int c = 0; c < m_format.channels; ++c) std::fill_n(planes[c], count, 0.0F);
    played = count;
    return kOk;
  }
  const ClipLogScope scope(VRXAudioTrack, m_current);
  if (!m_started) {
    const AudioClip& clip = m_clips[m_current];
    const Result result = m_reader->Start(clip.path, clip.start, clip.scale);
    if (result != kOk && !m_stop.IsSet()) return result;
    m_started = true;
  }
  played = static_cast<int>(std::min<std::int64_t>(count, m_ends[m_current] - m_position));
  return m_reader->Read(planes, played);
}

Result ClipSequence::Read(float* const* planes, int count, int& got) {
  got = 0;
  if (planes == nullptr || count < 0) return kInvalidArgument;
  VRX_TRY(Pass());
  count = static_cast<int>(std::min<std::int64_t>(count, m_end - m_position));
  VRX_TRY(Fill(planes, count));
  got = count;
  return kOk;
}

Result ClipSequence::Fill(float* const* planes, int count) {
  for (int done = 0; done < count;) {
    std::array<float*, kMaxChannels> out{};
    for (int c = 0; c < m_format.channels; ++c) out[static_cast<std::size_t>(c)] = planes[c] + done;
    int played = 0;
    VRX_TRY(Play(out.data(), count - done, played));
    done += played;
    m_position += played;
  }
  return kOk;
}

}  // namespace

Result AudioTrack::Open(std::vector<AudioClip> clips, AudioFormat format, std::int64_t first,
                        std::int64_t end, const StopSignal& stop, std::unique_ptr<AudioTrack>& track) {
  track.reset();
  auto sequence = std::make_unique<ClipSequence>(std::move(clips), format, first, end, stop);
  const Result result = sequence->Prepare();
  if (result == kOk) track = std::move(sequence);
  return result;
}

}  // namespace vrx::engine
