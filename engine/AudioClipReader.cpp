#include "engine/AudioClipReader.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "engine/EngineLog.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/mathematics.h>
#include <libswresample/swresample.h>
}

namespace vrx::engine {
namespace {

constexpr int kBlock = 1024;    // samples given to the resampler at a time
constexpr int kMinLeadIn = 64;  // input before a clip's start; longer than the resampler's filter looks back

std::vector<float*> MakePlanes(std::vector<std::vector<float>>& memory, int channels) {
  memory.assign(static_cast<std::size_t>(channels), std::vector<float>(kBlock));
  std::vector<float*> planes;
  for (std::vector<float>& plane : memory) planes.push_back(plane.data());
  return planes;
}

}  // namespace

std::int64_t SamplesOf(std::int64_t ticks, std::uint64_t scale, int rate) {
  if (scale > INT64_MAX) {
    scale /= 2;
    ticks /= 2;
  }
  const std::int64_t samples =
      av_rescale_rnd(ticks, rate, static_cast<std::int64_t>(scale), AV_ROUND_NEAR_INF);
  return samples < 0 ? INT64_MAX : samples;  // libav says INT64_MIN when it does not fit
}

AudioClipReader::AudioClipReader(AudioFormat format, const StopSignal& stop)
    : m_format(format), m_stop(stop) {
  m_inputPlanes = MakePlanes(m_input, format.channels);
  m_leadingPlanes = MakePlanes(m_leading, format.channels);
}

AudioClipReader::~AudioClipReader() { swr_free(&m_resampler); }

Result AudioClipReader::Start(const std::string& path, std::int64_t start, std::uint64_t scale) {
  if (m_source == nullptr || m_source->GetPath() != path) {
    m_source.reset();
    VRX_TRY(AudioSource::Open(path, m_format.channels, m_stop, m_source));
  }
  if (!m_source->HasSound()) return kOk;
  const std::int64_t place = SamplesOf(start, scale, m_source->GetRate());
  if (m_source->GetRate() == m_format.sampleRate) {
    swr_free(&m_resampler);
    m_source->Seek(place);
    return kOk;
  }
  const Result result = OpenResampler();
  if (result == kOk) SeekResampled(place);
  return result;
}

Result AudioClipReader::OpenResampler() {
  int code = 0;
  if (m_resampler == nullptr || m_resamplerRate != m_source->GetRate()) {
    AVChannelLayout layout{};
    av_channel_layout_default(&layout, m_format.channels);
    swr_free(&m_resampler);
    code = swr_alloc_set_opts2(&m_resampler, &layout, AV_SAMPLE_FMT_FLTP, m_format.sampleRate, &layout,
                               AV_SAMPLE_FMT_FLTP, m_source->GetRate(), 0, nullptr);
    av_channel_layout_uninit(&layout);
  }
  if (code >= 0) code = swr_init(m_resampler);  // also drops what an earlier clip left in it
  if (code < 0) {
    swr_free(&m_resampler);
    Log(VRXLogError, "cannot resample \"" + m_source->GetPath() + "\": " + AvErrorText(code));
    return code == AVERROR(ENOMEM) ? kOutOfMemory : kFailed;
  }
  m_resamplerRate = m_source->GetRate();
  return kOk;
}

// Starts some samples before the clip, since the filter looks back. Their number is whole at both rates, so
// that the clip's first sample is exactly a sample of the output.
void AudioClipReader::SeekResampled(std::int64_t place) {
  const int common = std::gcd(m_resamplerRate, m_format.sampleRate);
  const int inStep = m_resamplerRate / common;
  const int outStep = m_format.sampleRate / common;
  const int steps = (kMinLeadIn + inStep - 1) / inStep;
  m_source->Seek(place > INT64_MAX / 2 ? place : place - std::int64_t{steps} * inStep);
  for (std::int64_t left = std::int64_t{steps} * outStep; left > 0;) {
    const int count = static_cast<int>(std::min<std::int64_t>(left, kBlock));
    if (Resample(m_leadingPlanes.data(), count) != kOk) return;
    left -= count;
  }
}

Result AudioClipReader::Resample(float* const* planes, int count) {
  std::array<const std::uint8_t*, kMaxChannels> in{};
  std::transform(m_inputPlanes.begin(), m_inputPlanes.end(), in.begin(),
                 [](const float* plane) { return reinterpret_cast<const std::uint8_t*>(plane); });
  std::array<std::uint8_t*, kMaxChannels> out{};
  int input = 0;  // 0 at first, to take what the resampler still holds
  for (int done = 0; done < count;) {
    for (std::size_t c = 0; c < m_inputPlanes.size(); ++c)
      out[c] = reinterpret_cast<std::uint8_t*>(planes[c] + done);
    const int made = swr_convert(m_resampler, out.data(), count - done, in.data(), input);
    if (made < 0) {
      Log(VRXLogError, "cannot resample \"" + m_source->GetPath() + "\": " + AvErrorText(made));
      return kFailed;
    }
    done += made;
    if (done == count) break;
    m_source->Read(m_inputPlanes.data(), kBlock);
    input = kBlock;
  }
  return kOk;
}

Result AudioClipReader::Read(float* const* planes, int count) {
  if (m_source == nullptr || !m_source->HasSound()) {
    for (int c = 0; c < m_format.channels; ++c) std::fill_n(planes[c], count, 0.0F);
    return kOk;
  }
  if (m_resampler != nullptr) return Resample(planes, count);
  m_source->Read(planes, count);
  return kOk;
}

}  // namespace vrx::engine
