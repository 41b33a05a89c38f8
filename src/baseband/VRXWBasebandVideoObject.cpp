#include "src/baseband/VRXWBasebandVideoObject.h"

#include <utility>

/// A clip after the first: it shares the decoder and has a document of its own.
class VRXWBasebandVideoObject::LaterClip final : public IVRXRawInputCallback {
 public:
  LaterClip(VRXWBasebandVideoObject& object, std::uint32_t document, bool isParsed)
      : m_object(object), m_document(document), m_isParsed(isParsed) {}

  bool GetFrame(std::uint64_t frame, void* buffer, std::uint32_t size) override {
    return m_object.m_decoder.GetFrame(m_document, frame, buffer, size);
  }
  std::uint32_t GetWidth() override { return m_object.GetWidth(); }
  std::uint32_t GetHeight() override { return m_object.GetHeight(); }
  const VRXTimeInfo* GetFrameDuration() override { return m_object.GetFrameDuration(); }
  std::uint32_t GetStage() override { return m_isParsed ? kStageParsed : 0; }
  std::uint32_t GetFormat() override { return m_isParsed ? kFormatBgr : 0; }

 private:
  VRXWBasebandVideoObject& m_object;
  std::uint32_t m_document;
  bool m_isParsed;
};

VRXWBasebandVideoObject::VRXWBasebandVideoObject(std::int32_t frameWidth, std::int32_t frameHeight,
                                                 const VRXTimeInfo& duration, VRXWBasebandHooks hooks)
    : width(frameWidth), height(frameHeight), frameDuration(duration), m_decoder(std::move(hooks)) {}

void VRXWBasebandVideoObject::Restart(std::int32_t frameWidth, std::int32_t frameHeight,
                                      const VRXTimeInfo& duration) {
  m_decoder.Close();
  m_laterClips.clear();
  m_lastSource = this;
  width = frameWidth;
  height = frameHeight;
  frameDuration = duration;
  stage = format = 0;
}

XpResult VRXWBasebandVideoObject::Parse(XpString path) {
  std::uint32_t document = 0;
  const bool isParsed = m_decoder.Start(width, height, path, document) == XpOk;
  if (document == 0) {
    stage = isParsed ? kStageParsed : 0;
    format = isParsed ? kFormatBgr : 0;
    m_lastSource = this;
  } else {
    m_laterClips.push_back(std::make_unique<LaterClip>(*this, document, isParsed));
    m_lastSource = m_laterClips.back().get();
  }
  return isParsed ? XpOk : XpErrBasebandDocument;
}

bool VRXWBasebandVideoObject::GetFrame(std::uint64_t frame, void* buffer, std::uint32_t size) {
  return m_decoder.GetFrame(0, frame, buffer, size);
}
