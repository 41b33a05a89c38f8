#include "engine/AudioSource.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "engine/EngineLog.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

namespace vrx::engine {
namespace {

constexpr int kMaxOutputs = 8;
constexpr int kLeadPerSecond = 2;    // decoding starts half a second early: codecs need some frames to settle
constexpr int kFarLeadSeconds = 10;  // and this much when the index led to a later place
constexpr int kTailSeconds = 2;      // read at a file's end to find its last sample
constexpr float kLoudest = 8;        // usual sources stay within 1; a few reach 2 or 3 on purpose

}  // namespace

AudioSource::AudioSource(std::unique_ptr<AudioDecoder> decoder, int channels)
    : m_decoder(std::move(decoder)),
      m_channels(channels),
      m_block(static_cast<std::size_t>(channels)),
      m_inLayout(std::make_unique<AVChannelLayout>()) {}

AudioSource::~AudioSource() {
  av_channel_layout_uninit(m_inLayout.get());
  swr_free(&m_converter);
}

Result AudioSource::Open(const std::string& path, int channels, const StopSignal& stop,
                         std::unique_ptr<AudioSource>& source) {
  if (channels < 1 || channels > kMaxOutputs) return kInvalidArgument;
  std::unique_ptr<AudioDecoder> decoder;
  const Result result = AudioDecoder::Open(path, stop, decoder);
  if (result == kOk) source.reset(new AudioSource(std::move(decoder), channels));
  return result;
}

std::int64_t AudioSource::DecodedEnd() {
  const std::int64_t stated = av_rescale(m_decoder->GetFileMicroseconds(), GetRate(), AV_TIME_BASE);
  const std::int64_t tail = stated - std::int64_t{kTailSeconds} * GetRate();
  std::int64_t end = 0;
  if (m_decoder->HasExactTimes() && tail > 0) {
    SeekDecoder(tail);
    while (FillBlock()) end = std::max(end, m_blockEnd);
    if (end > tail) return end;
  }
  // The sound ends long before the file does, or nothing in the file says when.
  m_joined = false;
  m_ended = !m_decoder->Rewind();
  while (FillBlock()) end = std::max(end, m_blockEnd);
  return end;
}

bool AudioSource::CanDecode() {
  m_warned = true;
  m_joined = false;
  m_ended = !m_decoder->Rewind();
  return FillBlock();
}

std::int64_t AudioSource::MeasureEnd() {
  m_warned = true;  // damage is reported when the clip is played
  const std::int64_t end = DecodedEnd();
  const std::int64_t edited = HasSound() ? m_decoder->GetEditedEnd() : AudioDecoder::kNoPlace;
  return edited == AudioDecoder::kNoPlace ? end : std::clamp<std::int64_t>(edited, 0, end);
}

void AudioSource::Seek(std::int64_t place) {
  m_warned = false;
  const std::int64_t farthest = AudioDecoder::kMaxSeconds * GetRate();
  m_place = std::min(place, farthest);
  m_blockSize = 0;
  m_ended = true;
  if (!HasSound() || place >= farthest) return;
  const std::int64_t lead = GetRate() / kLeadPerSecond;
  if (place <= m_decoder->GetFirstPlace() + lead) {
    m_joined = false;
    m_ended = !m_decoder->Rewind();
    return;
  }
  // An index may lead to a later place. Then it is tried from further back, and at last from the start.
  for (const std::int64_t back : {lead, std::int64_t{kFarLeadSeconds} * GetRate()}) {
    if (SeekDecoder(place - back) && FillBlock() && m_blockPlace <= place) return;
  }
  m_joined = false;
  m_blockSize = 0;
  m_ended = !m_decoder->Rewind();
}

bool AudioSource::SeekDecoder(std::int64_t place) {
  m_joined = false;
  m_blockSize = 0;
  // Where timestamps are guesses after a seek, only reading from the start gives exact places.
  m_ended = !(m_decoder->HasExactTimes() ? m_decoder->Seek(place) : m_decoder->Rewind());
  return !m_ended;
}

void AudioSource::Read(float* const* planes, int count) {
  for (int done = 0; done < count;) {
    if (m_blockSize != 0 && m_blockEnd <= m_place) m_blockSize = 0;
    if (m_blockSize == 0 && !m_ended && FillBlock()) continue;
    int length = count - done;
    const bool silent = m_blockSize == 0 || m_blockPlace > m_place;
    if (m_blockSize != 0) {
      length =
          static_cast<int>(std::min<std::int64_t>(length, (silent ? m_blockPlace : m_blockEnd) - m_place));
    }
    for (int c = 0; c < m_channels; ++c) {
      float* out = planes[c] + done;
      if (silent) {
        std::fill_n(out, length, 0.0F);
      } else {
        std::copy_n(m_block[static_cast<std::size_t>(c)].data() + (m_place - m_blockPlace), length, out);
      }
    }
    m_place += length;
    done += length;
  }
}

bool AudioSource::FillBlock() {
  std::int64_t place = 0;
  while (const AVFrame* frame = m_decoder->Next(place)) {
    if (!Convert(*frame)) {
      Warn();
      continue;
    }
    if (m_blockSize == 0) continue;
    PlaceBlock(place);
    MakeFinite();
    // Damage before the part that is used is ignored.
    if (m_decoder->TakeDamage() && m_blockEnd > m_place) Warn();
    return true;
  }
  if (m_decoder->TakeDamage()) Warn();
  m_blockSize = 0;
  m_ended = true;
  return false;
}

void AudioSource::PlaceBlock(std::int64_t place) {
  const std::int64_t jitter = m_decoder->GetJitter();
  if (!m_joined) {
    m_blockPlace = place == AudioDecoder::kNoPlace ? m_decoder->GetFirstPlace() : FirstPlaceInGrid(place);
  } else if (place == AudioDecoder::kNoPlace || std::abs(place - m_blockEnd) <= jitter) {
    m_blockPlace = m_blockEnd;
  } else {
    if (place > m_blockEnd && place > m_place) Warn();
    m_blockPlace = place;
  }
  m_blockEnd = m_blockPlace + m_blockSize;
  m_joined = true;
}

// Where timestamps are coarser than samples, they are used only to find the number of the frame; its place is
// that many frame lengths after the first. So a cut begins at the same sample after a seek as in playing.
std::int64_t AudioSource::FirstPlaceInGrid(std::int64_t place) const {
  const int tick = m_decoder->GetTickSamples();
  if (tick <= 1) return place;
  const std::int64_t first = m_decoder->GetFirstPlace();
  const std::int64_t frames = av_rescale_rnd(place - first, 1, m_blockSize, AV_ROUND_NEAR_INF);
  const std::int64_t inGrid = first + frames * m_blockSize;
  return std::abs(inGrid - place) <= tick ? inGrid : place;
}

bool AudioSource::Convert(const AVFrame& frame) {
  m_blockSize = 0;
  if (frame.nb_samples <= 0) return true;
  if (m_converter == nullptr || frame.format != m_inFormat || frame.sample_rate != m_inRate ||
      av_channel_layout_compare(&frame.ch_layout, m_inLayout.get()) != 0) {
    if (!OpenConverter(frame)) return false;
  }
  const int room = swr_get_out_samples(m_converter, frame.nb_samples);
  if (room < 0) return false;
  std::array<std::uint8_t*, kMaxOutputs> out{};
  for (std::size_t c = 0; c < m_block.size(); ++c) {
    if (m_block[c].size() < static_cast<std::size_t>(room)) m_block[c].resize(static_cast<std::size_t>(room));
    out[c] = reinterpret_cast<std::uint8_t*>(m_block[c].data());
  }
  auto** in = const_cast<const std::uint8_t**>(frame.extended_data);
  const int made = swr_convert(m_converter, out.data(), room, in, frame.nb_samples);
  if (made < 0) return false;
  m_blockSize = made;
  return true;
}

// Broadcasts change their format within a file, so the converter is made for the format of the frame.
bool AudioSource::OpenConverter(const AVFrame& frame) {
  swr_free(&m_converter);
  AVChannelLayout in{};
  AVChannelLayout out{};
  if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC) {
    av_channel_layout_default(&in, frame.ch_layout.nb_channels);
  } else if (av_channel_layout_copy(&in, &frame.ch_layout) < 0) {
    return false;
  }
  av_channel_layout_default(&out, m_channels);
  int code = swr_alloc_set_opts2(&m_converter, &out, AV_SAMPLE_FMT_FLTP, GetRate(), &in,
                                 static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
  const bool spread = in.nb_channels == 1 && m_channels == 2;
  if (code >= 0 && (spread || in.order == AV_CHANNEL_ORDER_UNSPEC)) {
    // Mono goes to both channels at full level. Channels of unknown meaning are taken in their order.
    std::vector<double> matrix(static_cast<std::size_t>(in.nb_channels) * m_block.size());
    for (int c = 0; c < m_channels; ++c) {
      const int from = spread ? 0 : c;
      if (from < in.nb_channels) matrix[static_cast<std::size_t>(c * in.nb_channels + from)] = 1;
    }
    code = swr_set_matrix(m_converter, matrix.data(), in.nb_channels);
  } else if (code >= 0) {
    code = av_opt_set_double(m_converter, "rematrix_maxval", 1, 0);  // a sum of channels must not clip
  }
  if (code >= 0) code = swr_init(m_converter);
  av_channel_layout_uninit(&in);
  av_channel_layout_uninit(&out);
  if (code >= 0) code = av_channel_layout_copy(m_inLayout.get(), &frame.ch_layout);
  if (code < 0) {
    swr_free(&m_converter);
    return false;
  }
  m_inFormat = frame.format;
  m_inRate = frame.sample_rate;
  return true;
}

// Float files may hold infinities and NaN; one of them would silence a resampler or an encoder to the end.
void AudioSource::MakeFinite() {
  for (std::vector<float>& plane : m_block) {
    for (int i = 0; i < m_blockSize; ++i) {
      float& sample = plane[static_cast<std::size_t>(i)];
      sample = std::isfinite(sample) ? std::clamp(sample, -kLoudest, kLoudest) : 0.0F;
    }
  }
}

void AudioSource::Warn() {
  if (m_warned) return;
  m_warned = true;
  Log(VRXLogWarning, "sound is damaged or missing in \"" + GetPath() + "\" and is silent there");
}

}  // namespace vrx::engine
