#include "engine/JoinedStream.h"

extern "C" {
#include <libavutil/mem.h>
}

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "engine/CopyConditions.h"
#include "engine/EngineLog.h"
#include "engine/PictureColour.h"

namespace vrx::engine {
namespace {

/// Of an H.264 level: bits per second, and bits of the decoder's buffer (ITU-T H.264 table A-1, with the
/// factor of the main profile, which holds for all above).
struct LevelLimit {
  int level;  // level_idc
  std::int64_t bitrate;
  std::int64_t buffer;
};
constexpr std::int64_t kKilo = 1000;
// Below level 3 there are only tiny pictures, whose encoded spans may say level 3.
constexpr std::array<LevelLimit, 11> kLevels{{{30, 10'000 * kKilo, 10'000 * kKilo},
                                              {31, 14'000 * kKilo, 14'000 * kKilo},
                                              {32, 20'000 * kKilo, 20'000 * kKilo},
                                              {40, 20'000 * kKilo, 25'000 * kKilo},
                                              {42, 50'000 * kKilo, 62'500 * kKilo},
                                              {50, 135'000 * kKilo, 135'000 * kKilo},
                                              {52, 240'000 * kKilo, 240'000 * kKilo},
                                              {60, 240'000 * kKilo, 240'000 * kKilo},
                                              {61, 480'000 * kKilo, 480'000 * kKilo},
                                              {62, 800'000 * kKilo, 800'000 * kKilo},
                                              {255, 800'000 * kKilo, 800'000 * kKilo}}};

/// A copied span may leave the decoder's buffer half empty, so an encoded one gets by with half of it.
void LimitToLevel(int level, VideoPlan& video) {
  const auto* limit =
      std::find_if(kLevels.begin(), kLevels.end(), [&](const LevelLimit& one) { return one.level >= level; });
  video.peakBitrate = std::max(limit->bitrate, video.bitrate);
  video.bufferBits = limit->buffer / 2;
}

bool MergeSources(const SmartPlan& plan, ParameterSets& sets) {
  return std::all_of(plan.sources.begin(), plan.sources.end(),
                     [&](const CopiedSource& source) { return sets.Merge(source.sets); });
}

}  // namespace

bool JoinedStream::HasUnits() const { return m_codec == AV_CODEC_ID_H264 || m_codec == AV_CODEC_ID_HEVC; }

int JoinedStream::FitEncoder(const SmartPlan& plan, VideoPlan& video) {
  if (CodecIdOf(video.codec) != AV_CODEC_ID_H264) return 0;
  if (plan.sources.empty() && plan.movieSets.empty()) return 0;
  std::vector<ParameterSets> all = plan.movieSets;
  for (const CopiedSource& source : plan.sources) all.push_back(source.sets);
  video.parameterSetId = std::max(ParameterSets::FindFreeId(all), 0);
  int level = 0;
  for (const ParameterSets& sets : all) level = std::max(level, sets.GetLevel());
  LimitToLevel(level, video);
  return level;
}

void JoinedStream::Prepare(Container container, const SmartPlan& plan, const VideoPlan& video, int level) {
  m_plan = &plan;
  m_container = container;
  m_codec = CodecIdOf(video.codec);
  m_video = video;
  m_level = level;
}

Result JoinedStream::Arrange(const AVCodecContext* encoder) {
  m_parameters.reset(avcodec_parameters_alloc(),
                     [](AVCodecParameters* one) { avcodec_parameters_free(&one); });
  if (!m_parameters) return kOutOfMemory;
  const CopiedSource& first = m_plan->sources.front();
  const int error = encoder == nullptr ? avcodec_parameters_copy(m_parameters.get(), first.parameters.get())
                                       : avcodec_parameters_from_context(m_parameters.get(), encoder);
  if (error < 0) return kOutOfMemory;
  m_parameters->bit_rate = 0;
  m_parameters->codec_tag = 0;
  NameColour();
  if (!HasUnits()) return kOk;
  if (encoder != nullptr) {
    NalLength length = kStartCodes;
    if (!m_encodedSets.ReadHeader(*m_parameters, length)) m_encodedSets = {};
  }
  ParameterSets all;
  m_setsInside = !MergeSources(*m_plan, all) || !all.Merge(m_encodedSets) ||
                 m_container == Container::MpegTs ||
                 std::ranges::any_of(m_plan->sources, &CopiedSource::setsChange);
  if (m_setsInside) all = MostDemanding();
  const bool isFile = m_container != Container::MpegTs;
  // The muxer makes HEVC's header and lengths itself, out of start codes.
  m_nalLength = isFile && m_codec == AV_CODEC_ID_H264 ? kLongLength : kStartCodes;
  const std::vector<std::uint8_t> header = isFile ? all.MakeHeader(m_level) : all.Join(kStartCodes);
  if (header.empty()) {
    Log(VRXLogError, "the copied pictures have more parameter sets than a movie file can hold");
    return kUnusableSettings;
  }
  auto* extradata = static_cast<std::uint8_t*>(av_mallocz(header.size() + AV_INPUT_BUFFER_PADDING_SIZE));
  if (extradata == nullptr) return kOutOfMemory;
  std::copy(header.begin(), header.end(), extradata);
  av_freep(&m_parameters->extradata);
  m_parameters->extradata = extradata;
  m_parameters->extradata_size = static_cast<int>(header.size());
  if (isFile) SetTag();
  return kOk;
}

/// A source without tags has the colours that the movie's height implies, or it would not be copied.
void JoinedStream::NameColour() {
  const PictureColour colour = OutputColour(m_video.height);
  m_parameters->color_space = colour.matrix;
  m_parameters->color_primaries = colour.primaries;
  m_parameters->color_trc = colour.transfer;
  m_parameters->color_range = AVCOL_RANGE_MPEG;
  m_parameters->chroma_location = AVCHROMA_LOC_LEFT;
}

/// A header beside sets that come with the pictures says what decoder they need.
ParameterSets JoinedStream::MostDemanding() const {
  ParameterSets most = m_encodedSets.IsEmpty() ? m_plan->sources.front().sets : m_encodedSets;
  for (const CopiedSource& source : m_plan->sources) {
    if (source.sets.GetDemand() > most.GetDemand()) most = source.sets;
  }
  return most;
}

void JoinedStream::SetTag() {
  if (m_codec == AV_CODEC_ID_HEVC)
    m_parameters->codec_tag = m_setsInside ? MKTAG('h', 'e', 'v', '1') : MKTAG('h', 'v', 'c', '1');
  else
    m_parameters->codec_tag = m_setsInside ? MKTAG('a', 'v', 'c', '3') : MKTAG('a', 'v', 'c', '1');
}

Result JoinedStream::Pack(AVPacket& packet, NalLength length, const ParameterSets& sets) {
  if (!HasUnits()) return kOk;
  const bool isKey = (packet.flags & AV_PKT_FLAG_KEY) != 0;
  const bool needsSets = isKey && m_setsInside;
  if (length == m_nalLength && !needsSets) return kOk;
  m_units.clear();
  if (!SplitNalUnits({packet.data, static_cast<std::size_t>(packet.size)}, length, m_units)) {
    Log(VRXLogError, "a picture that is to be copied is damaged");
    return kSourceUnreadable;
  }
  const bool bringsSets = std::any_of(m_units.begin(), m_units.end(), [&](Bytes unit) {
    return IsParameterSet(TypeOfNal(unit, m_codec), m_codec);
  });
  if (length == m_nalLength && bringsSets) return kOk;
  m_bytes.clear();
  if (needsSets && !bringsSets) m_bytes = sets.Join(m_nalLength);
  for (const Bytes unit : m_units) AppendNalUnit(unit, m_nalLength, m_bytes);
  return Replace(packet);
}

/// Puts m_bytes in the place of the packet's content.
Result JoinedStream::Replace(AVPacket& packet) const {
  AVBufferRef* buffer = av_buffer_alloc(m_bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE);
  if (buffer == nullptr) return kOutOfMemory;
  std::copy(m_bytes.begin(), m_bytes.end(), buffer->data);
  std::memset(buffer->data + m_bytes.size(), 0, AV_INPUT_BUFFER_PADDING_SIZE);
  av_buffer_unref(&packet.buf);
  packet.buf = buffer;
  packet.data = buffer->data;
  packet.size = static_cast<int>(m_bytes.size());
  return kOk;
}

}  // namespace vrx::engine
