#include "engine/MediaInput.h"

extern "C" {
#include <libavutil/avstring.h>
#include <libavutil/mem.h>
}

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "engine/EngineLog.h"

namespace vrx::engine {
namespace {

constexpr int kBufferSize = 1 << 16;  // bytes

// Containers and streams of picture and sound. Every other format that the library knows stays out: some take
// any text for media, and some lead to further files, to devices or to the network.
constexpr const char* kFormats =
    "mov,matroska,mpegts,mpeg,mpegvideo,avi,asf,flv,live_flv,mxf,gxf,dv,rm,nut,nsv,nuv,ivf,wtv,ogg,lxf,swf,"
    "amv,"
    "m4v,h261,h263,h264,hevc,av1,obu,vc1,vc1test,dirac,dnxhd,cavsvideo,avs2,avs3,mjpeg,mjpeg_2000,smjpeg,"
    "yuv4mpegpipe,gif,apng,jpeg_pipe,png_pipe,bmp_pipe,tiff_pipe,webp_pipe,j2k_pipe,ppm_pipe,"
    "wav,w64,aiff,au,caf,aac,loas,ac3,eac3,dts,dtshd,truehd,mlp,mp3,flac,ape,wv,tta,tak,amr,mpc,mpc8,voc";
constexpr const char* kStills = "image2";
constexpr const char* kPlaylists = "hls,concat,dash,imf,sdp,rtsp,webm_dash_manifest";

Refusal RefuseSystemError(int systemError) {
  if (systemError == ENOENT || systemError == ENOTDIR) return {kSourceMissing, "does not exist"};
  return {kSourceUnreadable, "cannot be read (" + SystemErrorText(systemError) + ")"};
}

Refusal RefuseKind(const struct stat& status) {
  if (S_ISREG(status.st_mode)) return {};
  if (S_ISDIR(status.st_mode)) return {kSourceUnreadable, "is a folder"};
  return {kSourceUnreadable, "is a device, a pipe or a socket"};
}

Refusal RefuseLibraryError(int error) {
  constexpr int kLargestErrno = 4095;  // the library's own codes are larger
  if (error == AVERROR(ENOMEM)) return RefuseForMemory();
  // Demuxers give these two for bytes that make no sense.
  const bool isSystemError =
      AVUNERROR(error) <= kLargestErrno && error != AVERROR(EINVAL) && error != AVERROR(ENOSYS);
  if (isSystemError) return RefuseSystemError(AVUNERROR(error));
  return {kSourceNotMovie, "is no movie and no sound file (" + AvErrorText(error) + ")"};
}

Refusal RefuseFormat(const AVInputFormat& format) {
  if (av_match_list(format.name, kFormats, ',') > 0) return {};
  if (av_match_list(format.name, kStills, ',') > 0) {
    return {kSourceNotMovie, "is a still picture, not a movie: a baseband document shows those"};
  }
  if (av_match_list(format.name, kPlaylists, ',') > 0) {
    return {kSourceNotMovie, "is a list of other files, not a movie"};
  }
  return {kSourceNotMovie, "is no movie and no sound file"};
}

int RefuseFurtherFile(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
  return AVERROR(EPERM);
}

}  // namespace

Refusal RefuseForMemory() { return {kOutOfMemory, "needs more memory than there is"}; }

Result Report(const std::string& path, const Refusal& refusal) {
  if (!IsOk(refusal)) Log(VRXLogError, path + " " + refusal.cause);
  return refusal.result;
}

Refusal MediaInput::Open(const std::string& path, const StopSignal& stop,
                         std::unique_ptr<MediaInput>& input) {
  std::unique_ptr<MediaInput> opened(new MediaInput(stop));
  VRX_TRY(opened->OpenFile(path));
  VRX_TRY(opened->OpenDemuxer(path));
  input = std::move(opened);
  return {};
}

MediaInput::~MediaInput() {
  avformat_close_input(&m_demuxer);
  if (m_io != nullptr) av_freep(&m_io->buffer);
  avio_context_free(&m_io);
  if (m_descriptor >= 0) close(m_descriptor);
}

/// The kind is asked for before the file is opened, for opening alone may wait or move a device, and again of
/// what was opened.
Refusal MediaInput::OpenFile(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return RefuseSystemError(errno);
  VRX_TRY(RefuseKind(status));
  m_descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (m_descriptor < 0 || fstat(m_descriptor, &status) != 0) return RefuseSystemError(errno);
  return RefuseKind(status);
}

Refusal MediaInput::OpenDemuxer(const std::string& path) {
  auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
  m_io =
      buffer == nullptr ? nullptr : avio_alloc_context(buffer, kBufferSize, 0, this, &Read, nullptr, &Seek);
  m_demuxer = avformat_alloc_context();
  if (m_io == nullptr || m_demuxer == nullptr) {
    if (m_io == nullptr) av_free(buffer);
    return RefuseForMemory();
  }
  const AVInputFormat* format = nullptr;
  int error = av_probe_input_buffer2(m_io, &format, path.c_str(), nullptr, 0, 0);
  if (error < 0) return RefuseLibraryError(error);
  VRX_TRY(RefuseFormat(*format));
  m_demuxer->pb = m_io;
  m_demuxer->io_open = &RefuseFurtherFile;
  m_demuxer->interrupt_callback = {&IsInterrupted, const_cast<StopSignal*>(&m_stop)};
  error = avformat_open_input(&m_demuxer, path.c_str(), format, nullptr);
  return error < 0 ? RefuseLibraryError(error) : Refusal{};
}

int MediaInput::Read(void* input, std::uint8_t* data, int size) {
  const auto& self = *static_cast<MediaInput*>(input);
  for (;;) {
    if (self.m_stop.IsSet()) return AVERROR_EXIT;
    const ssize_t got = read(self.m_descriptor, data, static_cast<std::size_t>(size));
    if (got > 0) return static_cast<int>(got);
    if (got == 0) return AVERROR_EOF;
    if (errno != EINTR) return AVERROR(errno);
  }
}

std::int64_t MediaInput::Seek(void* input, std::int64_t offset, int whence) {
  const auto& self = *static_cast<MediaInput*>(input);
  if ((whence & AVSEEK_SIZE) != 0) {
    struct stat status {};
    return fstat(self.m_descriptor, &status) == 0 ? status.st_size : AVERROR(errno);
  }
  const off_t position = lseek(self.m_descriptor, offset, whence & ~AVSEEK_FORCE);
  return position < 0 ? AVERROR(errno) : position;
}

int MediaInput::IsInterrupted(void* stop) { return static_cast<const StopSignal*>(stop)->IsSet() ? 1 : 0; }

}  // namespace vrx::engine
