// What a render needs, made from a project document and the documents that it names: the engine's timeline
// and output records, the still pictures and the overlays. The wrapper renders it; `vrx check` and `vrx
// frame` look into it.
#pragma once

#include <memory>
#include <mutex>

#include "src/baseband/VRXWBasebandVideoObject.h"
#include "src/job/JobOverlays.h"
#include "src/timeline/TimelineBuilder.h"
#include "vrx/VRXOutputSetting.h"
#include "vrx/VRXTimeline.h"

namespace vrx::job {

class RenderJob {
 public:
  RenderJob() = default;
  RenderJob(const RenderJob&) = delete;
  RenderJob& operator=(const RenderJob&) = delete;
  ~RenderJob();

  /// Makes the painters; false when there is no memory. Load does it as well, when overlays are wanted.
  bool EnsurePainters() { return m_overlays.EnsurePainters(); }

  /// Builds new records from the document at `projectPath`. Reports nothing but log entries: an unusable
  /// project leaves a job that is not usable. The engine must not use the records of before any more. The
  /// painters and the decoder of still pictures stay from one project to the next.
  void Load(const XpString& projectPath);

  /// The document had output settings and a frame length, and its output is none of the files that it reads.
  bool IsUsable() const { return m_isUsable; }
  /// A clip of this project or of an earlier one asks for the GPU capability block.
  bool WantsGpuSetting() const { return m_wantsGpuSetting; }

  /// The records that the last Load built, owned by the job; null before it.
  VRXTimeline* GetTimeline() const { return m_timeline.get(); }
  VRXSystemOutputSetting* GetSystemOutput() const { return m_systemOutput.get(); }
  /// Null without overlays.
  VRXIntermediateRawOutputCallback* GetRawOutputCallback() const { return m_overlays.GetRawOutputCallback(); }

  /// Ends every wait for a still picture, now and later: the frames that are left have none. From any thread.
  void CancelWaits();

 private:
  void AddTracks(const TKLXOutputXml& project, timeline::ClipSums& sums);
  void AddOutput(const TKLXOutputXml& project);
  /// A render that would replace a file that it reads is not usable.
  void RefuseInputAsOutput(const TKLXOutputXml& project);
  /// Reads the document of a clip of still images and gives what the engine pulls its frames from.
  IVRXRawInputCallback* AddBaseband(const XpString& documentPath, const VRXVideoOutputSetting& video);

  XpString m_projectPath;
  bool m_isUsable = false;
  bool m_wantsGpuSetting = false;
  std::unique_ptr<VRXTimeline> m_timeline;
  std::unique_ptr<VRXSystemOutputSetting> m_systemOutput;
  std::unique_ptr<VRXWBasebandVideoObject> m_basebandObject;  // made for the first clip of still images
  std::mutex m_cancelMutex;  // guards the making of the object above against CancelWaits
  bool m_isCancelled = false;
  JobOverlays m_overlays;
};

}  // namespace vrx::job
