#include "engine/AudioCopier.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/intreadwrite.h>
#include <libavutil/mem.h>
}

#include <algorithm>
#include <cstring>
#include <utility>

#include "engine/AudioClipReader.h"
#include "engine/EngineLog.h"

namespace vrx::engine {
namespace {

constexpr int kAacPacket = 1024;  // samples, ISO/IEC 14496-3
constexpr int kAc3Packet = 1536;  // ETSI TS 102 366
// Samples that the usual encoders begin with, and MP4 files leave out.
constexpr int kAacPrimed = 1024;
constexpr int kAc3Primed = 256;

AVCodecID IdOf(AudioCodec codec) { return codec == AudioCodec::Aac ? AV_CODEC_ID_AAC : AV_CODEC_ID_AC3; }

/// Also 5.1 with the rear channels at the sides, as AC-3 names them: they are the same two channels.
bool HasLayoutOf(int channels, const AVChannelLayout& layout) {
  if (layout.nb_channels != channels) return false;
  if (channels == 1 || layout.order == AV_CHANNEL_ORDER_UNSPEC) return true;
  const AVChannelLayout side = AV_CHANNEL_LAYOUT_5POINT1;
  AVChannelLayout usual{};
  av_channel_layout_default(&usual, channels);
  return av_channel_layout_compare(&layout, &usual) == 0 || av_channel_layout_compare(&layout, &side) == 0;
}

/// What must not change from packet to packet: of an ADTS header all up to the channels, of an AC-3 header
/// the rate, the version and the channels. Other packets have nothing of the kind.
std::uint64_t FormatOf(AVCodecID codec, const AVPacket& packet) {
  constexpr int kHeader = 7;
  if (packet.size < kHeader) return 0;
  const std::uint8_t* data = packet.data;
  if (codec == AV_CODEC_ID_AAC) return AV_RB16(data) >> 4 == 0xFFF ? AV_RB32(data) & 0xFFFFFFF0U : 0;
  const unsigned mode = data[6] >> 5;
  int bits = 3;  // before the mark of the low frequency channel
  if ((mode & 1) != 0 && mode != 1) bits += 2;
  if ((mode & 4) != 0) bits += 2;
  if (mode == 2) bits += 2;
  const unsigned low = data[6] >> (7 - bits) & 1U;
  return std::uint64_t{data[4]} >> 6 << 16 | std::uint64_t{data[5]} >> 3 << 8 | mode << 1 | low;
}

/// Whether the file says that samples which the movie needs are not heard. `place` is that of the packet.
bool LeavesOut(const AVPacket& packet, std::int64_t place, int length, std::int64_t first, std::int64_t end) {
  if ((packet.flags & AV_PKT_FLAG_DISCARD) != 0) return true;
  constexpr std::size_t kSkipBytes = 10;
  std::size_t size = 0;
  const std::uint8_t* skip = av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &size);
  if (skip == nullptr || size < kSkipBytes) return false;
  const std::int64_t heard = place + AV_RL32(skip);
  const std::int64_t heardEnd = place + length - AV_RL32(skip + 4);
  return heard > std::max(first, place) || heardEnd < std::min(end, place + length);
}

}  // namespace

Result AudioCopier::Open(const SoundRun& run, std::int64_t samples, const AudioPlan& plan,
                         Container container, const StopSignal& stop, std::unique_ptr<AudioCopier>& copier,
                         std::string& reason) {
  copier.reset();
  if (IsPcm(plan.codec)) {
    reason = "uncompressed sound is always written new";
    return kOk;
  }
  std::unique_ptr<AudioCopier> opened(new AudioCopier(stop));
  VRX_TRY(opened->OpenSource(run.path));
  reason = opened->CheckFormat(plan);
  if (!reason.empty()) return kOk;
  const std::int64_t first = SamplesOf(run.start, run.scale, plan.sampleRate);
  if (first > AudioDecoder::kMaxSeconds * plan.sampleRate) {
    reason = "the sound ends before the picture";
    return kOk;
  }
  opened->m_samples = samples;
  reason = opened->FindPackets(first + run.skipped, first + run.skipped + samples, container);
  if (!reason.empty()) return kOk;
  VRX_TRY(opened->OpenSource(run.path));
  copier = std::move(opened);
  return kOk;
}

/// Opened again for each pass: not every format finds its first packet again.
Result AudioCopier::OpenSource(const std::string& path) {
  m_read = 0;
  m_source.reset();
  VRX_TRY(AudioDecoder::Open(path, m_stop, m_source));
  if (m_parameters) return kOk;
  m_packet.reset(av_packet_alloc());
  m_parameters.reset(avcodec_parameters_alloc());
  if (!m_packet || !m_parameters) return kOutOfMemory;
  if (!m_source->HasSound()) return kOk;
  return avcodec_parameters_copy(m_parameters.get(), &m_source->GetParameters()) < 0 ? kOutOfMemory : kOk;
}

std::string AudioCopier::CheckFormat(const AudioPlan& plan) const {
  if (!m_source->HasSound()) return "the source has no sound";
  const AVCodecParameters& found = *m_parameters;
  const std::string name = std::string("the source's sound is ") + avcodec_get_name(found.codec_id);
  if (found.codec_id != IdOf(plan.codec)) return name;
  if (plan.codec == AudioCodec::Aac && found.profile != FF_PROFILE_AAC_LOW) {
    const char* profile = avcodec_profile_name(found.codec_id, found.profile);
    return name + " (" + (profile == nullptr ? "unknown profile" : profile) + ")";
  }
  if (found.sample_rate != plan.sampleRate) {
    return "the source's sound has " + std::to_string(found.sample_rate) + " Hz";
  }
  if (HasLayoutOf(plan.channels, found.ch_layout)) return {};
  return "it is mixed to " + std::to_string(plan.channels) + (plan.channels == 1 ? " channel" : " channels");
}

std::string AudioCopier::FindPackets(std::int64_t first, std::int64_t end, Container container) {
  const AVCodecID codec = m_parameters->codec_id;
  m_packetSamples = codec == AV_CODEC_ID_AAC ? kAacPacket : kAc3Packet;
  m_parameters->codec_tag = 0;  // of the source's container
  m_parameters->frame_size = m_packetSamples;
  const bool wantsHeaders = codec == AV_CODEC_ID_AAC && container != Container::MpegTs;
  std::uint64_t format = 0;
  std::string fault;
  do {
    const AVPacket* packet = NextInGrid(fault);
    if (packet == nullptr && IsNearEnough(first, end)) break;
    if (packet == nullptr) return fault;
    const std::int64_t number = m_read - 1;
    if (number == 0) fault = ChooseFirst(first, container);
    if (number == m_firstPacket) {
      format = FormatOf(codec, *packet);
      if (fault.empty() && wantsHeaders && m_parameters->extradata_size == 0) fault = ReadHeaders(*packet);
    }
    if (!fault.empty()) return fault;
    if (number < m_firstPacket) continue;
    if (FormatOf(codec, *packet) != format ||
        av_packet_get_side_data(packet, AV_PKT_DATA_NEW_EXTRADATA, nullptr) != nullptr)
      return "the source's sound changes its format";
    const std::int64_t place = PlaceOf(number);
    if (place + m_packetSamples > first && LeavesOut(*packet, place, m_packetSamples, first, end))
      return "the source's file leaves out some of its sound";
  } while (PlaceOf(m_read) < end);
  m_packets = m_read - m_firstPacket;
  m_samples = std::min(m_samples, PlaceOf(m_read) - first);
  return {};
}

/// Whether the source has ended, and close to where the movie does.
bool AudioCopier::IsNearEnough(std::int64_t first, std::int64_t end) const {
  const std::int64_t place = PlaceOf(m_read);
  return m_ended && m_read > 0 && place > first && place >= end - LargestShortfall(m_parameters->sample_rate);
}

/// Decoders need the packet before the first that is heard.
std::string AudioCopier::ChooseFirst(std::int64_t first, Container container) {
  if (first < m_grid) return "the sound begins after the picture";
  const std::int64_t heard = (first - m_grid) / m_packetSamples;
  m_firstPacket = std::max<std::int64_t>(heard - 1, 0);
  m_firstTime = PlaceOf(m_firstPacket) - first;
  if (container != Container::MpegTs) return {};
  // All that is in the packets is heard there. What encoders begin with before the first sample is silent.
  const int primed = m_parameters->codec_id == AV_CODEC_ID_AAC ? kAacPrimed : kAc3Primed;
  if (first == m_grid || (first == m_grid + primed && first == m_source->GetFirstPlace())) return {};
  return "a transport stream cannot begin within the source's sound";
}

/// MP4 files keep beside the stream what a transport stream says in every packet.
std::string AudioCopier::ReadHeaders(const AVPacket& packet) {
  const std::string fault = "the source's sound has headers that are not usable";
  AVBSFContext* filter = nullptr;
  const AVBitStreamFilter* kind = av_bsf_get_by_name("aac_adtstoasc");
  if (kind == nullptr || av_bsf_alloc(kind, &filter) < 0) return fault;
  m_filter.reset(filter);
  if (avcodec_parameters_copy(filter->par_in, m_parameters.get()) < 0) return fault;
  if (av_bsf_init(filter) < 0 || !Take(packet)) return fault;
  std::size_t size = 0;
  const std::uint8_t* headers = av_packet_get_side_data(m_packet.get(), AV_PKT_DATA_NEW_EXTRADATA, &size);
  if (headers == nullptr || size == 0) return fault;
  auto* copy = static_cast<std::uint8_t*>(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE));
  if (copy == nullptr) return fault;
  std::memcpy(copy, headers, size);
  m_parameters->extradata = copy;
  m_parameters->extradata_size = static_cast<int>(size);
  return {};
}

/// Null with a `fault` where a packet is missing, damaged, or does not begin where the one before it ends.
const AVPacket* AudioCopier::NextInGrid(std::string& fault) {
  std::int64_t place = 0;
  const AVPacket* packet = m_source->NextPacket(place);
  if (m_source->TakeDamage()) {
    fault = "the source's sound is damaged";
    return nullptr;
  }
  m_ended = packet == nullptr;
  if (m_ended) {
    fault = "the sound ends before the picture";
    return nullptr;
  }
  const bool known = place != AudioDecoder::kNoPlace;
  if (m_read == 0) m_grid = known ? place : m_source->GetFirstPlace();
  if (known && std::abs(place - PlaceOf(m_read)) > m_source->GetJitter()) {
    fault = "the source's sound has gaps";
    return nullptr;
  }
  ++m_read;
  return packet;
}

/// Puts the packet's content into m_packet, without headers of its own where the movie has them elsewhere.
bool AudioCopier::Take(const AVPacket& packet) {
  av_packet_unref(m_packet.get());
  if (av_packet_ref(m_packet.get(), &packet) < 0) return false;
  if (!m_filter) return true;
  return av_bsf_send_packet(m_filter.get(), m_packet.get()) >= 0 &&
         av_bsf_receive_packet(m_filter.get(), m_packet.get()) >= 0;
}

std::int64_t AudioCopier::GetSamples() const {
  return std::clamp<std::int64_t>(m_firstTime + m_written * m_packetSamples, 0, m_samples);
}

Result AudioCopier::CopyUpTo(std::int64_t samples, MovieWriter& writer, int stream) {
  std::string fault;
  for (std::int64_t time = m_firstTime + m_written * m_packetSamples; m_written < m_packets && time < samples;
       time += m_packetSamples) {
    const AVPacket* packet = nullptr;
    do {
      packet = NextInGrid(fault);
    } while (packet != nullptr && m_read <= m_firstPacket);
    if (m_stop.IsSet()) return kOk;  // that ends reads too
    if (packet == nullptr || !Take(*packet)) {
      Log(VRXLogError, m_source->GetPath() + " has other sound than when it was opened");
      return kSourceUnreadable;
    }
    av_packet_free_side_data(m_packet.get());
    m_packet->flags = AV_PKT_FLAG_KEY;
    m_packet->pts = m_packet->dts = time;
    m_packet->duration = std::min<std::int64_t>(m_packetSamples, m_samples - time);
    VRX_TRY(writer.Write(*m_packet, stream, GetTimeBase()));
    ++m_written;
  }
  return kOk;
}

}  // namespace vrx::engine
