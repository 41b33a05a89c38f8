#include "engine/PictureSequence.h"

#include <libyuv.h>

#include <filesystem>

#include "engine/EngineLog.h"
#include "engine/OutputTarget.h"

namespace vrx::engine {
namespace {

constexpr AVPixelFormat kFormat = AV_PIX_FMT_RGBA;
constexpr int kPixelBytes = 4;

/// Looks at the files that are there, not at all names: a movie may have very many frames.
Result RefuseSources(const TimelinePlan& timeline, const NumberedPath& path, std::int64_t first,
                     std::int64_t count) {
  const std::string folder = path.GetFolder().empty() ? "./" : path.GetFolder();
  std::error_code ended;  // a folder that cannot be read has nothing that a clip reads
  for (std::filesystem::directory_iterator entry(folder, ended), end; !ended && entry != end;
       entry.increment(ended)) {
    const auto number = path.NumberIn(entry->path().filename().native());
    if (!number || *number < first || *number - first >= count) continue;
    VRX_TRY(RefuseSourceAsOutput(timeline, path.PathOf(*number)));
  }
  return kOk;
}

}  // namespace

PictureSequence::PictureSequence(const VideoPlan& plan, const NumberedPath& path)
    : m_path(path), m_frame(FramePool(kFormat).Get(plan.width, plan.height)) {}

Result PictureSequence::Create(const OutputPlan& plan, const TimelinePlan& timeline, std::int64_t first,
                               std::int64_t count, std::unique_ptr<OverlayOutput>& output) {
  const std::optional<NumberedPath> path = NumberedPath::Parse(plan.path);
  if (!path) {
    Log(VRXLogError,
        "output setting not usable: pictures need one place for the frame's number in their name, "
        "as in overlay-%05d.png: " +
            plan.path);
    return kUnusableSettings;
  }
  VRX_TRY(RefuseSources(timeline, *path, first, count));
  std::unique_ptr<PictureSequence> made(new PictureSequence(plan.video, *path));
  VRX_TRY(made->m_encoder.Create("png", kFormat, plan.video));
  VRX_TRY(made->m_encoder.Open());
  VRX_TRY(made->MakeFile(first));
  output = std::move(made);
  return kOk;
}

Result PictureSequence::SetPicture(const std::uint32_t* drawing) {
  libyuv::ARGBToABGR(reinterpret_cast<const std::uint8_t*>(drawing), m_frame->width * kPixelBytes,
                     m_frame->data[0], m_frame->linesize[0], m_frame->width, m_frame->height);
  return m_encoder.Encode(*m_frame);
}

Result PictureSequence::Write(std::int64_t number) {
  if (m_next != number) VRX_TRY(MakeFile(number));
  const AVPacket& packet = m_encoder.GetPacket();
  const auto size = static_cast<std::size_t>(packet.size);
  if (!m_file.Write(packet.data, size)) return m_file.ReportError();
  VRX_TRY(m_file.Commit());
  m_bytes += size;
  return kOk;
}

Result PictureSequence::MakeFile(std::int64_t number) {
  m_next = number;
  return m_file.Create(m_path.PathOf(number), m_path.GetPattern());
}

}  // namespace vrx::engine
