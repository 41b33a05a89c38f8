// The wrapper that a host drives: owns what a render needs, binds the engine and runs the render thread. The
// factory makes the only one in the process.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "drawing/PangoTextRenderer.h"
#include "foundation/log/VRXWrapperLog.h"
#include "foundation/sync/XpThread.h"
#include "overlay/callback/VRXIntermediateRawOutputCallback.h"
#include "overlay/document/TKLXPainterInfoXml.h"
#include "overlay/painter/IKVSDynamicInfoPainter.h"
#include "src/baseband/VRXWBasebandVideoObject.h"
#include "src/manager/EngineLibrary.h"
#include "src/overlay/OverlayRanges.h"
#include "src/timeline/TimelineBuilder.h"
#include "vrx/VRXWrapper.h"

class VRXWrapperManager final : public IVRXWrapper {
 public:
  /// The process's manager, made on first use; null when memory is short.
  static VRXWrapperManager* GetInstance();

  /// Binds the engine and makes an instance of it. False when either fails; the manager then stays.
  bool Initialize(bool factoryFlag);

  void Release() override;
  bool IsSmartRenderingCapable(std::uint32_t first, std::uint32_t second) override;
  void SetCallback(IVRXWrapperCallback* callback) override;
  void SetProjectFile(XpString path) override;
  void StartRender() override;
  void Cancel() override;

  /// The records that the last SetProjectFile built; null before it. They must not be looked at during a
  /// render.
  VRXTimeline* GetTimeline() const { return m_pTimeline.get(); }
  VRXSystemOutputSetting* GetSystemOutput() const { return m_pSystemOutput.get(); }
  VRXIntermediateRawOutputCallback* GetRawOutputCallback() const { return m_pRawOutputCallback.get(); }
  const vrx::timeline::ClipSums& GetClipSums() const { return m_clipSums; }

  VRXWrapperManager();
  ~VRXWrapperManager() override;

 private:
  static std::uint32_t RenderThreadEntry(void* manager);

  /// Makes the engine's instance if there is none. These name `caller` in the log.
  std::int32_t EnsureEngine(const char16_t* caller);
  std::int32_t CreateEngine(const char16_t* caller);
  void ReleaseEngine(const char16_t* caller);
  bool IsEnded() const;
  void SetEnded();

  void updateOutputInfoByCurrentProjectFile();
  /// Reads the document of a clip of still images and gives what the engine pulls its frames from.
  IVRXRawInputCallback* AddBaseband(const TKLXOutputXmlInfo& clip, const VRXVideoOutputSetting& video);
  void BuildTimeZoneMetaData();
  /// Reads the painter document, if the project names one, and prepares its overlays. A document that fails
  /// leaves the movie without overlays.
  void SetupOverlays(const XpString& painterEffect);
  void SetupOverlayRanges();
  bool EnsurePainters();

  /// What runs on the render thread; the result is the thread's exit code.
  std::uint32_t renderToFile();
  /// XpOk, or the code that the host is to hear.
  std::uint32_t RenderThroughEngine();
  /// Hands the engine what the host's calibration found out, if there is something.
  void SendGpuSetting();
  std::int32_t ExecuteUntilEnd();
  std::int32_t ReleaseSequence();
  void AbandonSequence();

  vrx::render::EngineLibrary m_engine;
  std::recursive_mutex m_engineMutex;  // guards the two below: a host may ask about smart rendering any time
  VRXHandle m_hEngine = nullptr;
  bool m_bEngineCreated = false;
  std::unique_ptr<VRXTimeline> m_pTimeline;
  std::unique_ptr<VRXSystemOutputSetting> m_pSystemOutput;
  IVRXSequence* m_pSequence = nullptr;  // the engine's, from VRX_CreateSequence to VRX_ReleaseSequence
  bool m_bEndFlag = false;              // only ever set; shared with host and engine through std::atomic_ref
  bool m_bGpuSettingWanted = false;     // never cleared: later projects send the block as well
  bool m_bProjectUsable = false;        // the last project has output settings and a frame length
  XpString m_strProjectFilePath;
  std::atomic<IVRXWrapperCallback*> m_pCallback = nullptr;  // not owned
  vrx::timeline::ClipSums m_clipSums;
  VRXWrapperLog m_log;
  std::unique_ptr<VRXWBasebandVideoObject> m_pBasebandObject;  // made for the first clip of still images

  struct PainterRelease {
    void operator()(IKVSDynamicInfoPainter* painters) const { painters->Release(); }
  };
  PainterInfo m_painterInfo;  // adopted from the last document that could be read
  std::vector<SlowInfoRecord> m_speedSections;
  std::vector<CaptionItem> m_captions;  // in the movie's time
  std::unique_ptr<vrx::drawing::PangoTextRenderer>
      m_textRenderer;  // the painters' own, so it goes after them
  std::unique_ptr<IKVSDynamicInfoPainter, PainterRelease> m_pDynamicInfoPainter;
  std::unique_ptr<TKLXPainterInfoXml> m_pPainterDocument;
  std::unique_ptr<VRXIntermediateRawOutputCallback> m_pRawOutputCallback;  // replaced with each project
  bool m_bFactoryFlag = false;                                             // kept; read by nothing

  std::mutex m_threadMutex;  // guards the two below and the release from a callback
  XpThread* m_pRenderThread = nullptr;
  bool m_bRendering = false;
  bool m_bReleaseWanted = false;  // Release came from a callback; the render thread deletes the manager
};
