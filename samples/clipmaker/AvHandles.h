// Owning handles over libav's objects, and its error codes as exceptions, for the clip writer and the movie
// reader of the tests.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

namespace vrx::test_support {

struct AvDelete {
  void operator()(AVFormatContext* demuxer) const { avformat_close_input(&demuxer); }
  void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
  void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
  void operator()(SwrContext* converter) const { swr_free(&converter); }
};

using DemuxerPtr = std::unique_ptr<AVFormatContext, AvDelete>;
using CodecPtr = std::unique_ptr<AVCodecContext, AvDelete>;
using FramePtr = std::unique_ptr<AVFrame, AvDelete>;
using PacketPtr = std::unique_ptr<AVPacket, AvDelete>;
using ScalerPtr = std::unique_ptr<SwsContext, AvDelete>;
using ConverterPtr = std::unique_ptr<SwrContext, AvDelete>;

/// Throws std::runtime_error with `what` and libav's text when `code` is an error; gives `code` back
/// otherwise.
inline int Check(int code, const std::string& what) {
  if (code >= 0) return code;
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  av_strerror(code, text, sizeof text);
  throw std::runtime_error(what + ": " + text);
}

template <typename T>
T* CheckPointer(T* pointer, const std::string& what) {
  if (pointer == nullptr) throw std::runtime_error(what + ": out of memory or not found");
  return pointer;
}

inline FramePtr NewFrame() { return FramePtr(CheckPointer(av_frame_alloc(), "frame")); }
inline PacketPtr NewPacket() { return PacketPtr(CheckPointer(av_packet_alloc(), "packet")); }

}  // namespace vrx::test_support
