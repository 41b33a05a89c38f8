#include "tests/support/MovieReader.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "samples/clipmaker/ClickTrack.h"
#include "samples/clipmaker/FramePattern.h"

extern "C" {
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

namespace vrx::test_support {
namespace {

constexpr int kLargestSdHeight = 576;  // unmarked pictures up to here have the matrix of BT.601 by custom
constexpr int kFullTurn = 360;

DemuxerPtr OpenDemuxer(const std::string& path) {
  AVFormatContext* demuxer = nullptr;
  Check(avformat_open_input(&demuxer, ("file:" + path).c_str(), nullptr, nullptr), path);
  DemuxerPtr owner(demuxer);
  Check(avformat_find_stream_info(demuxer, nullptr), path);
  return owner;
}

CodecPtr OpenDecoder(const AVStream& stream) {
  const AVCodec* codec = CheckPointer(avcodec_find_decoder(stream.codecpar->codec_id), "decoder");
  CodecPtr decoder(CheckPointer(avcodec_alloc_context3(codec), "decoder"));
  Check(avcodec_parameters_to_context(decoder.get(), stream.codecpar), "decoder parameters");
  decoder->pkt_timebase = stream.time_base;
  decoder->err_recognition = AV_EF_EXPLODE;
  Check(avcodec_open2(decoder.get(), codec, nullptr), "decoder");
  return decoder;
}

// False behind the last frame.
bool NextDecoded(AVFormatContext& demuxer, AVCodecContext& decoder, int stream, AVPacket& packet,
                 AVFrame& frame) {
  for (;;) {
    const int code = avcodec_receive_frame(&decoder, &frame);
    if (code == AVERROR_EOF) return false;
    if (code != AVERROR(EAGAIN)) {
      Check(code, "decoding");
      return true;
    }
    av_packet_unref(&packet);
    const int read = av_read_frame(&demuxer, &packet);
    if (read == AVERROR_EOF) {
      Check(avcodec_send_packet(&decoder, nullptr), "decoding");
    } else {
      Check(read, "reading");
      if (packet.stream_index == stream) Check(avcodec_send_packet(&decoder, &packet), "decoding");
    }
  }
}

double StartSeconds(const AVFormatContext& demuxer) {
  return demuxer.start_time == AV_NOPTS_VALUE ? 0 : static_cast<double>(demuxer.start_time) / AV_TIME_BASE;
}

int RotationOf(const AVStream& stream) {
  const std::uint8_t* data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
  if (data == nullptr) return 0;
  const double counterClockwise = av_display_rotation_get(reinterpret_cast<const std::int32_t*>(data));
  return (kFullTurn - static_cast<int>(std::lround(counterClockwise))) % kFullTurn;
}

// The formats that say their range in their name are old spellings; the frame says its range too.
AVPixelFormat PlainFormat(int format) {
  switch (format) {
    case AV_PIX_FMT_YUVJ420P:
      return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P:
      return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P:
      return AV_PIX_FMT_YUV444P;
    default:
      return static_cast<AVPixelFormat>(format);
  }
}

int MatrixOf(const AVFrame& frame) {
  switch (frame.colorspace) {
    case AVCOL_SPC_BT709:
      return SWS_CS_ITU709;
    case AVCOL_SPC_SMPTE170M:
    case AVCOL_SPC_BT470BG:
      return SWS_CS_ITU601;
    default:
      return frame.height > kLargestSdHeight ? SWS_CS_ITU709 : SWS_CS_ITU601;
  }
}

}  // namespace

std::vector<float> MovieSound::Mono() const {
  if (channels.empty()) return {};
  std::vector<float> mono(channels.front().size());
  for (const std::vector<float>& channel : channels) {
    for (std::size_t i = 0; i < mono.size(); ++i) mono[i] += channel[i] / static_cast<float>(channels.size());
  }
  return mono;
}

std::vector<std::int64_t> MovieSound::Clicks() const {
  std::vector<std::int64_t> clicks = FindClicks(Mono(), rate);
  for (std::int64_t& click : clicks) click += start;
  return clicks;
}

MovieReader::MovieReader(const std::string& path)
    : m_path(path), m_demuxer(OpenDemuxer(path)), m_packet(NewPacket()), m_frame(NewFrame()) {
  m_video = av_find_best_stream(m_demuxer.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  m_audio = av_find_best_stream(m_demuxer.get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
  FillInfo();
  if (m_info.hasVideo) m_decoder = OpenDecoder(*m_demuxer->streams[m_video]);
}

void MovieReader::FillInfo() {
  m_info.container = m_demuxer->iformat->name;
  m_info.startSeconds = StartSeconds(*m_demuxer);
  if (m_demuxer->duration != AV_NOPTS_VALUE) {
    m_info.durationSeconds = static_cast<double>(m_demuxer->duration) / AV_TIME_BASE;
  }
  if (m_video >= 0) {
    AVStream* stream = m_demuxer->streams[m_video];
    const AVCodecParameters& parameters = *stream->codecpar;
    m_info.hasVideo = true;
    m_info.videoCodec = avcodec_get_name(parameters.codec_id);
    m_info.width = parameters.width;
    m_info.height = parameters.height;
    m_info.frameRate = stream->avg_frame_rate;
    m_info.sampleAspect = av_guess_sample_aspect_ratio(m_demuxer.get(), stream, nullptr);
    m_info.rotation = RotationOf(*stream);
    m_info.matrix = parameters.color_space;
    m_info.range = parameters.color_range;
    m_info.videoBitRate = parameters.bit_rate;
  }
  if (m_audio >= 0) {
    const AVCodecParameters& parameters = *m_demuxer->streams[m_audio]->codecpar;
    m_info.hasAudio = true;
    m_info.audioCodec = avcodec_get_name(parameters.codec_id);
    m_info.sampleRate = parameters.sample_rate;
    m_info.channels = parameters.ch_layout.nb_channels;
  }
}

bool MovieReader::NextFrame(MovieFrame& frame) {
  if (!m_info.hasVideo) throw std::runtime_error(m_path + ": no picture");
  if (!NextDecoded(*m_demuxer, *m_decoder, m_video, *m_packet, *m_frame)) return false;
  Convert(frame);
  const AVRational timeBase = m_demuxer->streams[m_video]->time_base;
  frame.seconds =
      static_cast<double>(m_frame->best_effort_timestamp) * av_q2d(timeBase) - m_info.startSeconds;
  frame.keyFrame = m_frame->key_frame != 0;
  frame.interlaced = m_frame->interlaced_frame != 0;
  return true;
}

void MovieReader::Convert(MovieFrame& frame) {
  const int width = m_frame->width;
  const int height = m_frame->height;
  const AVPixelFormat format = PlainFormat(m_frame->format);
  m_scaler.reset(CheckPointer(
      sws_getCachedContext(m_scaler.release(), width, height, format, width, height, AV_PIX_FMT_RGB24,
                           SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr),
      "colour conversion"));
  const int* matrix = sws_getCoefficients(MatrixOf(*m_frame));
  const bool rgb = (av_pix_fmt_desc_get(format)->flags & AV_PIX_FMT_FLAG_RGB) != 0;
  const int fullRange = rgb || m_frame->color_range == AVCOL_RANGE_JPEG ? 1 : 0;
  constexpr int kNeutral = 1 << 16;  // contrast and saturation in 16.16
  // Refused for conversions that have no matrix, and then not needed.
  if (sws_setColorspaceDetails(m_scaler.get(), matrix, fullRange, matrix, 1, 0, kNeutral, kNeutral) < 0 &&
      !rgb) {
    throw std::runtime_error(m_path + ": colour conversion");
  }
  frame.image.Resize(width, height);
  std::uint8_t* rows[] = {frame.image.Row(0), nullptr, nullptr, nullptr};
  const int strides[] = {3 * width, 0, 0, 0};
  sws_scale(m_scaler.get(), m_frame->data, m_frame->linesize, 0, height, rows, strides);
}

std::vector<int> MovieReader::RemainingNumbers() {
  std::vector<int> numbers;
  MovieFrame frame;
  while (NextFrame(frame)) {
    const PatternReading reading = ReadPattern(frame.image);
    numbers.push_back(reading.valid ? reading.number : -1);
  }
  return numbers;
}

MovieSound MovieReader::ReadSound() const {
  if (!m_info.hasAudio) throw std::runtime_error(m_path + ": no sound");
  const DemuxerPtr demuxer = OpenDemuxer(m_path);
  const AVStream& stream = *demuxer->streams[m_audio];
  const CodecPtr decoder = OpenDecoder(stream);
  const PacketPtr packet = NewPacket();
  const FramePtr decoded = NewFrame();
  ConverterPtr converter;
  MovieSound sound;
  while (NextDecoded(*demuxer, *decoder, m_audio, *packet, *decoded)) {
    AVFrame& frame = *decoded;
    if (!converter) {
      SwrContext* made = nullptr;
      Check(swr_alloc_set_opts2(&made, &frame.ch_layout, AV_SAMPLE_FMT_FLTP, frame.sample_rate,
                                &frame.ch_layout, static_cast<AVSampleFormat>(frame.format),
                                frame.sample_rate, 0, nullptr),
            "sound conversion");
      converter.reset(made);
      Check(swr_init(made), "sound conversion");
      sound.rate = frame.sample_rate;
      sound.channels.resize(static_cast<std::size_t>(frame.ch_layout.nb_channels));
    }
    if (frame.sample_rate != sound.rate ||
        frame.ch_layout.nb_channels != static_cast<int>(sound.channels.size())) {
      throw std::runtime_error(m_path + ": the sound changes its format");
    }
    const double seconds = static_cast<double>(frame.best_effort_timestamp) * av_q2d(stream.time_base);
    const std::int64_t position = std::llround((seconds - m_info.startSeconds) * sound.rate);
    const std::size_t before = sound.channels.front().size();
    if (before == 0) sound.start = position;
    const std::int64_t jump = std::abs(position - sound.start - static_cast<std::int64_t>(before));
    sound.largestJump = std::max(sound.largestJump, jump);
    std::vector<std::uint8_t*> planes;
    for (std::vector<float>& channel : sound.channels) {
      channel.resize(before + static_cast<std::size_t>(frame.nb_samples));
      planes.push_back(reinterpret_cast<std::uint8_t*>(channel.data() + before));
    }
    Check(swr_convert(converter.get(), planes.data(), frame.nb_samples,
                      const_cast<const std::uint8_t**>(frame.extended_data), frame.nb_samples),
          "sound conversion");
  }
  return sound;
}

}  // namespace vrx::test_support
