// Overlays alone as numbered PNG pictures, one a frame. Used by the overlay sequence.
#pragma once

#include <memory>

#include "engine/FramePool.h"
#include "engine/NumberedPath.h"
#include "engine/OutputFile.h"
#include "engine/OverlayOutput.h"
#include "engine/StillEncoder.h"
#include "engine/TimelinePlan.h"

namespace vrx::engine {

/// Each picture gets its name when all of it is on the disk, and keeps it whatever comes later.
class PictureSequence final : public OverlayOutput {
 public:
  /// Makes the temporary file of the first picture. The pictures have the numbers `first` to
  /// `first` + `count` - 1; kUnusableSettings, with a logged line, for a path without one place for a number,
  /// and when a clip of `timeline` reads one of these files.
  static Result Create(const OutputPlan& plan, const TimelinePlan& timeline, std::int64_t first,
                       std::int64_t count, std::unique_ptr<OverlayOutput>& output);

  Result SetPicture(const std::uint32_t* drawing) override;
  Result Write(std::int64_t number) override;
  Result Finish() override { return kOk; }
  void Abandon() override { m_file.Discard(); }
  std::uint64_t GetBytes() const override { return m_bytes; }

 private:
  PictureSequence(const VideoPlan& plan, const NumberedPath& path);
  Result MakeFile(std::int64_t number);

  NumberedPath m_path;
  FramePtr m_frame;
  StillEncoder m_encoder;
  OutputFile m_file;
  std::int64_t m_next = -1;  // the number that m_file was made for
  std::uint64_t m_bytes = 0;
};

}  // namespace vrx::engine
