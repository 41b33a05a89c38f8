#include "tests/engine/TinyMovie.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <stdexcept>

#include "engine/AvPointers.h"

#if defined(__SANITIZE_THREAD__)
// The codec libraries are not instrumented, so that their own atomics look like races.
extern "C" const char* __tsan_default_suppressions();
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions() {
  return "race:libavcodec.so\nrace:libavformat.so\nrace:libavutil.so\nrace:libswscale.so\nrace:libx264.so\n";
}
#endif

namespace vrx::engine::test {
namespace {

constexpr int kBits = 8;  // bars across the picture, the lowest bit first
constexpr int kDark = 40;
constexpr int kBright = 200;
constexpr int kMarker = 120;  // luma of the lower half, which black pictures do not have

void Check(int error, const char* what) {
  if (error < 0) throw std::runtime_error(what);
}

void Paint(AVFrame& frame, int number) {
  Check(av_frame_make_writable(&frame), "writable");
  for (int y = 0; y < frame.height; ++y) {
    for (int x = 0; x < frame.width; ++x) {
      const int bit = x * kBits / frame.width;
      const int luma = y >= frame.height / 2 ? kMarker : (number >> bit & 1) != 0 ? kBright : kDark;
      if (frame.format == AV_PIX_FMT_YUV420P10LE) {
        reinterpret_cast<std::uint16_t*>(frame.data[0] + y * frame.linesize[0])[x] =
            static_cast<std::uint16_t>(luma * 4);
      } else {
        frame.data[0][y * frame.linesize[0] + x] = static_cast<std::uint8_t>(luma);
      }
    }
  }
  for (int plane = 1; plane < 3; ++plane) {
    for (int y = 0; y < frame.height / 2; ++y) {
      for (int x = 0; x < frame.width / 2; ++x) {
        std::uint8_t* row = frame.data[plane] + y * frame.linesize[plane];
        if (frame.format == AV_PIX_FMT_YUV420P10LE) {
          reinterpret_cast<std::uint16_t*>(row)[x] = 512;
        } else {
          row[x] = 128;
        }
      }
    }
  }
}

int NumberOf(const AVFrame& frame) {
  const auto luma = [&](int x, int y) { return int{frame.data[0][y * frame.linesize[0] + x]}; };
  if (luma(frame.width / 2, frame.height * 3 / 4) < kDark) return -1;
  int number = 0;
  for (int bit = 0; bit < kBits; ++bit) {
    if (luma((2 * bit + 1) * frame.width / kBits / 2, frame.height / 4) > kMarker) number |= 1 << bit;
  }
  return number;
}

class Writer {
 public:
  explicit Writer(const TinyMovie& movie)
      : m_movie(movie), m_packet(av_packet_alloc()), m_frame(av_frame_alloc()) {
    Check(avformat_alloc_output_context2(&m_muxer, nullptr, movie.format, movie.path.c_str()), "muxer");
    const AVCodec* encoder = avcodec_find_encoder_by_name(movie.codec);
    if (encoder == nullptr) throw std::runtime_error("encoder");
    m_codec.reset(avcodec_alloc_context3(encoder));
    m_codec->width = movie.width;
    m_codec->height = movie.height;
    m_codec->pix_fmt =
        movie.pixelFormat == 0 ? AV_PIX_FMT_YUV420P : static_cast<AVPixelFormat>(movie.pixelFormat);
    m_codec->time_base = {1, movie.rate};
    m_codec->framerate = {movie.rate, 1};
    m_codec->gop_size = movie.group;
    m_codec->max_b_frames = movie.bFrames;
    m_codec->thread_count = 1;
    if ((m_muxer->oformat->flags & AVFMT_GLOBALHEADER) != 0) m_codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_opt_set(m_codec->priv_data, "preset", "veryfast", 0);
    av_set_options_string(m_codec->priv_data, movie.codecOptions, "=", ":");
    Check(avcodec_open2(m_codec.get(), encoder, nullptr), "open");
    m_stream = avformat_new_stream(m_muxer, nullptr);
    m_stream->time_base = m_codec->time_base;
    m_stream->avg_frame_rate = m_codec->framerate;
    Check(avcodec_parameters_from_context(m_stream->codecpar, m_codec.get()), "parameters");
    Check(avio_open(&m_muxer->pb, movie.path.c_str(), AVIO_FLAG_WRITE), "file");
    Check(avformat_write_header(m_muxer, nullptr), "header");
    m_frame->format = m_codec->pix_fmt;
    m_frame->width = movie.width;
    m_frame->height = movie.height;
    Check(av_frame_get_buffer(m_frame.get(), 0), "buffer");
  }
  ~Writer() {
    avio_closep(&m_muxer->pb);
    avformat_free_context(m_muxer);
  }

  void Run() {
    for (int i = 0; i < m_movie.frames; ++i) {
      Paint(*m_frame, i);
      m_frame->pts = m_movie.ticks.empty() ? i : m_movie.ticks[static_cast<std::size_t>(i)];
      Encode(m_frame.get());
    }
    Encode(nullptr);
    Check(av_write_trailer(m_muxer), "trailer");
  }

 private:
  void Encode(const AVFrame* frame) {
    Check(avcodec_send_frame(m_codec.get(), frame), "send");
    while (avcodec_receive_packet(m_codec.get(), m_packet.get()) >= 0) {
      if (m_packet->duration == 0) m_packet->duration = 1;
      av_packet_rescale_ts(m_packet.get(), m_codec->time_base, m_stream->time_base);
      Check(av_interleaved_write_frame(m_muxer, m_packet.get()), "write");
    }
  }

  const TinyMovie& m_movie;
  PacketPtr m_packet;
  FramePtr m_frame;
  CodecPtr m_codec;
  AVFormatContext* m_muxer = nullptr;
  AVStream* m_stream = nullptr;
};

void TakeFrames(AVCodecContext& codec, const AVStream& stream, MovieContent& content) {
  const FramePtr frame(av_frame_alloc());
  while (avcodec_receive_frame(&codec, frame.get()) >= 0) {
    if (codec.codec_type == AVMEDIA_TYPE_AUDIO) {
      content.soundSamples += frame->nb_samples;
      continue;
    }
    MovieFrame read{NumberOf(*frame),
                    static_cast<double>(frame->pts) * av_q2d(stream.time_base),
                    {},
                    frame->interlaced_frame};
    for (int y = 0; y < frame->height; ++y) {
      const std::uint8_t* row = frame->data[0] + y * frame->linesize[0];
      read.luma.insert(read.luma.end(), row, row + frame->width);
    }
    content.frames.push_back(std::move(read));
    content.colorSpace = frame->colorspace;
    content.colorRange = frame->color_range;
  }
}

}  // namespace

void Write(const TinyMovie& movie) { Writer(movie).Run(); }

std::vector<int> MovieContent::Numbers() const {
  std::vector<int> numbers;
  for (const MovieFrame& frame : frames) numbers.push_back(frame.number);
  return numbers;
}

MovieContent ReadMovie(const std::string& path) {
  MovieContent content;
  AVFormatContext* demuxer = nullptr;
  Check(avformat_open_input(&demuxer, path.c_str(), nullptr, nullptr), "open movie");
  Check(avformat_find_stream_info(demuxer, nullptr), "analyse movie");
  std::vector<CodecPtr> codecs;
  for (unsigned i = 0; i < demuxer->nb_streams; ++i) {
    const AVCodecParameters& parameters = *demuxer->streams[i]->codecpar;
    CodecPtr codec(avcodec_alloc_context3(avcodec_find_decoder(parameters.codec_id)));
    Check(avcodec_parameters_to_context(codec.get(), &parameters), "parameters");
    codec->pkt_timebase = demuxer->streams[i]->time_base;
    Check(avcodec_open2(codec.get(), nullptr, nullptr), "decoder");
    if (parameters.codec_type == AVMEDIA_TYPE_VIDEO) {
      content.width = parameters.width;
      content.height = parameters.height;
    } else {
      content.hasSound = true;
    }
    codecs.push_back(std::move(codec));
  }
  const PacketPtr packet(av_packet_alloc());
  while (av_read_frame(demuxer, packet.get()) >= 0) {
    const auto index = static_cast<std::size_t>(packet->stream_index);
    avcodec_send_packet(codecs[index].get(), packet.get());
    av_packet_unref(packet.get());
    TakeFrames(*codecs[index], *demuxer->streams[index], content);
  }
  for (std::size_t i = 0; i < codecs.size(); ++i) {
    avcodec_send_packet(codecs[i].get(), nullptr);
    TakeFrames(*codecs[i], *demuxer->streams[i], content);
  }
  const AVDictionaryEntry* entry = av_dict_get(demuxer->metadata, "com.vrx.time-zone", nullptr, 0);
  if (entry != nullptr) content.timeZone = entry->value;
  content.format = demuxer->iformat->name;
  avformat_close_input(&demuxer);
  return content;
}

}  // namespace vrx::engine::test
