#include "engine/JoinSequence.h"

#include <utility>

#include "engine/EncoderTable.h"
#include "engine/EngineLog.h"
#include "engine/OutputTarget.h"
#include "engine/PieceOrder.h"
#include "engine/RenderSummary.h"
#include "engine/SourcePath.h"

namespace vrx::engine {

Result JoinSequence::Create(const VRXPieces& pieces, std::unique_ptr<RenderSequence>& sequence) {
  std::unique_ptr<JoinSequence> made(new JoinSequence);
  VRX_TRY(made->Prepare(pieces));
  sequence = std::move(made);
  return kOk;
}

Result JoinSequence::Prepare(const VRXPieces& pieces) {
  if (pieces.structSize < sizeof(VRXPieces) || pieces.output == nullptr || pieces.paths == nullptr ||
      pieces.count == 0)
    return kInvalidArgument;
  std::vector<std::string> paths;
  for (std::uint32_t i = 0; i < pieces.count; ++i) {
    if (pieces.paths[i] == nullptr) return kInvalidArgument;
    paths.push_back(NativePath(pieces.paths[i]));
    if (!paths.back().empty()) continue;
    Log(VRXLogError, "the path of a piece is empty or names an unknown drive");
    return kSourceMissing;
  }
  m_output.path = NativePath(pieces.output);
  if (m_output.path.empty()) {
    Log(VRXLogError, "the output path is empty or names an unknown drive");
    return kOutputFailed;
  }
  VRX_TRY(ReadPieces(paths));
  ReportSpans(m_plan, m_first);
  if (m_sound) m_sound->Report();
  return OpenOutput();
}

Result JoinSequence::ReadPieces(const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    if (!IsSameFile(path, m_output.path)) continue;
    Log(VRXLogError, "the movie would replace its piece " + path);
    return kUnusableSettings;
  }
  std::vector<Piece> pieces(paths.size());
  for (std::size_t i = 0; i < paths.size(); ++i) VRX_TRY(ReadPiece(paths[i], m_stop, pieces[i]));
  VRX_TRY(ArrangePieces(pieces));
  return MakePlan(pieces);
}

Result JoinSequence::MakePlan(const std::vector<Piece>& pieces) {
  const bool hasSound = pieces.front().label.hasSound;
  const Piece& first = pieces[hasSound ? 1 : 0];
  m_first = first.label.firstFrame;
  m_output.container = ContainerOf(m_output.path);
  m_output.video.codec = first.codec;
  m_output.video.width = first.source.parameters->width;
  m_output.video.height = first.source.parameters->height;
  m_output.video.frameDuration = first.label.frameDuration;
  m_output.timeZone = first.timeZone;
  m_output.smart = SmartRendering::Require;
  if (hasSound) {
    m_output.audio = pieces.front().sound;
    VRX_TRY(FitSound(m_output));
  }
  VRX_TRY(CheckCodec(m_output));
  for (std::size_t i = hasSound ? 1 : 0; i < pieces.size(); ++i) AddSpan(pieces[i], i);
  VRX_TRY(m_pictures.Open(m_output, m_plan, m_stop));
  return hasSound ? OpenSound(pieces.front()) : kOk;
}

void JoinSequence::AddSpan(const Piece& piece, std::size_t number) {
  PictureSpan span;
  span.firstFrame = m_total;
  span.frameCount = piece.label.frameCount;
  span.clip = number;
  span.source = m_plan.sources.size();
  span.run = piece.run;
  m_plan.spans.push_back(std::move(span));
  m_plan.sources.push_back(piece.source);
  m_total += piece.label.frameCount;
}

Result JoinSequence::OpenSound(const Piece& piece) {
  m_sound = std::make_unique<SoundTrack>();
  return m_sound->OpenPiece(piece.path, m_output, m_first, m_total, m_stop);
}

Result JoinSequence::OpenOutput() {
  VRX_TRY(m_writer.Create(m_output));
  VRX_TRY(m_pictures.AddTo(m_writer));
  if (m_sound) VRX_TRY(m_sound->AddTo(m_writer));
  return m_writer.Begin(static_cast<std::uint64_t>(m_total + (m_sound ? m_sound->GetPackets() : 0)));
}

Result JoinSequence::RenderNext() {
  if (m_done == m_plan.spans[m_span].EndFrame()) ++m_span;
  VRX_TRY(m_pictures.Copy(m_plan.spans[m_span]));
  ++m_done;
  return m_sound ? m_sound->WriteUpTo(m_done, m_writer) : kOk;
}

Result JoinSequence::Finish() {
  if (m_sound) VRX_TRY(m_sound->Finish(m_writer));
  if (m_stop.IsSet()) return kOk;
  VRX_TRY(m_writer.Finish());
  m_finished = true;
  KeepRenderSummary({.frames = m_pictures.GetPacketCount(),
                     .soundSamples = static_cast<std::uint64_t>(m_sound ? m_sound->GetSamples() : 0),
                     .bytes = m_writer.GetBytes(),
                     .copiedFrames = m_pictures.GetPacketCount()});
  return kOk;
}

}  // namespace vrx::engine
