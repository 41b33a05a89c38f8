#include "tests/support/MovieReader.h"

#include <cmath>
#include <cstdlib>

#include "samples/clipmaker/ClickTrack.h"
#include "samples/clipmaker/FramePattern.h"

namespace vrx::test_support {
namespace {

constexpr int kLargestJump = 100;  // parts of a second

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
  int code = 0;
  while ((code = avcodec_receive_frame(&decoder, &frame)) == AVERROR(EAGAIN)) {
    av_packet_unref(&packet);
    const int read = av_read_frame(&demuxer, &packet);
    if (read != AVERROR_EOF) Check(read, "reading");
    if (read == AVERROR_EOF || packet.stream_index == stream) {
      Check(avcodec_send_packet(&decoder, read == AVERROR_EOF ? nullptr : &packet), "decoding");
    }
  }
  return code != AVERROR_EOF && Check(code, "decoding") >= 0;
}

}  // namespace

std::vector<std::int64_t> MovieSound::Clicks() const {
  std::vector<std::int64_t> clicks = FindClicks(samples, rate);
  for (std::int64_t& click : clicks) click += start;
  return clicks;
}

MovieReader::MovieReader(const std::string& path)
    : m_path(path), m_demuxer(OpenDemuxer(path)), m_packet(NewPacket()), m_frame(NewFrame()) {
  m_info.container = m_demuxer->iformat->name;
  if (m_demuxer->start_time != AV_NOPTS_VALUE) {
    m_info.startSeconds = static_cast<double>(m_demuxer->start_time) / AV_TIME_BASE;
  }
  m_video = Check(av_find_best_stream(m_demuxer.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0), path);
  const AVStream& stream = *m_demuxer->streams[m_video];
  m_info.videoCodec = avcodec_get_name(stream.codecpar->codec_id);
  m_info.frameRate = stream.avg_frame_rate;
  m_info.matrix = stream.codecpar->color_space;
  m_info.range = stream.codecpar->color_range;
  m_decoder = OpenDecoder(stream);
  m_audio = av_find_best_stream(m_demuxer.get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
  if (m_audio >= 0) {
    m_info.audioCodec = avcodec_get_name(m_demuxer->streams[m_audio]->codecpar->codec_id);
  }
}

const AVFrame* MovieReader::NextDecodedFrame() {
  return NextDecoded(*m_demuxer, *m_decoder, m_video, *m_packet, *m_frame) ? m_frame.get() : nullptr;
}

bool MovieReader::NextFrame(MovieFrame& frame) {
  if (NextDecodedFrame() == nullptr) return false;
  Convert(frame.image);
  const AVRational timeBase = m_demuxer->streams[m_video]->time_base;
  frame.seconds =
      static_cast<double>(m_frame->best_effort_timestamp) * av_q2d(timeBase) - m_info.startSeconds;
  frame.interlaced = m_frame->interlaced_frame != 0;
  frame.isKey = m_frame->key_frame != 0;
  return true;
}

void MovieReader::Convert(RgbImage& image) {
  const int width = m_frame->width, height = m_frame->height;
  m_scaler.reset(CheckPointer(
      sws_getCachedContext(m_scaler.release(), width, height, static_cast<AVPixelFormat>(m_frame->format),
                           width, height, AV_PIX_FMT_RGB24,
                           SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr),
      "colour conversion"));
  image.Resize(width, height);
  std::uint8_t* rows[] = {image.Row(0), nullptr, nullptr, nullptr};
  const int strides[] = {3 * width, 0, 0, 0};
  sws_scale(m_scaler.get(), m_frame->data, m_frame->linesize, 0, height, rows, strides);
}

std::vector<int> MovieReader::RemainingNumbers() {
  std::vector<int> numbers;
  MovieFrame frame;
  while (NextFrame(frame)) {
    const PatternReading reading = ReadPattern(frame.image);
    numbers.push_back(reading.valid && reading.rotation == 0 && !reading.mirrored ? reading.number : -1);
  }
  return numbers;
}

MovieSound MovieReader::ReadSound() const {
  Check(m_audio, m_path + ": no sound");
  const DemuxerPtr demuxer = OpenDemuxer(m_path);
  const AVStream& stream = *demuxer->streams[m_audio];
  const CodecPtr decoder = OpenDecoder(stream);
  const PacketPtr packet = NewPacket();
  const FramePtr frame = NewFrame();
  AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
  SwrContext* made = nullptr;
  Check(swr_alloc_set_opts2(&made, &mono, AV_SAMPLE_FMT_FLT, decoder->sample_rate, &decoder->ch_layout,
                            decoder->sample_fmt, decoder->sample_rate, 0, nullptr),
        "sound conversion");
  const ConverterPtr converter(made);
  Check(swr_init(made), "sound conversion");
  MovieSound sound;
  sound.rate = decoder->sample_rate;
  while (NextDecoded(*demuxer, *decoder, m_audio, *packet, *frame)) {
    const std::size_t before = sound.samples.size();
    const double seconds = static_cast<double>(frame->best_effort_timestamp) * av_q2d(stream.time_base);
    const std::int64_t place = std::llround((seconds - m_info.startSeconds) * sound.rate);
    if (before == 0) sound.start = place;
    if (std::abs(place - sound.start - static_cast<std::int64_t>(before)) > sound.rate / kLargestJump) {
      throw std::runtime_error(m_path + ": the sound's times run away from its samples");
    }
    sound.samples.resize(before + static_cast<std::size_t>(frame->nb_samples));
    auto* out = reinterpret_cast<std::uint8_t*>(sound.samples.data() + before);
    Check(swr_convert(made, &out, frame->nb_samples, const_cast<const std::uint8_t**>(frame->extended_data),
                      frame->nb_samples),
          "sound conversion");
  }
  return sound;
}

}  // namespace vrx::test_support
