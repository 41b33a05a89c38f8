// The source of still images that the engine pulls frames from: one object and one decoder thread for all
// clips of still images of a project. The render job owns it.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "src/baseband/VRXWBasebandDecImage.h"
#include "vrx/VRXEngine.h"

class VRXWBasebandVideoObject final : public IVRXRawInputCallback {
 public:
  static constexpr std::int32_t kStageParsed = 2;
  static constexpr std::int32_t kFormatBgr = 5;

  /// Width and height in pixels, the duration of one frame.
  VRXWBasebandVideoObject(std::int32_t frameWidth, std::int32_t frameHeight, const VRXTimeInfo& duration,
                          VRXWBasebandHooks hooks = {});

  /// Forgets the documents, pictures and sources of an earlier project, which the engine must have released.
  void Restart(std::int32_t frameWidth, std::int32_t frameHeight, const VRXTimeInfo& duration);

  /// Reads the document of the next clip. XpErrBasebandDocument when it can't be used; the clip then has no
  /// picture.
  XpResult Parse(XpString path);

  /// What the engine pulls the clip of the last Parse from: the object itself for the first clip, else a
  /// source that the object owns until Restart.
  IVRXRawInputCallback* GetLastSource() const { return m_lastSource; }

  bool GetFrame(std::uint64_t frame, void* buffer, std::uint32_t size) override;
  std::uint32_t GetWidth() override { return static_cast<std::uint32_t>(width); }
  std::uint32_t GetHeight() override { return static_cast<std::uint32_t>(height); }
  const VRXTimeInfo* GetFrameDuration() override { return &frameDuration; }
  std::uint32_t GetStage() override { return static_cast<std::uint32_t>(stage); }
  std::uint32_t GetFormat() override { return static_cast<std::uint32_t>(format); }

  /// Ends every wait of GetFrame for a picture, now and later. From any thread.
  void CancelWaits() { m_decoder.CancelWaits(); }

  VRXWBasebandDecImage::Counts GetCounts() { return m_decoder.GetCounts(); }

 private:
  class LaterClip;

  std::int32_t width;
  std::int32_t height;
  VRXTimeInfo frameDuration;
  std::int32_t stage = 0;
  std::int32_t format = 0;
  VRXWBasebandDecImage m_decoder;
  std::vector<std::unique_ptr<IVRXRawInputCallback>> m_laterClips;
  IVRXRawInputCallback* m_lastSource = this;
};
